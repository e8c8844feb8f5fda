#include "collectors/system/special_interface.h"
#include "support/alloc.h"
#include "support/build.h"
#include "support/root.h"

#include "control.h"
#include "model.h"

#include <gtest/gtest.h>

class SpecialInterface : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText("{}"), "");
        VS_SYSTEM_T &system = vsState().system;
        system.serviceAddress = 0xc0a800ef;
        system.serviceMask = 0xffffff00;
        system.serviceGateway = 0xc0a80001;
        system.serviceProtocol = 3;
    }
    void TearDown() override
    {
        vsUnload();
    }
    TEST_ROOT_T root;
};

TEST_F(SpecialInterface, ShowsTheServicePort)
{
    BUILT_T built = buildBuffer(getSpecialInfInfo, 1024);
    EXPECT_EQ(built.result, 0);
    EXPECT_EQ(built.text, "{\n\t\"protocolType\":\t1,\n\t\"ip\":\t\"192.168.0.239\",\n\t\"mask\":\t\"255.255.255.0\",\n"
                          "\t\"gateway\":\t\"192.168.0.1\"\n}");
}

TEST_F(SpecialInterface, ProtocolTypeFollowsTheMode)
{
    struct {
        uint32_t mode;
        const char *begin;
    } cases[] = {{0, R"({"protocolType":3,)"},
                 {1, R"({"protocolType":2,)"},
                 {2, R"({"protocolType":3,)"},
                 {3, R"({"protocolType":1,)"},
                 {4, R"({"protocolType":3,)"}};
    for (const auto &one : cases) {
        vsState().system.serviceProtocol = one.mode;
        EXPECT_EQ(compact(buildBuffer(getSpecialInfInfo, 1024).text).rfind(one.begin, 0), 0u) << one.mode;
    }
}

TEST_F(SpecialInterface, WhatCannotBeReadIsEmpty)
{
    struct {
        const char *call;
        const char *document;
        const char *log;
    } cases[] = {
        {"rpcclt_openapiServicePortIPv4ProtocolModeGet",
         R"({"protocolType":3,"ip":"192.168.0.239","mask":"255.255.255.0","gateway":"192.168.0.1"})", ""},
        {"rpcclt_openapiServicePortIPv4AddrGet", R"({"protocolType":1,"ip":"","mask":"","gateway":""})",
         "(ERROR) servicePortIPv4ParametersGet: Bad return code trying to get service port IP address and subnet mask. "
         "(result = -5)\n"},
        {"rpcclt_openapiServicePortGatewayIPv4AddrGet",
         R"({"protocolType":1,"ip":"192.168.0.239","mask":"255.255.255.0","gateway":""})",
         "(ERROR) servicePortIPv4ParametersGet: Bad return code trying to get service port gateway. (result = -5)\n"},
    };
    for (const auto &one : cases) {
        vsFaultAdd({one.call, "", 0, VS_FAIL, -5});
        logClear();
        EXPECT_EQ(compact(buildBuffer(getSpecialInfInfo, 1024).text), one.document);
        EXPECT_EQ(logText(), one.log);
        vsFaultsClear();
    }
}

TEST_F(SpecialInterface, NoMemoryLeavesTheBuffer)
{
    bool reached = true;
    for (int n = 0; reached; n++) {
        logClear();
        allocFailAt(n, ALLOC_CJSON);
        BUILT_T built = buildBuffer(getSpecialInfInfo, 1024);
        reached = allocFailStop();
        EXPECT_EQ(built.text.empty(), reached) << n;
        EXPECT_EQ(built.result, n == 0 ? 10002 : 0) << n;
        EXPECT_EQ(logText(), n > 0 && reached ? "(ERROR) getSpecialInfInfo: package response str error\n" : "") << n;
    }
}
