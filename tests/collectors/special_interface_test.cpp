#include "collectors/system/special_interface_route.h"
#include "support/build.h"

using SpecialInterface = BUILDER_TEST;

TEST_F(SpecialInterface, ProtocolTypeFollowsTheMode)
{
    for (const auto &[mode, type] : {std::pair(0U, "3"), {1U, "2"}, {2U, "3"}, {3U, "1"}, {4U, "3"}}) {
        state.system.serviceProtocol = mode;
        EXPECT_TRUE(
            has(compact(buildBuffer(getSpecialInfInfo, 1024).text), std::string(R"({"protocolType":)") + type + ","))
            << mode;
    }
    logClear();
    state.system.serviceProtocol = 3;
    vsFaultAdd({"rpcclt_openapiServicePortIPv4AddrGet", "", 0, VS_FAIL, -5});
    EXPECT_EQ(compact(buildBuffer(getSpecialInfInfo, 1024).text),
              R"({"protocolType":1,"ip":"","mask":"","gateway":""})");
    EXPECT_EQ(logText(), "(ERROR) servicePortIPv4ParametersGet: Bad return code trying to get service port IP address "
                         "and subnet mask. (result = -5)\n");
}
