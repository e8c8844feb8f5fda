// daemon_test.cpp - the daemon as a whole: options, start-up, signals, the first cycle, and neighbours that contend.

#include "e2e/daemon.h"

#include <algorithm>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/syscall.h>

static std::string infoLines(const std::string &log) // "function: message" of the info lines, without line numbers
{
    std::string shown;
    for (const std::string &line : linesOf(log)) {
        size_t begin = line.find("(INFO): kelo_cgi: ["), end = line.find("] ");
        if (begin == std::string::npos || end == std::string::npos)
            continue;
        std::string name = line.substr(begin + 19, end - begin - 19);
        shown += name.substr(0, name.find(':')) + ": " + line.substr(end + 2) + "\n";
    }
    return shown;
}

static bool saysSuccess(const std::string &text)
{
    OWNED_JSON document(cJSON_Parse(text.c_str()));
    const cJSON *resp = cJSON_GetObjectItem(document.get(), "resp");
    const cJSON *code = cJSON_GetObjectItem(resp, "respCode");
    const cJSON *status = cJSON_GetObjectItem(resp, "status");
    return cJSON_IsNumber(code) && code->valueint == 0 && cJSON_IsString(status) &&
           strcmp(status->valuestring, "success") == 0;
}

// A shipped scenario with more members at its end.
static std::string scenarioWith(const ROOT_T &root, const std::string &members)
{
    std::string text = textOf(shippedScenario()), path = root.path("scenario.json");
    text.insert(text.rfind('}'), "," + members);
    std::ofstream(path) << text;
    return path;
}

// ---- options ----

struct WRONG_T {
    std::vector<std::string> arguments;
    const char *error; // whole of standard error
};

static void PrintTo(const WRONG_T &wrong, std::ostream *out)
{
    for (const std::string &argument : wrong.arguments)
        *out << argument << " ";
}

class WrongOption : public testing::TestWithParam<WRONG_T> {};

TEST_P(WrongOption, IsOneLineAndStatus2)
{
    ROOT_T root;
    CHILD_T process;
    std::vector<std::string> arguments = {DEVMGR_BINARY};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    ASSERT_TRUE(process.start(arguments, root.path("out"), root.path("err")));
    int status = process.wait();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2) << status;
    EXPECT_EQ(textOf(root.path("err")), GetParam().error);
    EXPECT_EQ(textOf(root.path("out")), "");
}

INSTANTIATE_TEST_SUITE_P(
    Daemon, WrongOption,
    testing::Values(
        WRONG_T{{"--root", "/tmp/no-such-root"}, "devmgr: --root /tmp/no-such-root: No such file or directory\n"},
        WRONG_T{{"--root", "/etc/passwd"}, "devmgr: --root /etc/passwd: not a directory\n"},
        WRONG_T{{"--root", "/tmp/1234567890123x"}, "devmgr: --root /tmp/1234567890123x: longer than 18 characters\n"},
        WRONG_T{{"--root"}, "devmgr: option --root: needs a value (see --help)\n"},
        WRONG_T{{"--tick-ms", "0"}, "devmgr: --tick-ms 0: not a number from 1 to 60000\n"},
        WRONG_T{{"--tick-ms", "10x"}, "devmgr: --tick-ms 10x: not a number from 1 to 60000\n"},
        WRONG_T{{"--verbose"}, "devmgr: option --verbose: unknown (see --help)\n"},
        WRONG_T{{"-xy"}, "devmgr: option -xy: unknown (see --help)\n"},
        WRONG_T{{"now"}, "devmgr: argument now: not expected (see --help)\n"}));

// ---- start-up and end ----

TEST(Startup, LogsItsStepsInOrder)
{
    DAEMON_T daemon;
    daemon.seed();
    daemon.start();
    ASSERT_TRUE(daemon.waitLog("Successfully initialized"));
    EXPECT_EQ(infoLines(daemon.log()), "DmInit: Successfully created thread <TMR>\n"
                                       "DmInit: Successfully created thread <AMT>\n"
                                       "DmInit: Successfully initialized orbit agent daemon\n");
}

