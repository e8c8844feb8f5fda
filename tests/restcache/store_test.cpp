#include "restcache/store.h"

#include "fakes.h"
#include "restcache/lock.h"
#include "runtime/owned.h"

#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <sys/wait.h>

struct Store : testing::Test {
    TEST_ROOT_T root;
    void SetUp() override
    {
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }
    static int write(const char *name, const char *data)
    {
        return restapi_db_operation(REST_DB_WRITE, name, data);
    }
    static int erase(const char *name)
    {
        return restapi_db_operation(REST_DB_DELETE, name, nullptr);
    }
};

TEST_F(Store, WritesAndAnnouncesOnlyWhatDiffers)
{
    EXPECT_EQ(write("a/0", "{}"), 101);
    EXPECT_EQ(restDbChanged, 1);
    restDbChanged = 0;
    EXPECT_EQ(write("a/0", "{}"), 1);
    EXPECT_EQ(restDbChanged, 0);
    EXPECT_EQ(changeList(), "a/0\n");
    EXPECT_EQ(restapi_db_operation(REST_DB_WRITE2, "a/0", "{ }"), 101);
    EXPECT_EQ(cacheRead("a/0"), "{ }");
    EXPECT_EQ(write("b", ""), 101);
    EXPECT_EQ(restapi_db_operation(REST_DB_LOOKUP, "none", nullptr), 0);
    write("it's", "{}");
    restDbChanged = 0;
    EXPECT_EQ(erase("it's"), 0);
    EXPECT_EQ(erase("it's"), 0);
    EXPECT_EQ(restDbChanged, 1);
    EXPECT_EQ(cacheRead("it's"), "");
    EXPECT_EQ(changeList(), "a/0\na/0\nb\nit's\nit's\nit's\n"); // also what is not there
    EXPECT_EQ(restapi_db_operation(4, "a", "{}"), -1);
    EXPECT_EQ(logText(), "(ERROR) restapi_db_operation: Invalid operation 4\n");
}

TEST_F(Store, WritesNothingThatCannotBeAnnounced)
{
    const std::string earlier = std::string(100000, 'n') + "\n";
    write("long name", "old");
    fileWrite(PathGet(PATH_REST_DELTA), earlier);
    restDbChanged = 0;
    {
        FULL_DISK_T disk(earlier.size() + 3);
        EXPECT_EQ(write("long name", "new"), 0);
        EXPECT_EQ(cacheRead("long name"), "old");
        EXPECT_EQ(restDbChanged, 0);
        EXPECT_EQ(changeList(), earlier); // no half name
        logClear();
        EXPECT_EQ(erase("long name"), 0); // only the announcement is missing
        EXPECT_EQ(cacheRead("long name"), "");
        EXPECT_EQ(restDbChanged, 1);
    }
    EXPECT_EQ(restDbNotStored(), 1u);
    fileWrite(PathGet(PATH_REST_DELTA), "half a na"); // of a program that was killed
    write("a", "{}");
    EXPECT_EQ(changeList(), "half a na\na\n");
    const std::string list = PathGet(PATH_REST_DELTA);
    std::filesystem::create_hard_link(list, list + ".link"); // the list is left, none of its names is lost
    write("b", "{}");
    EXPECT_EQ(changeList(), "a\nb\n");
}

TEST_F(Store, ReportsADatabaseThatDoesNotServe)
{
    const std::string log = "(ERROR) restapi_db_operation: ";
    std::filesystem::remove(PathGet(PATH_REST_DB)); // a new file without the table
    EXPECT_EQ(write("a", "{}"), SQLITE_ERROR);
    EXPECT_EQ(erase("a"), SQLITE_ERROR);
    EXPECT_EQ(logText(),
              log + "prepare failed: no such table: restapi_db\n" + log + "SQL error: no such table: restapi_db\n");
    EXPECT_EQ(changeList(), "");
}

