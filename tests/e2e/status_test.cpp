// The daemon's account of itself, as devmgrctl and a service manager read it beside the real daemon.

#include "daemon.h"

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

struct CTL_T {
    int status;
    std::string out;
    std::string err;
};

static CTL_T ctl(const DAEMON_T &daemon, std::vector<std::string> words)
{
    CHILD_T tool;

    words.insert(words.begin(), {beside("clients/devmgrctl"), "--root", daemon.root.dir});
    tool.start(words, daemon.root.path("ctl.out"), daemon.root.path("ctl.err"));
    int status = tool.wait();
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, fileRead(daemon.root.path("ctl.out")),
            fileRead(daemon.root.path("ctl.err"))};
}

static void scenarioWrite(DAEMON_T *daemon, const std::string &more)
{
    daemon->scenario = daemon->root.path("scenario.json");
    fileWrite(daemon->scenario, "{\"units\": {\"1\": {\"model\": \"TK830-T16\"}}, "
                                "\"lags\": {\"1\": {\"members\": [\"1/0/45-46\"]}}" +
                                    more + "}\n");
}

// What goes wrong on a switch, and the words in which the account names it.
struct WRONG_T {
    const char *name;
    const char *scenario;            // members beside the unit
    const char *tick;                // milliseconds
    const char *words;               // in what "devmgrctl status" prints
    std::vector<std::string> errors; // that the daemon logs
};
static void PrintTo(const WRONG_T &wrong, std::ostream *out)
{
    *out << wrong.name;
}

class Account : public testing::TestWithParam<WRONG_T> {};

TEST_P(Account, NamesWhatIsWrong)
{
    DAEMON_T daemon;
    CTL_T status = {};

    scenarioWrite(&daemon, GetParam().scenario);
    daemon.seed();
    daemon.tick = GetParam().tick;
    daemon.expectedErrors = GetParam().errors;
    EXPECT_EQ(ctl(daemon, {"status"}).status, 2); // no daemon has run here
    daemon.start();
    EXPECT_TRUE(waitUntil([&] {
        status = ctl(daemon, {"status"});
        return status.out.find(GetParam().words) != std::string::npos;
    })) << status.out
        << status.err;
    EXPECT_EQ(status.status, 1);
}

INSTANTIATE_TEST_SUITE_P(
    E2e, Account,
    testing::Values(
        WRONG_T{"command",
                R"(,"faults":[{"command":"show logging","result":-7}])",
                "5",
                "-7",
                {"Show cmd failed", "Execute show cmd faile", "sys Logging mode", "wb_logging"}},
        WRONG_T{"column",
                R"(,"texts":{"show port all":["Intf  Type","----- ------","    1/0/1 moved","    1/0/2 moved"]})",
                "5",
                "no rows",
                {}},
        WRONG_T{"hang",
                R"(,"latency":[{"call":"openapiIfLinkStateGet","microseconds":40000000}])",
                "5",
                "doing: building ",
                {}},
        WRONG_T{"server",
                R"(,"faults":[{"call":"rpcclt_openapiConnectivityCheck","result":-1}])",
                "5",
                "the platform's server does not answer",
                {"Init clientHandle"}}));

TEST(AccountOfADaemon, TellsTheLivingFromTheDead)
{
    DAEMON_T daemon;

    scenarioWrite(&daemon, "");
    daemon.seed();
    daemon.start();
    ASSERT_TRUE(waitUntil([&] { return ctl(daemon, {"status"}).status == 0; })) << ctl(daemon, {"status"}).out;
    EXPECT_EQ(ctl(daemon, {"status", "system_info"}).out.substr(0, 18), "system_info: well\n");
    EXPECT_EQ(ctl(daemon, {"get", "system_info", "/resp/respCode"}).out, "0\n");
    daemon.expectedErrors = {"was begun anew", "[restapi_db_operation:"}; // it may go in the middle of a cycle
    unlink(daemon.root.path("restapi_db").c_str());
    EXPECT_TRUE(
        waitUntil([&] { return ctl(daemon, {"status"}).out.find("cache begun anew 1 times") != std::string::npos; }));

    kill(daemon.process.pid, SIGKILL);
    (void)waitpid(daemon.process.pid, nullptr, 0);
    daemon.process.pid = 0;
    CTL_T dead = ctl(daemon, {"status"});
    EXPECT_EQ(dead.status, 1);
    EXPECT_NE(dead.err.find("does not run"), std::string::npos) << dead.err;
    EXPECT_NE(ctl(daemon, {"metrics"}).out.find("devmgr_up 0\n"), std::string::npos);
}

// What a service manager hears.
TEST(ServiceManager, HearsReadyStatusAndTheWatchdog)
{
    DAEMON_T daemon;
    struct sockaddr_un address = {AF_UNIX, {}};
    OWNED_FD_T manager(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    std::string heard;

    scenarioWrite(&daemon, "");
    daemon.seed();
    (void)unlink((daemon.root.path("vlanInfo.db")).c_str()); // waited for
    snprintf(address.sun_path, sizeof(address.sun_path), "%s", daemon.root.path("notify").c_str());
    ASSERT_EQ(bind(manager.fd, reinterpret_cast<struct sockaddr *>(&address), sizeof(address)), 0);
    setenv("NOTIFY_SOCKET", address.sun_path, 1);
    daemon.start();
    unsetenv("NOTIFY_SOCKET");
    EXPECT_TRUE(waitUntil([&] {
        char message[512];
        ssize_t size;
        while ((size = recv(manager.fd, message, sizeof(message), 0)) > 0)
            heard.append(message, static_cast<size_t>(size)).append("\n");
        return heard.find("vlanInfo.db") != std::string::npos && heard.find("WATCHDOG=1") != std::string::npos;
    })) << heard;
    EXPECT_LT(heard.find("READY=1"), heard.find("vlanInfo.db")) << heard;
}
