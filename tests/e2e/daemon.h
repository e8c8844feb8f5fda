// daemon.h - the real binary in a root of its own, as operators and neighbouring programs see it.
//
// Each test says which error lines it expects in the log; any other error line fails it when the daemon is gone.
#pragma once

#include "runtime/owned.h"

#include "support/root.h"
#include "support/wait.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

inline std::vector<std::string> linesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

inline std::string beside(const char *relative) // a file of the build tree
{
    std::string binary = DEVMGR_BINARY; // <build>/src/devmgr
    return binary.substr(0, binary.rfind('/', binary.rfind('/') - 1)) + "/" + relative;
}

inline std::string shippedScenario()
{
    return DEVMGR_SOURCE_DIR "/platform/virtual/scenarios/studio-52.json";
}

// A program under test with its output in files.
struct CHILD_T {
    pid_t pid = 0;

    void start(const std::vector<std::string> &arguments, const std::string &output, const std::string &errors,
               const std::string &scenario = "")
    {
        std::vector<char *> argv;
        for (const std::string &argument : arguments)
            argv.push_back(const_cast<char *>(argument.c_str()));
        argv.push_back(nullptr);
        pid = fork();
        ASSERT_GE(pid, 0);
        if (pid != 0)
            return;
        dup2(open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), STDOUT_FILENO);
        dup2(open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), STDERR_FILENO);
        setenv("VSWITCH_SCENARIO", scenario.c_str(), 1);
        if (scenario.empty())
            unsetenv("VSWITCH_SCENARIO");
        execv(argv[0], argv.data());
        _exit(127);
    }

    bool running()
    {
        siginfo_t info = {};
        return pid != 0 && waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               info.si_pid == 0;
    }

    // Wait status of waitpid; -1 when it does not end in time (it is killed then).
    int wait()
    {
        int status = -1;
        if (!waitUntil([&] { return !running(); }))
            kill(pid, SIGKILL);
        bool late = waitpid(pid, &status, 0) == pid && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
        pid = 0;
        return late ? -1 : status;
    }

    ~CHILD_T()
    {
        if (pid == 0)
            return;
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
};

struct ROOT_T : TEST_ROOT_T {
    std::string path(const std::string &name) const
    {
        return dir + "/tmp/" + name;
    }
};

// Records of a cache, by name; none while it cannot be read.
inline RECORDS_T cacheOf(const ROOT_T &root)
{
    RECORDS_T records;
    (void)recordsRead(root.path("restapi_db"), &records, "", 3000);
    return records;
}

// Names that this build of the daemon writes, as the cache spells them.
inline std::set<std::string> documentNames(const ROOT_T &root)
{
    CHILD_T tool;
    tool.start({beside("tools/docnames"), "--scheduled"}, root.path("names"), root.path("names.err"));
    EXPECT_EQ(tool.wait(), 0);
    std::vector<std::string> lines = linesOf(fileRead(root.path("names")));
    EXPECT_GT(lines.size(), 1u) << "no builder is registered";
    return {lines.begin(), lines.end()};
}

struct DAEMON_T {
    ROOT_T root;
    CHILD_T process;
    std::vector<std::string> expectedErrors; // pieces of error lines that this test causes
    std::string scenario = shippedScenario();
    std::string tick = "5";          // milliseconds
    std::set<std::string> documents; // that this build writes

    // Everything that other programs leave on a switch, and debug lines in the log.
    void seed()
    {
        CHILD_T tool;
        tool.start({"/usr/bin/python3", DEVMGR_SOURCE_DIR "/tools/seed.py", "--scenario", scenario, "--cache",
                    beside("."), "--log-level", "7", root.dir},
                   root.path("seed.out"), root.path("seed.err"));
        ASSERT_EQ(tool.wait(), 0) << fileRead(root.path("seed.err"));
        documents = documentNames(root);
    }
    void start()
    {
        process.start({DEVMGR_BINARY, "--root", root.dir, "--tick-ms", tick}, root.path("out"), root.path("err"),
                      scenario);
    }
    std::string log() const
    {
        return fileRead(root.path("tk830.log.old")) + fileRead(root.path("tk830.log"));
    }
    bool logHas(const std::string &piece) const
    {
        return log().find(piece) != std::string::npos;
    }
    bool waitLog(const std::string &piece)
    {
        return waitUntil([&] { return logHas(piece) || !process.running(); }) && logHas(piece);
    }
    bool waitCycle()
    {
        return waitLog("] GetAllRestApiData() End");
    }
    bool waitDocument(const std::string &name)
    {
        return waitUntil([&] { return cacheOf(root).count(name) != 0; });
    }
    // "swcfg_ports_settings" asks for the models of units 1 to 8, present or not; -26 says that there is no such unit.
    static bool absentUnit(const std::string &line)
    {
        return line.find("[stackUnitMgrPreconfigModelIdGet:") != std::string::npos &&
               line.find("(result = -26)") != std::string::npos;
    }
    ~DAEMON_T()
    {
        if (process.pid != 0) {
            kill(process.pid, SIGTERM);
            int status = process.wait();
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2) << status << fileRead(root.path("err"));
        }
        EXPECT_EQ(fileRead(root.path("err")), "");
        for (const std::string &line : linesOf(log())) {
            bool expected = line.find("(ERROR)") == std::string::npos || absentUnit(line);
            for (const std::string &piece : expectedErrors)
                expected |= line.find(piece) != std::string::npos;
            EXPECT_TRUE(expected) << "unexpected: " << line;
        }
    }
};