TEST_F(Store, WaitsThreeSecondsForAnotherWriter)
{
    sqlite3 *opened = nullptr;
    ASSERT_EQ(sqlite3_open(PathGet(PATH_REST_DB), &opened), SQLITE_OK);
    OWNED_DB other(opened);
    ASSERT_EQ(sqlite3_exec(opened, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(write("a", "{}"), SQLITE_BUSY);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2500));
    EXPECT_EQ(logText(), "(ERROR) restapi_db_operation: Execution failed: database is locked\n");
    EXPECT_EQ(changeList(), "a\n"); // announced before it is written
    EXPECT_EQ(restDbChanged, 1);
    sqlite3_busy_timeout(opened, 60000); // each try of the other looks at the database for a moment

    auto waiting = std::async(std::launch::async, [] { return write("a", "{}"); });
    while (changeList() != "a\na\n")
        std::this_thread::yield();
    ASSERT_EQ(sqlite3_exec(opened, "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_EQ(waiting.get(), SQLITE_DONE);
    EXPECT_EQ(cacheRead("a"), "{}");
}

TEST_F(Store, LockExcludesAnotherProcessUntilItLetsGo)
{
    int ready[2], go[2];
    char byte = 0;
    ASSERT_EQ(pipe(ready) + pipe(go), 0);
    pid_t child = fork();
    if (child == 0) {
        int fd = -1;
        bool ok =
            rest_db_lock_acquire("vlan_list", &fd) == 0 && ::write(ready[1], "r", 1) == 1 && read(go[0], &byte, 1) == 1;
        _exit(ok ? 0 : 1); // the lock goes with the process
    }
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    int fd = -1;
    auto waiting = std::async(std::launch::async, [&fd] { return rest_db_lock_acquire("vlan_list", &fd); });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    ASSERT_EQ(::write(go[1], "g", 1), 1);
    EXPECT_EQ(waiting.get(), 0);
    EXPECT_GT(fd, 0);
    rest_db_lock_release(fd);
    rest_db_lock_release(0); // ignored: descriptor 0 stays open
    EXPECT_GE(fcntl(0, F_GETFD), 0);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(logText(), "");
    for (int end : {ready[0], ready[1], go[0], go[1]})
        close(end);
}

TEST_F(Store, LockNamesThatCannotBeAFileAreRefused)
{
    const std::string dir = PathGet(PATH_LOCK_DIR);
    const std::string longest(127 - dir.size() - strlen("/.lock"), 'n');
    const std::string cases[][2] = {
        {"", "empty api_name"},
        {longest + "n", "path too long for '" + longest + "n'"},
        {"a/b", "open(" + dir + "/a/b.lock) failed: No such file or directory"},
    };
    int fd = 7;
    for (const auto &c : cases) {
        logClear();
        EXPECT_EQ(rest_db_lock_acquire(c[0].c_str(), &fd), -1) << c[0];
        EXPECT_EQ(fd, -1);
        EXPECT_EQ(logText(), "(ERROR) rest_db_lock_acquire: rest_db_lock_acquire: " + c[1] + "\n");
    }
    ASSERT_EQ(rest_db_lock_acquire(longest.c_str(), &fd), 0);
    rest_db_lock_release(fd);

    std::filesystem::remove_all(dir);
    fileWrite(dir, ""); // root's own
    logClear();
    EXPECT_EQ(rest_db_lock_acquire("a", &fd), -1);
    EXPECT_EQ(logText(), "(ERROR) ensure_lock_dir: rest_db_lock: mkdir(" + dir + ") failed: File exists\n");
    ASSERT_EQ(link(dir.c_str(), (dir + ".bad").c_str()), 0); // anybody's
    ASSERT_EQ(rest_db_lock_acquire("a", &fd), 0);
    rest_db_lock_release(fd);
}

TEST_F(Store, SignalsTheThreadThatTheIdFileNames)
{
    const std::string process = std::to_string(getpid());
    const std::string parse =
        "(ERROR) send_signal_to_ws: send_signal_to_ws(): Failed to parse integers from the file.\n";
    enum IDS { BOTH, PROCESS_ONLY, THREAD_ZERO, PROCESS_ZERO, GARBAGE, HUGE_ID, EMPTY };
    for (IDS ids : {BOTH, PROCESS_ONLY, THREAD_ZERO, PROCESS_ZERO, GARBAGE, HUGE_ID, EMPTY}) {
        LISTENER_T listener;
        std::string thread = listener.ids().substr(process.size() + 1);
        std::string text[] = {
            listener.ids(), process + "\n", process + " 0\n", "0 " + thread, "pid file\n", "4294967296 " + thread, ""};
        logClear();
        fileWrite(PathGet(PATH_WS_PID), text[ids]);
        send_signal_to_ws();
        EXPECT_EQ(listener.signalled(), ids == BOTH) << text[ids];
        EXPECT_EQ(logText(), ids == PROCESS_ONLY || ids == GARBAGE ? parse : "") << text[ids];
    }
    for (bool foreign : {true, false}) { // a link of another user's, a hard link
        LISTENER_T listener;
        const std::string path = PathGet(PATH_WS_PID), ids = path + ".ids";
        if (foreign && geteuid() != 0)
            continue;
        std::filesystem::rename(path, ids);
        ASSERT_EQ(foreign ? symlink(ids.c_str(), path.c_str()) : link(ids.c_str(), path.c_str()), 0);
        ASSERT_TRUE(!foreign || lchown(path.c_str(), 65534, 65534) == 0);
        send_signal_to_ws();
        EXPECT_FALSE(listener.signalled()) << foreign;
        std::filesystem::remove(path);
    }
    logClear();
    send_signal_to_ws();
    EXPECT_EQ(logText(), "");
}
