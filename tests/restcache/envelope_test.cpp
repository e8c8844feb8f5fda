#include "restcache/envelope.h"

#include "runtime/json.h"
#include "support/root.h"

#include <gtest/gtest.h>

static const std::string okResp = "\"resp\":{\"respCode\":0,\"respMsg\":\"Success\",\"status\":\"success\"}}";

TEST(Envelope, CarriesThePayloadOnlyWithCodeZeroKeyAndPayload)
{
    struct {
        int code;
        const char *key, *payload;
        std::string text;
    } cases[] = {
        {0, "vlans", "[1,{\"a\":\"b\"}]", "{\"vlans\":[1,{\"a\":\"b\"}]," + okResp},
        {0, "vlans", nullptr, "{" + okResp},
        {10003, "vlans", "[1]", R"({"resp":{"respCode":10003,"respMsg":"Invalid argument","status":"fail"}})"},
        {4242, nullptr, nullptr, R"({"resp":{"respCode":4242,"respMsg":"Error code unknown","status":"fail"}})"},
        {11000, nullptr, nullptr, R"({"resp":{"respCode":11000,"respMsg":"","status":"fail"}})"},
        {-7, nullptr, nullptr, R"({"resp":{"respCode":-7,"respMsg":"Failed to allocate memory","status":"fail"}})"},
    };
    TEST_ROOT_T root;
    for (const auto &c : cases) {
        char *text = nullptr;
        char fixed[1024] = {};
        jsonBuildBegin();
        ASSERT_EQ(responseJsonRreallocStr(c.code, c.key, c.payload, &text), 0) << c.text;
        ASSERT_EQ(responseJsonStr(c.code, c.key, c.payload, fixed, sizeof(fixed)), 0) << c.text;
        EXPECT_EQ(compact(text), c.text);
        EXPECT_STREQ(text, fixed);
        free(text);
    }
}

TEST(Envelope, RefusesWhatIsNotJsonOrDoesNotFit)
{
    TEST_ROOT_T root;
    char *text = strdup("[1");
    char fixed[100] = "as it was";
    jsonBuildBegin();
    EXPECT_EQ(responseJsonRreallocStr(0, "x", text, &text), 10000);
    EXPECT_STREQ(text, "[1");
    EXPECT_EQ(logText(), "(ERROR) responseJsonRreallocStr: [MEM] Failed to parse data JSON\n");
    logClear();
    EXPECT_EQ(responseJsonStr(0, "x", text, fixed, sizeof(fixed)), -1);
    EXPECT_EQ(logText(), "");
    EXPECT_EQ(responseJsonStr(0, "x", "[1]", fixed, 91), -1);
    EXPECT_STREQ(fixed, "as it was");
    EXPECT_EQ(responseJsonStr(0, "x", "[1]", fixed, 92), 0); // the text and its terminator
    EXPECT_EQ(strlen(fixed), 91U);
    free(text);
}
