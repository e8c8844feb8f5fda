#include "restcache/run.h"

#include "fakes.h"
#include "support/alloc.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>

// A row of each kind of builder and of each deviation from the rule, the name of its lock, and what its log lines say.
static const struct EXPECTED_T {
    DOCUMENT_T row;
    const char *lockName, *caller, *failed, *notLinked;
} expected[] = {
    {document("text", "key", BUILDER(fakeText), IN_NO_CYCLE), "text", "wb_text", "fakeText failed", "fakeText"},
    {document("words", "key", BUILDER(fakeText), IN_NO_CYCLE).loggedBy("wb_w").failing("it failed").missing("it"),
     "words", "wb_w", "it failed", "it"},
    {document("a/list", "key", BUILDER(fakeText), IN_NO_CYCLE).with(ROW_NO_PAYLOAD_OK), "a_list", "wb_a_list",
     "fakeText failed", "fakeText"},
    {document("empty", "key", BUILDER(fakeText), IN_NO_CYCLE).with(ROW_EMPTY_OK), "empty", "wb_empty",
     "fakeText failed", "fakeText"},
    {document("object", "key", BUILDER(fakeObject), IN_NO_CYCLE), "object", "wb_object", "fakeObject failed",
     "fakeObject"},
    {document("small", "key", BUILDER(fakeBuffer, 1024), IN_NO_CYCLE), "small", "wb_small", "fakeBuffer failed",
     "fakeBuffer"},
    {document("fixed", "key", BUILDER(fakeBuffer, 1024), IN_NO_CYCLE).with(ROW_FIXED_ENVELOPE), "fixed", "wb_fixed",
     "fakeBuffer failed", "fakeBuffer"},
    {document("large", "key", BUILDER(fakeBuffer, 30720), IN_NO_CYCLE), "large", "wb_large", "fakeBuffer failed",
     "fakeBuffer"},
    {document("shared", "key", BUILDER(fakeBuffer, 4096), IN_NO_CYCLE).with(ROW_SHARED_BUFFER), "shared", "wb_shared",
     "fakeBuffer failed", "fakeBuffer"},
    {document("silent", "key", BUILDER(fakeBuffer, 8192), IN_NO_CYCLE).with(ROW_SHARED_BUFFER | ROW_ALLOC_SILENT),
     "silent", "wb_silent", "fakeBuffer failed", "fakeBuffer"},
    {document("records", "key", BUILDER(fakeWrites), IN_NO_CYCLE), "records", "wb_records", "fakeWrites failed",
     "fakeWrites"},
    {direct("direct", "key", BUILDER(fakeText), EVERY_CYCLE).loggedBy("get_it").failing("Failed,").missing("list"), "",
     "get_it", "Failed,", "list"},
    {direct("own", "key", BUILDER(fakeWrites), EVERY_CYCLE), "", "", "", "fakeWrites"},
};

static CLIENT_HANDLE_T handle;
static const std::string resp = R"("resp":{"respCode":0,"respMsg":"Success","status":"success"}})";

struct Run : testing::Test {
    TEST_ROOT_T root;
    std::vector<DOCUMENT_T> table;
    void SetUp() override
    {
        fake = FAKE_T();
        for (const EXPECTED_T &one : expected)
            table.push_back(one.row);
        documentTableSet(table.data(), table.size());
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }
    static std::string line(const std::string &caller, const std::string &rest)
    {
        return "(ERROR) " + caller + ": " + rest + "\n";
    }
};

TEST_F(Run, EveryRowIsBuiltUnderItsLockAndStoredUnderItsKey)
{
    for (const EXPECTED_T &one : expected) {
        const std::string name = one.row.name;
        fake = FAKE_T();
        fake.lockName = one.lockName;
        LISTENER_T listener;
        ASSERT_EQ(rowRun(&handle, one.row), 0) << name;
        EXPECT_EQ(fake.built, std::vector<std::string>{name});
        EXPECT_EQ(fake.lockHeld, !one.row.isDirect) << name;
        EXPECT_EQ(listener.signalled(), !one.row.isDirect) << name;
        EXPECT_EQ(fake.bufferSize, one.row.builder.size) << name;
        EXPECT_TRUE(fake.bufferClean || one.row.builder.size == 0) << name;
        std::string payload = one.row.builder.kind == BUILDER_OBJECT ? R"({"session":1})" : "[1]";
        if (one.row.builder.kind == BUILDER_WRITES)
            EXPECT_EQ(cacheRead(name), "");
        else
            EXPECT_EQ(compact(cacheRead(name)), "{\"key\":" + payload + "," + resp);
        EXPECT_STREQ(documentCurrent(), "");
    }
    std::string list = changeList();
    LISTENER_T listener;
    EXPECT_EQ(rest_db_writeback(&handle, "text"), 0); // signalled also without a change
    EXPECT_TRUE(listener.signalled());
    EXPECT_EQ(changeList(), list);
    EXPECT_EQ(logText(), "");
}

