// daemon_test.cpp - the daemon as a whole: options, start-up, the first cycle, an unwritable change list.

#include "e2e/daemon.h"

#include <algorithm>
#include <sys/file.h>
#include <sys/resource.h>

static bool saysSuccess(const std::string &text)
{
    const std::string end = R"("resp":{"respCode":0,"respMsg":"Success","status":"success"}})", all = compact(text);
    return all.size() >= end.size() && all.compare(all.size() - end.size(), end.size(), end) == 0;
}

// A shipped scenario with more members at its end.
static std::string scenarioWith(const ROOT_T &root, const std::string &members)
{
    std::string text = fileRead(shippedScenario()), path = root.path("scenario.json");
    text.insert(text.rfind('}'), "," + members);
    fileWrite(path, text);
    return path;
}

using ARGUMENTS_T = std::vector<std::string>;

TEST(Options, WrongOnesAreOneLineAndStatus2)
{
    const std::pair<ARGUMENTS_T, const char *> cases[] = {
        {{"--root", "/tmp/no-such-root"}, "--root /tmp/no-such-root: No such file or directory"},
        {{"--root", "/etc/passwd"}, "--root /etc/passwd: not a directory"},
        {{"--root", "/tmp/1234567890123x"}, "--root /tmp/1234567890123x: longer than 18 characters"},
        {{"--root"}, "option --root: needs a value (see --help)"},
        {{"--tick-ms", "0"}, "--tick-ms 0: not a number from 1 to 60000"},
        {{"--tick-ms", "10x"}, "--tick-ms 10x: not a number from 1 to 60000"},
        {{"--verbose"}, "option --verbose: unknown (see --help)"},
        {{"-xy"}, "option -xy: unknown (see --help)"},
        {{"now"}, "argument now: not expected (see --help)"}};
    ROOT_T root;
    for (const auto &wrong : cases) {
        CHILD_T process;
        ARGUMENTS_T arguments = {DEVMGR_BINARY};
        arguments.insert(arguments.end(), wrong.first.begin(), wrong.first.end());
        process.start(arguments, root.path("out"), root.path("err"));
        int status = process.wait();
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2) << status << wrong.second;
        EXPECT_EQ(fileRead(root.path("err")), std::string("devmgr: ") + wrong.second + "\n");
        EXPECT_EQ(fileRead(root.path("out")), "");
    }
}

// Without the server the monitor gives up after seven attempts, and the process stays.
TEST(Startup, WithoutAServerTheCacheIsLeftAlone)
{
    DAEMON_T daemon;
    daemon.expectedErrors = {"[AgentRestMonitor:", "Init clientHandle error"};
    daemon.seed();
    daemon.scenario = scenarioWith(daemon.root, R"("faults": [{"call": "openapiConnectivityCheck", "result": -1}])");
    daemon.start();
    ASSERT_TRUE(daemon.waitLog("Init clientHandle error"));
    EXPECT_TRUE(daemon.process.running());
    EXPECT_TRUE(cacheOf(daemon.root).empty());
    size_t warnings = 0;
    for (const std::string &line : linesOf(daemon.log()))
        warnings += line.find("(WARN)") != std::string::npos &&
                    line.find("RPC call can fail until server starts. Keep trying") != std::string::npos;
    EXPECT_EQ(warnings, 6u);
}

class EndedBySignal : public testing::TestWithParam<int> {};

TEST_P(EndedBySignal, StatusIs2AndASegmentationFaultAborts)
{
    DAEMON_T daemon;
    daemon.seed();
    daemon.start();
    ASSERT_TRUE(daemon.waitLog("Successfully initialized"));
    kill(daemon.process.pid, GetParam());
    int status = daemon.process.wait();
    if (GetParam() == SIGSEGV)
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) << status;
    else
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2) << status;
}
INSTANTIATE_TEST_SUITE_P(Daemon, EndedBySignal, testing::Values(SIGTERM, SIGHUP, SIGQUIT, SIGSEGV));

#ifndef __SANITIZE_THREAD__ // which wants the usual address space
// No thread can be made when its default stack, the limit on stacks, does not fit the address space.
TEST(Startup, WithoutThreadsEndsWithStatus1)
{
    DAEMON_T daemon;
    daemon.expectedErrors = {"Task Init Failed for <TMR> ", "Failed to initialize orbit agent daemon "};
    daemon.seed();
    struct rlimit usual = {}, vast = {};
    ASSERT_EQ(getrlimit(RLIMIT_STACK, &usual), 0);
    vast = usual;
    vast.rlim_cur = static_cast<rlim_t>(1) << 46;
    if (setrlimit(RLIMIT_STACK, &vast) != 0)
        GTEST_SKIP() << "the hard limit on stacks is too low to provoke it";
    daemon.start();
    ASSERT_EQ(setrlimit(RLIMIT_STACK, &usual), 0);
    int status = daemon.process.wait();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
}
#endif

