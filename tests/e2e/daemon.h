// daemon.h - the real binary in a root of its own, as operators and neighbouring programs see it.
//
// Each test says which error lines it expects in the log; any other error line fails it when the daemon is gone.
#pragma once

#include "runtime/owned.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

constexpr int WAIT_SECONDS = 30; // limit of every wait: far above what a loaded machine needs

inline std::string textOf(const std::string &path)
{
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

inline std::vector<std::string> linesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// Look every 5 ms until the condition holds; false after the limit.
inline bool eventually(const std::function<bool()> &condition, int seconds = WAIT_SECONDS)
{
    for (int looks = 0; looks < seconds * 200; looks++) {
        if (condition())
            return true;
        usleep(5000);
    }
    return condition();
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

    bool start(const std::vector<std::string> &arguments, const std::string &output, const std::string &errors,
               const std::vector<std::string> &environment = {})
    {
        std::vector<char *> argv, env;
        for (const std::string &argument : arguments)
            argv.push_back(const_cast<char *>(argument.c_str()));
        argv.push_back(nullptr);
        for (const std::string &variable : environment)
            env.push_back(const_cast<char *>(variable.c_str()));
        for (char **variable = environ; *variable != nullptr; variable++)
            if (strncmp(*variable, "VSWITCH_", 8) != 0)
                env.push_back(*variable);
        env.push_back(nullptr);
        posix_spawn_file_actions_t files;
        posix_spawnattr_t attributes;
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int result = posix_spawn(&pid, argv[0], &files, &attributes, argv.data(), env.data());
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
        if (result != 0)
            pid = 0;
        return result == 0;
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
        if (!eventually([&] { return !running(); }))
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

// A fresh root of at most 18 characters, removed at the end.
struct ROOT_T {
    std::string dir;

    ROOT_T()
    {
        char path[] = "/tmp/dt_XXXXXX";
        dir = mkdtemp(path) == nullptr ? "" : path;
        EXPECT_FALSE(dir.empty());
        EXPECT_EQ(mkdir((dir + "/tmp").c_str(), 0755), 0);
    }
    ~ROOT_T()
    {
        if (!dir.empty()) {
            EXPECT_EQ(system(("rm -rf " + dir).c_str()), 0);
        }
    }
    std::string path(const std::string &name) const
    {
        return dir + "/tmp/" + name;
    }
};

// Records of a cache, by name; empty while there is none.
inline std::map<std::string, std::string> cacheOf(const ROOT_T &root)
{
    std::map<std::string, std::string> records;
    sqlite3 *db = nullptr;
    int result = sqlite3_open_v2(root.path("restapi_db").c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    OWNED_DB owned(db);
    sqlite3_stmt *statement = nullptr;
    if (result != SQLITE_OK)
        return records;
    sqlite3_busy_timeout(db, 3000);
    if (sqlite3_prepare_v2(db, "SELECT api_name, data FROM restapi_db", -1, &statement, nullptr) != SQLITE_OK)
        return records;
    OWNED_STATEMENT ownedStatement(statement);
    while (sqlite3_step(statement) == SQLITE_ROW)
        records[reinterpret_cast<const char *>(sqlite3_column_text(statement, 0))] =
            reinterpret_cast<const char *>(sqlite3_column_text(statement, 1));
    return records;
}

// Names that this build of the daemon writes, as the cache spells them.
inline std::set<std::string> documentNames(const ROOT_T &root)
{
    CHILD_T tool;
    EXPECT_TRUE(tool.start({beside("tools/docnames"), "--scheduled"}, root.path("names"), root.path("names.err")));
    EXPECT_EQ(tool.wait(), 0);
    std::vector<std::string> lines = linesOf(textOf(root.path("names")));
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
        ASSERT_TRUE(tool.start({"/usr/bin/python3", DEVMGR_SOURCE_DIR "/tools/seed.py", "--scenario", scenario,
                                "--cache", beside("."), "--log-level", "7", root.dir},
                               root.path("seed.out"), root.path("seed.err")));
        ASSERT_EQ(tool.wait(), 0) << textOf(root.path("seed.err"));
        documents = documentNames(root);
    }
    void start(const std::vector<std::string> &more = {})
    {
        std::vector<std::string> arguments = {DEVMGR_BINARY, "--root", root.dir, "--tick-ms", tick};
        arguments.insert(arguments.end(), more.begin(), more.end());
        ASSERT_TRUE(process.start(arguments, root.path("out"), root.path("err"),
                                  scenario.empty() ? std::vector<std::string>()
                                                   : std::vector<std::string>{"VSWITCH_SCENARIO=" + scenario}));
    }
    std::string log() const
    {
        return textOf(root.path("tk830.log.old")) + textOf(root.path("tk830.log"));
    }
    bool logHas(const std::string &piece) const
    {
        return log().find(piece) != std::string::npos;
    }
    bool waitLog(const std::string &piece)
    {
        return eventually([&] { return logHas(piece) || !process.running(); }) && logHas(piece);
    }
    bool waitCycle()
    {
        return waitLog("] GetAllRestApiData() End");
    }
    bool waitDocument(const std::string &name)
    {
        return eventually([&] { return cacheOf(root).count(name) != 0; });
    }
    std::vector<std::string> changeList() const
    {
        return linesOf(textOf(root.path("rest_db_api_delta.txt")));
    }

    // "... wb_swcfg_port: <builder> not linked": true for a document that this build has no builder of.
    bool notLinked(const std::string &line) const
    {
        size_t begin = line.find("] "), end = line.find(": ", begin);
        if (line.find(" not linked") == std::string::npos || end == std::string::npos)
            return false;
        std::string name = line.substr(begin + 2, end - begin - 2);
        if (name.compare(0, 3, "wb_") == 0)
            name.erase(0, 3);
        if (name == "profile_list_ex")
            name = "profile/list_ex";
        if (name == "fiber_optics")
            name = "fiberOptics";
        return documents.count(name) == 0 && documents.count(name + "/0") == 0;
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
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2) << status << textOf(root.path("err"));
        }
        EXPECT_EQ(textOf(root.path("err")), "");
        for (const std::string &line : linesOf(log())) {
            bool expected = line.find("(ERROR)") == std::string::npos || notLinked(line) || absentUnit(line);
            for (const std::string &piece : expectedErrors)
                expected |= line.find(piece) != std::string::npos;
            EXPECT_TRUE(expected) << "unexpected: " << line;
        }
    }
};