TEST_F(Run, FailuresKeepTheOldRecordAndNameTheBuilder)
{
    LISTENER_T listener;
    for (const EXPECTED_T &one : expected) {
        const std::string caller = one.caller, missing = std::string(one.notLinked) + " not linked";
        DOCUMENT_T row = one.row;
        fake.result = 10003;
        logClear();
        EXPECT_EQ(rowRun(&handle, row), 10003);
        EXPECT_EQ(logText(), caller.empty() ? "" : line(caller, caller + ": " + one.failed + " result=10003"));
        row.builder = {row.builder.name, row.builder.kind, nullptr, nullptr, nullptr, nullptr, row.builder.size};
        logClear();
        EXPECT_EQ(rowRun(&handle, row), -1);
        EXPECT_EQ(logText(), row.isDirect ? line("GetAllRestApiData", row.name + (": " + missing))
                                          : line(caller, caller + ": " + missing));
        EXPECT_EQ(cacheRead(row.name), "");
    }
    EXPECT_EQ(changeList(), "");
    EXPECT_FALSE(listener.signalled());
}

TEST_F(Run, WritebackRefusesUnknownNamesAndAMissingLock)
{
    EXPECT_EQ(rest_db_writeback(&handle, "Text"), -1);
    EXPECT_EQ(rest_db_writeback(&handle, "direct"), -1);
    EXPECT_EQ(rest_db_writeback(nullptr, "text"), -1);
    EXPECT_EQ(rest_db_writeback(&handle, nullptr), -1);
    const std::string writeback = "rest_db_writeback", unknown = writeback + ": unknown api_name '",
                      null = line(writeback, writeback + ": NULL handle or api_name");
    EXPECT_EQ(logText(), line(writeback, unknown + "Text'") + line(writeback, unknown + "direct'") + null + null);
    std::filesystem::remove_all(PathGet(PATH_LOCK_DIR));
    fileWrite(PathGet(PATH_LOCK_DIR), "");
    EXPECT_EQ(rest_db_writeback(&handle, "text"), -1);
    EXPECT_TRUE(fake.built.empty());
    EXPECT_EQ(restDbNotStored(), 1u);
}

TEST_F(Run, SuccessWithoutAPayload)
{
    fake.payload = false;
    EXPECT_EQ(rest_db_writeback(&handle, "text"), 0);
    EXPECT_EQ(logText(), line("wb_text", "wb_text: fakeText failed result=0"));
    logClear();
    EXPECT_EQ(rest_db_writeback(&handle, "a/list"), 0);
    EXPECT_EQ(compact(cacheRead("a/list")), "{" + resp);
    EXPECT_EQ(logText(), "");
    EXPECT_EQ(changeList(), "a/list\n");
}

TEST_F(Run, NothingFoundIsASuccessWhereTheRowSaysSo)
{
    fake.result = 10015;
    EXPECT_EQ(rest_db_writeback(&handle, "empty"), 0);
    EXPECT_EQ(compact(cacheRead("empty")), R"({"key":[1],)" + resp);
    fake.payload = false;
    EXPECT_EQ(rest_db_writeback(&handle, "empty"), 0);
    EXPECT_EQ(logText(), line("wb_empty", "wb_empty: fakeText failed result=0"));
    EXPECT_EQ(rest_db_writeback(&handle, "text"), 10015);
}

TEST_F(Run, WritesOnlyAnEnvelopeThatWasBuilt)
{
    fake.text = "[1";
    EXPECT_EQ(rest_db_writeback(&handle, "text"), 0);
    EXPECT_EQ(logText(), "(ERROR) responseJsonRreallocStr: [MEM] Failed to parse data JSON\n");
    fake.text = "[\"" + std::string(1000, 't') + "\"]"; // fits the builder's buffer, its envelope does not
    EXPECT_EQ(rest_db_writeback(&handle, "fixed"), 0);
    EXPECT_EQ(changeList(), "");
    EXPECT_EQ(rest_db_writeback(&handle, "small"), 0);
    EXPECT_EQ(changeList(), "small\n");
}

// Own allocations fail one at a time; the run's first one is its buffer.
TEST_F(Run, BuffersThatCannotBeAllocated)
{
    auto run = [](const char *name, unsigned source) {
        logClear();
        allocFailAt(0, source);
        int result = rest_db_writeback(&handle, name);
        allocFailStop();
        return std::to_string(result) + " " + logText();
    };
    EXPECT_EQ(run("shared", ALLOC_OWN), "-1 " + line("wb_shared", "wb_shared: alloc failed"));
    EXPECT_EQ(run("silent", ALLOC_OWN), "-1 ");
    EXPECT_EQ(run("object", ALLOC_CJSON), "-1 " + line("wb_object", "wb_object: cJSON_CreateObject failed"));
    EXPECT_TRUE(fake.built.empty());
}