TEST(FirstCycle, WritesEveryDocumentOfThisBuild)
{
    DAEMON_T daemon;
    daemon.seed();
    daemon.tick = "60000"; // no second cycle
    daemon.start();
    ASSERT_TRUE(daemon.waitCycle());
    const std::string log = daemon.log();
    EXPECT_LT(log.find("<TMR>"), log.find("<AMT>"));
    EXPECT_LT(log.find("<AMT>"), log.find("Successfully initialized"));
    std::map<std::string, std::string> records = cacheOf(daemon.root);
    for (const std::string &name : daemon.documents) {
        ASSERT_EQ(records.count(name), 1u) << name;
        EXPECT_TRUE(saysSuccess(records[name])) << name << ": " << records[name];
    }
    std::vector<std::string> changes = linesOf(changeList());
    ASSERT_FALSE(changes.empty());
    EXPECT_EQ(changes.front(), "init_complete");
    for (const std::string &name :
         changes) // chunks that an earlier process may have left are deleted, with their names
        EXPECT_TRUE(records.count(name) == 1 || name.find("_ex/") != std::string::npos) << name;
    for (const auto &record : records)
        EXPECT_NE(std::find(changes.begin(), changes.end(), record.first), changes.end()) << record.first;
}

// A disk that is full when the daemon starts ends neither it nor what it keeps; later everything is there.
TEST(FullDisk, HoldsRecordsBackUntilThereIsRoom)
{
    DAEMON_T daemon;
    daemon.expectedErrors = {"[restapi_db_operation:", "is damaged (", "begun anew, everything is built again"};
    daemon.seed();
    struct rlimit usual = {}, full = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    full = usual;
    full.rlim_cur = 20000; // the database gets no further than its first records
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    daemon.start();
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &usual), 0);
    ASSERT_TRUE(waitUntil([&] { return daemon.log().size() > full.rlim_cur - 200; }));
    EXPECT_LT(cacheOf(daemon.root).size(), daemon.documents.size());
    EXPECT_TRUE(waitUntil([&] { // each line is tried, and cut back
        return daemon.log().back() == '\n';
    }));
    ASSERT_TRUE(daemon.process.running());
    ASSERT_EQ(prlimit(daemon.process.pid, RLIMIT_FSIZE, &usual, nullptr), 0);
    EXPECT_TRUE(waitUntil([&] { return cacheOf(daemon.root).size() >= daemon.documents.size(); }));
}

TEST(Startup, ASecondDaemonOnARootIsRefused)
{
    DAEMON_T daemon;
    daemon.expectedErrors = {"Another devmgr holds "};
    daemon.seed();
    daemon.start();
    ASSERT_TRUE(daemon.waitLog("Successfully initialized"));
    CHILD_T second;
    second.start({DEVMGR_BINARY, "--root", daemon.root.dir}, daemon.root.path("out2"), daemon.root.path("err2"));
    int status = second.wait();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
    EXPECT_EQ(fileRead(daemon.root.path("err2")),
              "devmgr: another devmgr holds " + daemon.root.dir + "/run/devmgr.lock\n");
}

// Another user's lock on a name that the daemon takes is moved aside; root's is waited for, and named meanwhile. What a
// killed daemon left behind is removed.
TEST(Startup, LocksOfOthersAndLeftOutputFiles)
{
    DAEMON_T daemon;
    daemon.seed();
    const std::string folder = daemon.root.dir + "/mnt/application/kelo/tmp/",
                      lock = daemon.root.path("bootvarGet.lock");
    for (const char *name : {"show_environment_123", "show_environment_456", "show_environment_12x", "show_slot"})
        fileWrite(folder + name, "");
    const struct timespec old[2] = {{time(nullptr) - 700, 0}, {time(nullptr) - 700, 0}};
    for (const char *name : {"show_environment_123", "show_environment_12x"})
        ASSERT_EQ(utimensat(AT_FDCWD, (folder + name).c_str(), old, 0), 0);
    fileWrite(lock, "");
    OWNED_FD_T held(open(lock.c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(flock(held.fd, LOCK_EX), 0);
    daemon.start();
    ASSERT_TRUE(daemon.waitLog(lock + ": locked by another process, waited for 60 s\n"));
    EXPECT_FALSE(fileExists(folder + "show_environment_123"));
    EXPECT_TRUE(fileExists(folder + "show_environment_456"));
    EXPECT_TRUE(fileExists(folder + "show_environment_12x"));
    struct stat status = {};
    EXPECT_EQ(stat(lock.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    flock(held.fd, LOCK_UN);
    EXPECT_TRUE(daemon.waitCycle());
}

TEST(Cache, LostUnderTheDaemonIsFilledAgain)
{
    DAEMON_T daemon;
    daemon.expectedErrors = {"[restapi_db_operation:", "is damaged (", "begun anew, everything is built again"};
    daemon.seed();
    daemon.start();
    ASSERT_TRUE(daemon.waitCycle());
    for (const char *how : {"removed", "overwritten"}) {
        const std::string cache = daemon.root.path("restapi_db");
        how[0] == 'r' ? (void)unlink(cache.c_str()) : fileWrite(cache, std::string(20000, 'x'));
        EXPECT_TRUE(waitUntil([&] {
            std::map<std::string, std::string> records = cacheOf(daemon.root);
            return std::all_of(daemon.documents.begin(), daemon.documents.end(),
                               [&](const std::string &name) { return records.count(name) == 1; });
        })) << how;
    }
}
