#include "restcache/recovery.h"

#include "fakes.h"
#include "runtime/owned.h"
#include "stores/sql.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

static const std::string good = "{\"a\":\"" + std::string(30000, 'g') + "\"}";

struct Recovery : testing::Test {
    TEST_ROOT_T root;
    std::string path = PathGet(PATH_REST_DB);

    static int write(const char *name, const std::string &data)
    {
        return restapi_db_operation(REST_DB_WRITE, name, data.c_str());
    }
    void fill() // three records, large enough for a page each and more
    {
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
        for (const char *name : {"a", "b", "c"})
            ASSERT_EQ(write(name, good), 101);
        std::filesystem::remove(PathGet(PATH_REST_DELTA));
        restDbChanged = 0;
    }
    void sql(const std::string &text)
    {
        sqlite3 *opened = nullptr;
        int result = sqlite3_open(path.c_str(), &opened);
        OWNED_DB db(opened);
        ASSERT_EQ(result, SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(opened, text.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(opened);
    }
    void overwrite(size_t at, const std::string &bytes)
    {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(at));
        file << bytes;
    }
    void expectSetAside(const std::string &reason, const std::string &before = "")
    {
        EXPECT_EQ(logText(), before + "(ERROR) restDbSetAside: REST cache " + path + " is damaged (" + reason +
                                 "): set aside as " + path + ".bad, begun anew\n");
        EXPECT_EQ(restDbChanged, 1);
        EXPECT_TRUE(fileExists(path + ".bad"));
    }
    void start() // as the monitor does
    {
        restDbCheck([](const char *name) { return strcmp(name, "other") != 0; });
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }
};

TEST_F(Recovery, ASoundCacheIsLeftAlone)
{
    start(); // none yet
    fill();
    start();
    EXPECT_EQ(cacheRead("b"), good);
    sql("ALTER TABLE restapi_db ADD COLUMN note TEXT; CREATE TABLE notes (text);"
        "INSERT INTO restapi_db (api_name, data) VALUES ('other', 'no JSON')"); // of another program
    start();
    EXPECT_EQ(write("b", "{}"), 101);
    EXPECT_EQ(cacheRead("other"), "no JSON");
    std::filesystem::resize_file(path, 0); // also a database: one without a table
    start();
    EXPECT_EQ(write("a", "{}"), 101);
    EXPECT_EQ(cacheRead("a"), "{}");
    EXPECT_EQ(logText(), "");
    EXPECT_FALSE(fileExists(path + ".bad"));
}

// What damages the file, and what the start says of it; whether its names can still be read from it.
struct DAMAGE_T {
    const char *name;
    void (*make)(Recovery *cache);
    const char *reason;
    bool named;
};
static const DAMAGE_T damages[] = {
    {"Garbage", [](Recovery *cache) { fileWrite(cache->path, std::string(8192, 'x')); }, "file is not a database",
     false},
    {"CutFile", [](Recovery *cache) { std::filesystem::resize_file(cache->path, 8192); },
     "database disk image is malformed", false},
    {"PageOverwritten", [](Recovery *cache) { cache->overwrite(4096, std::string(4096, '\xee')); }, nullptr, false},
    {"IndexBehindTheTable",
     [](Recovery *cache) {
         // the index's page, the third, as it was before any record: an empty leaf
         cache->overwrite(2 * 4096, std::string("\x0a\0\0\0\0\x10\0\0", 8));
     },
     "row 1 missing from index sqlite_autoindex_restapi_db_1", true},
    {"AnotherTable",
     [](Recovery *cache) { cache->sql("DROP TABLE restapi_db; CREATE TABLE restapi_db (api_name TEXT, text TEXT);"); },
     "the table has other columns", false},
    {"AColumnThatMustBeFilled",
     [](Recovery *cache) {
         cache->sql("DROP TABLE restapi_db;"
                    "CREATE TABLE restapi_db (api_name TEXT PRIMARY KEY, data TEXT, note TEXT NOT NULL);");
     },
     "the table has other columns", false},
};
struct Damaged : Recovery, testing::WithParamInterface<DAMAGE_T> {};

TEST_P(Damaged, IsSetAsideAtStartAndBegunAnew)
{
    fill();
    fileWrite(path + ".bad", "older");
    fileWrite(path + ".bad-journal", "older");
    GetParam().make(this);
    std::string damaged = fileRead(path);
    start();
    if (GetParam().reason != nullptr)
        expectSetAside(GetParam().reason);
    EXPECT_EQ(fileRead(path + ".bad"), damaged);
    EXPECT_FALSE(fileExists(path + ".bad-journal"));
    EXPECT_EQ(changeList(), GetParam().named ? "a\nb\nc\n" : "");
    EXPECT_EQ(cacheRead("a"), "");
    EXPECT_EQ(write("a", "{}"), 101);
    EXPECT_EQ(cacheRead("a"), "{}");
}
INSTANTIATE_TEST_SUITE_P(Cache, Damaged, testing::ValuesIn(damages),
                         [](const auto &test) { return std::string(test.param.name); });

TEST_F(Recovery, AnOperationThatMeetsDamageBeginsAnewAndIsDone)
{
    const std::string operation = "(ERROR) restapi_db_operation: ";
    fill();
    fileWrite(path, std::string(4096, 'x'));
    EXPECT_EQ(write("b", "{}"), 101);
    expectSetAside("file is not a database", operation + "prepare failed: file is not a database\n");
    EXPECT_EQ(cacheRead("b"), "{}");
    EXPECT_EQ(changeList(), "b\n");

    fill();
    logClear();
    overwrite(0, std::string(100, 'x'));
    EXPECT_EQ(restapi_db_operation(REST_DB_DELETE, "b", nullptr), 0);
    expectSetAside("file is not a database", operation + "SQL error: file is not a database\n");
    logClear();
    EXPECT_EQ(write("b", "{}"), 101);
    EXPECT_EQ(logText(), "");
}

TEST_F(Recovery, ARecordThatIsNoDocumentIsDeletedAtStart)
{
    fill();
    sql("UPDATE restapi_db SET data = substr(data, 1, 20000) WHERE api_name = 'a';"
        "INSERT INTO restapi_db VALUES ('d', '{} {}'), ('e', NULL), ('f', '[]'), ('g', '');");
    start();
    EXPECT_EQ(changeList(), "a\nd\ne\ng\n");
    EXPECT_EQ(restDbChanged, 1);
    EXPECT_EQ(cacheRead("a") + cacheRead("d") + cacheRead("g"), "");
    EXPECT_EQ(cacheRead("b"), good);
    EXPECT_EQ(cacheRead("f"), "[]");
    std::string log;
    for (const char *name : {"a", "d", "e", "g"})
        log += std::string("(ERROR) restDbCheck: REST cache: record '") + name + "' is damaged, deleted\n";
    EXPECT_EQ(logText(), log);
}

TEST_F(Recovery, ADirectoryInItsPlaceIsReportedByTheOperations)
{
    std::filesystem::create_directory(path);
    restDbCheck([](const char *) { return true; });
    EXPECT_EQ(logText(), "");
    EXPECT_EQ(write("a", "{}"), SQLITE_CANTOPEN);
    EXPECT_EQ(logText(), "(ERROR) restapi_db_operation: Can't open database: unable to open database file\n");
    EXPECT_TRUE(fileExists(path));
}

TEST_F(Recovery, ALockedCacheCostsTheStartOneWait)
{
    fill();
    SQL_LOCKED_T lock(PATH_REST_DB);
    restDbCheck([](const char *) { return true; });
    EXPECT_EQ(lock.waited, 3000000);
    EXPECT_EQ(logText(), "");
}

TEST_F(Recovery, ADamagedFileThatCannotBeSetAsideIsRemoved)
{
    fill();
    std::filesystem::create_directories(path + ".bad/full");
    fileWrite(path, std::string(4096, 'x'));
    start();
    EXPECT_EQ(logText(), "(ERROR) restDbSetAside: REST cache " + path +
                             " is damaged (file is not a database): removed, begun anew\n");
    EXPECT_EQ(write("a", "{}"), 101);
}
