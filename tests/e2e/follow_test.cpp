// follow_test.cpp - the consumer's rule for following changes, against a writer that does what the daemon does.

#include "e2e/daemon.h"

#include <sys/syscall.h>

// The daemon's side: announce, write the record, signal.
struct WRITER_T {
    const ROOT_T &root;
    OWNED_DB db;

    explicit WRITER_T(const ROOT_T &where) : root(where)
    {
        sqlite3 *opened = nullptr;
        EXPECT_EQ(sqlite3_open(root.path("restapi_db").c_str(), &opened), SQLITE_OK);
        db.reset(opened);
        sqlite3_busy_timeout(opened, 3000);
        sql("PRAGMA synchronous = OFF");
        sql("CREATE TABLE IF NOT EXISTS restapi_db (api_name TEXT PRIMARY KEY, data TEXT);");
    }
    void sql(const std::string &text)
    {
        ASSERT_EQ(sqlite3_exec(db.get(), text.c_str(), nullptr, nullptr, nullptr), 0);
    }
    void announce(const std::string &name)
    {
        OWNED_FILE list(fopen(root.path("rest_db_api_delta.txt").c_str(), "a"));
        ASSERT_TRUE(list);
        fprintf(list.get(), "%s\n", name.c_str());
    }
    void record(const std::string &name, size_t length) // its length tells one version from another
    {
        sql("REPLACE INTO restapi_db VALUES ('" + name + "', '" + std::string(length, 'x') + "')");
    }
    void signal()
    {
        int pid = 0, tid = 0;
        ASSERT_EQ(sscanf(fileRead(root.path("resourse_pid.txt")).c_str(), "%d %d", &pid, &tid), 2);
        syscall(SYS_tgkill, pid, tid, SIGINT);
    }
};

struct Follow : testing::Test {
    ROOT_T root;
    CHILD_T consumer;

    void start()
    {
        consumer.start({beside("tools/follow"), "--root", root.dir, "--messages", root.path("said")},
                       root.path("shown"), root.path("err"));
        ASSERT_TRUE(waitUntil([&] { return access(root.path("resourse_pid.txt").c_str(), F_OK) == 0; }));
    }
    bool shows(const std::string &name, size_t length)
    {
        return waitUntil([&] {
            return fileRead(root.path("shown")).find(" " + name + " " + std::to_string(length) + " ") !=
                   std::string::npos;
        });
    }
    bool listTaken()
    {
        return waitUntil([&] { return access(root.path("rest_db_api_delta.txt").c_str(), F_OK) != 0; });
    }
};

TEST_F(Follow, FindsALineWrittenIntoTheListAfterItWasTaken)
{
    WRITER_T writer(root);
    start();
    OWNED_FILE held(fopen(root.path("rest_db_api_delta.txt").c_str(), "a"));
    ASSERT_TRUE(held);
    ASSERT_TRUE(listTaken());
    fputs("late\n", held.get());
    held.reset();
    writer.record("late", 5);
    writer.signal();
    EXPECT_TRUE(shows("late", 5));
}

TEST_F(Follow, ReadsARecordThatIsWrittenWellAfterItsName)
{
    WRITER_T writer(root);
    start();
    writer.announce("slow");
    ASSERT_TRUE(listTaken());
    writer.signal(); // of an earlier change
    writer.announce("other");
    writer.record("other", 3);
    writer.signal();
    ASSERT_TRUE(shows("other", 3)); // so the first name was read at two signals already
    writer.record("slow", 4);
    writer.signal();
    EXPECT_TRUE(shows("slow", 4));
}

TEST_F(Follow, EndsAtAnInterruptThatIsNotAChange)
{
    WRITER_T writer(root);
    start();
    writer.signal();
    writer.announce("any");
    writer.record("any", 2);
    ASSERT_TRUE(shows("any", 2)); // still there
    OWNED_FILE said(fopen(root.path("said").c_str(), "w"));
    fputs("first\nsecond\nthi", said.get());
    said.reset();
    EXPECT_TRUE(waitUntil([&] { return fileRead(root.path("shown")).find(" says second\n") != std::string::npos; }));
    kill(consumer.pid, SIGINT);
    EXPECT_EQ(consumer.wait(), 0);
    EXPECT_NE(access(root.path("resourse_pid.txt").c_str(), F_OK), 0) << "ids left behind";
    EXPECT_EQ(fileRead(root.path("err")), "");
}