class EndedBySignal : public testing::TestWithParam<int> {};

TEST_P(EndedBySignal, GivesStatus2)
{
    DAEMON_T daemon;
    daemon.seed();
    daemon.start();
    ASSERT_TRUE(daemon.waitLog("Successfully initialized"));
    kill(daemon.process.pid, GetParam());
    int status = daemon.process.wait();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2) << status;
}
INSTANTIATE_TEST_SUITE_P(Daemon, EndedBySignal, testing::Values(SIGTERM, SIGHUP, SIGQUIT));

TEST(Startup, SegmentationFaultEndsByAbort)
{
    DAEMON_T daemon;
    daemon.seed();
    daemon.start();
    ASSERT_TRUE(daemon.waitLog("Successfully initialized"));
    kill(daemon.process.pid, SIGSEGV);
    int status = daemon.process.wait();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) << status;
}

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
    EXPECT_TRUE(daemon.logHas("[main:"));
    EXPECT_FALSE(daemon.logHas("<AMT>")) << "a task was started after one that failed";
}
#endif

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

TEST(Startup, WaitsForTheProfileDatabase)
{
    DAEMON_T daemon;
    daemon.seed();
    std::string profiles = daemon.root.path("vlanInfo.db"), aside = daemon.root.path("aside.db");
    ASSERT_EQ(rename(profiles.c_str(), aside.c_str()), 0);
    daemon.start();
    ASSERT_TRUE(daemon.waitDocument("init_complete"));
    EXPECT_FALSE(daemon.logHas("GetAllRestApiData() Start"));
    ASSERT_EQ(rename(aside.c_str(), profiles.c_str()), 0);
    EXPECT_TRUE(daemon.waitCycle());
}

// ---- the first cycle ----

TEST(FirstCycle, WritesEveryDocumentOfThisBuild)
{
    DAEMON_T daemon;
    daemon.seed();
    daemon.tick = "60000"; // no second cycle
    daemon.start();
    ASSERT_TRUE(daemon.waitCycle());
    std::map<std::string, std::string> records = cacheOf(daemon.root);
    for (const std::string &name : daemon.documents) {
        ASSERT_EQ(records.count(name), 1u) << name;
        EXPECT_TRUE(saysSuccess(records[name])) << name << ": " << records[name];
    }
    std::vector<std::string> changes = daemon.changeList();
    ASSERT_FALSE(changes.empty());
    EXPECT_EQ(changes.front(), "init_complete");
    for (const std::string &name :
         changes) // chunks that an earlier process may have left are deleted, with their names
        EXPECT_TRUE(records.count(name) == 1 || name.find("_ex/") != std::string::npos) << name;
    for (const auto &record : records)
        EXPECT_NE(std::find(changes.begin(), changes.end(), record.first), changes.end()) << record.first;
}

TEST(Neighbour, SeesTheNameTheRecordAndTheSignal)
{
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);
    DAEMON_T daemon;
    daemon.seed();
    std::ofstream(daemon.root.path("resourse_pid.txt")) << getpid() << " " << syscall(SYS_gettid) << "\n";
    daemon.start();
    struct timespec limit = {WAIT_SECONDS, 0};
    siginfo_t info = {};
    ASSERT_EQ(sigtimedwait(&interrupt, &info, &limit), SIGINT);
    EXPECT_EQ(info.si_pid, daemon.process.pid);
    std::vector<std::string> changes = daemon.changeList();
    ASSERT_GE(changes.size(), 2u); // "init_complete" is announced without a signal
    EXPECT_EQ(cacheOf(daemon.root).count(changes[1]), 1u) << changes[1];
    struct timespec none = {0, 0};
    kill(daemon.process.pid, SIGTERM);
    daemon.process.wait();
    while (sigtimedwait(&interrupt, nullptr, &none) == SIGINT)
        continue;
    pthread_sigmask(SIG_UNBLOCK, &interrupt, nullptr);
}

// ---- contention ----

struct HELD_DATABASE_T {
    OWNED_DB db;

