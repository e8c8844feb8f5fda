// Documents: complete or not printed at all, whatever allocation fails; files that load and files that do not.
#include "runtime/json.h"

#include "support/alloc.h"
#include "support/root.h"

#include <gtest/gtest.h>

static OWNED_JSON sampleBuild()
{
    jsonBuildBegin();
    OWNED_JSON root(cJSON_CreateObject());
    jsonAddNumber(root.get(), "n", 1.5);
    jsonAddText(root.get(), "t", "text");
    jsonAddBool(root.get(), "b", true);
    cJSON *inner = jsonAddObject(root.get(), "o");
    jsonAddNumber(inner, "i", 2);
    jsonAddItem(root.get(), "x", OWNED_JSON(cJSON_CreateNull()));
    cJSON *array = jsonAddArray(root.get(), "a");
    jsonAppendNumber(array, 3);
    jsonAppendText(array, "four");
    jsonAddNumber(jsonAppendObject(array), "five", 5);
    return root;
}

static const char *const SAMPLE = R"({"n":1.5,"t":"text","b":true,"o":{"i":2},"x":null,"a":[3,"four",{"five":5}]})";

TEST(Json, EachFailingAllocationGivesNoTextAndTheNextDocumentIsWhole)
{
    TEST_ROOT_T root;
    bool failed = true;
    for (int n = 0; failed; n++) {
        ASSERT_LT(n, 1000);
        logClear();
        allocFailAt(n, ALLOC_CJSON);
        OWNED_JSON tree = sampleBuild();
        char *text = nullptr;
        int result = jsonToStr(tree.get(), JSON_COMPACT, &text);
        failed = allocFailStop();
        OWNED_TEXT owned(text);
        EXPECT_EQ(result, failed ? 10000 : 0) << n;
        EXPECT_STREQ(text, failed ? nullptr : SAMPLE) << n;
        EXPECT_EQ(logText(), failed ? "(ERROR) jsonToStr: Response error\n" : "") << n;
        OWNED_JSON again = sampleBuild();
        OWNED_TEXT whole(jsonPrint(again.get(), JSON_COMPACT));
        EXPECT_STREQ(whole.get(), SAMPLE) << n;
    }
}

TEST(Json, BytesThatAreNoCharacterAreReplaced)
{
    struct {
        const char *text;
        const char *printed;
    } cases[] = {
        {"Bühne \xf0\x9f\x8e\xb5", "\"Bühne \xf0\x9f\x8e\xb5\""},
        {"cut \xc3", "\"cut \xef\xbf\xbd\""},
        {"\xfflatin \xe9t\xe9", "\"\xef\xbf\xbdlatin \xef\xbf\xbdt\xef\xbf\xbd\""},
        {"\xc0\xaf", "\"\xef\xbf\xbd\xef\xbf\xbd\""},                                 // longer than needed
        {"\xed\xa0\x80", "\"\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\""},                 // half a pair
        {"\xf4\x90\x80\x80", "\"\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\""}, // beyond the last character
    };
    for (const auto &one : cases) {
        OWNED_JSON tree(cJSON_CreateString(one.text));
        OWNED_TEXT text(jsonPrint(tree.get(), JSON_COMPACT));
        EXPECT_STREQ(text.get(), one.printed);
    }
}

TEST(Json, FileLoads)
{
    TEST_ROOT_T root;
    std::string path = root.dir + "/file.json";
    using ROW_T = std::pair<const char *, const char *>; // content (null: no file), what is loaded (null: nothing)
    for (ROW_T row : {ROW_T{nullptr, nullptr},
                      {"", nullptr},
                      {"{\"a\":", nullptr},
                      {"[1]\n", "[1]"},
                      {" {\"a\":{}} ", "{\"a\":{}}"}}) {
        remove(path.c_str());
        if (row.first != nullptr)
            fileWrite(path, row.first);
        OWNED_JSON tree = jsonFileLoad(path.c_str());
        OWNED_TEXT text(tree ? cJSON_PrintUnformatted(tree.get()) : nullptr);
        EXPECT_STREQ(text.get(), row.second) << (row.first == nullptr ? "(none)" : row.first);
    }
    EXPECT_EQ(jsonFileLoad(root.dir.c_str()), nullptr);
}
