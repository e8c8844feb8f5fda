#include "collectors/system/special_interface.h"
#include "support/build.h"

struct SpecialInterface : BUILDER_TEST {
    void SetUp() override
    {
        VS_SYSTEM_T &system = vsState().system;
        system.serviceAddress = 0xc0a800ef;
        system.serviceMask = 0xffffff00;
        system.serviceGateway = 0xc0a80001;
        system.serviceProtocol = 3;
    }
};

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