    explicit HELD_DATABASE_T(const ROOT_T &root)
    {
        sqlite3 *opened = nullptr;
        EXPECT_EQ(sqlite3_open(root.path("restapi_db").c_str(), &opened), SQLITE_OK);
        db.reset(opened);
        sqlite3_busy_timeout(opened, 10000);
        EXPECT_EQ(sqlite3_exec(opened, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    }
    void release()
    {
        EXPECT_EQ(sqlite3_exec(db.get(), "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);
    }
};

// Longer than the daemon waits (3 s for each statement that needs the lock): what could not be written is reported, and
// written by a later cycle.
TEST(Contention, DatabaseHeldTooLongIsReportedAndCaughtUp)
{
    DAEMON_T daemon;
    daemon.expectedErrors = {"database is locked"};
    daemon.tick = "50"; // a cycle every 1.5 s: within a window of counters that move
    daemon.seed();
    daemon.start();
    ASSERT_TRUE(daemon.waitCycle());
    std::string before = cacheOf(daemon.root)["portStats_inbound_ex"];
    ASSERT_NE(before, "");
    HELD_DATABASE_T held(daemon.root);
    ASSERT_TRUE(daemon.waitLog("database is locked"));
    held.release();
    EXPECT_TRUE(eventually([&] {
        std::string now = cacheOf(daemon.root)["portStats_inbound_ex"];
        return now != before && saysSuccess(now);
    }));
}

// Shorter than that: nobody notices.
TEST(Contention, DatabaseHeldForAMomentLosesNothing)
{
    DAEMON_T daemon;
    daemon.tick = "60000";
    daemon.seed();
    HELD_DATABASE_T held(daemon.root);
    daemon.start();
    ASSERT_TRUE(daemon.waitLog("Successfully initialized"));
    held.release();
    ASSERT_TRUE(daemon.waitCycle());
    std::map<std::string, std::string> records = cacheOf(daemon.root);
    for (const std::string &name : daemon.documents)
        EXPECT_EQ(records.count(name), 1u) << name;
}

static bool waitsForLock(pid_t pid) // the kernel lists who waits as "1: -> FLOCK ADVISORY WRITE <pid> ..."
{
    std::string wanted = " " + std::to_string(pid) + " ";
    for (const std::string &line : linesOf(textOf("/proc/locks")))
        if (line.find("-> FLOCK") != std::string::npos && line.find(wanted) != std::string::npos)
            return true;
    return false;
}

TEST(Contention, LockFileHeldByANeighbourIsWaitedFor)
{
    DAEMON_T daemon;
    daemon.tick = "60000";
    daemon.seed();
    ASSERT_EQ(mkdir(daemon.root.path("api_lock").c_str(), 0755), 0);
    OWNED_FD_T lock(open(daemon.root.path("api_lock/device_health.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(flock(lock.fd, LOCK_EX), 0);
    daemon.start();
    ASSERT_TRUE(eventually([&] { return waitsForLock(daemon.process.pid); }));
    EXPECT_EQ(cacheOf(daemon.root).count("device_health"), 0u);
    ASSERT_EQ(flock(lock.fd, LOCK_UN), 0);
    ASSERT_TRUE(daemon.waitCycle());
    EXPECT_TRUE(saysSuccess(cacheOf(daemon.root)["device_health"]));
}

TEST(Contention, ChangeListThatCannotBeWrittenKeepsTheRecordBack)
{
    DAEMON_T daemon;
    daemon.expectedErrors = {"Unable to open delta file"};
    daemon.tick = "20";
    daemon.seed();
    ASSERT_EQ(mkdir(daemon.root.path("rest_db_api_delta.txt").c_str(), 0755), 0); // opens for nobody
    daemon.start();
    ASSERT_TRUE(daemon.waitCycle());
    EXPECT_TRUE(cacheOf(daemon.root).empty());
    ASSERT_EQ(rmdir(daemon.root.path("rest_db_api_delta.txt").c_str()), 0);
    EXPECT_TRUE(daemon.waitDocument("portStats_inbound_ex"));
}
