#include "switch/session.h"

#include "fixture.h"

#include <unistd.h>

using SESSION = SWITCH_TEST;

namespace {
std::string warnings(int times)
{
    std::string text;
    while (times-- > 0)
        text += "(WARN) initHandler: RPC call can fail until server starts. Keep trying (result = -5)\n";
    return text;
}

const std::string VERSIONS = "(DEBUG) initHandler: ICOS Version = 8.4.3.50\n"
                             "(DEBUG) initHandler: Open API Version = 1.22.0.0\n";

std::string registered(const std::string &baseName)
{
    return "(DEBUG) initHandler: Register RPC to OpEN success. (client name = " +
           (baseName + "_" + std::to_string(getpid())).substr(0, 99) + ")\n";
}
} // namespace

TEST_F(SESSION, ServerAnsweringLateIsWaitedFor)
{
    logLevelSet('7');
    for (uint32_t nth = 1; nth <= 6; nth++)
        failCall("rpcclt_openapiConnectivityCheck", -5, nth);
    EXPECT_EQ(initHandler("restApiMonitor", &handle), 0);
    EXPECT_EQ(sleptSeconds(), 18U);
    EXPECT_EQ(logText(), registered("restApiMonitor") + warnings(6) + VERSIONS);
}

TEST_F(SESSION, RefusedRegistrationFails)
{
    failCall("openapiClientRegister", -3);
    EXPECT_EQ(initHandler("restApiMonitor", &handle), -1);
    EXPECT_EQ(vsCallCount("rpcclt_openapiConnectivityCheck"), 0U);
    EXPECT_EQ(logText(), "(ERROR) initHandler: \nFailed to initialize RPC to OpEN. Exiting (result = -3)\n");
}

TEST_F(SESSION, VersionQueriesMayFail)
{
    logLevelSet('7');
    std::string base(120, 'n'); // the name is cut, not refused
    failCall("rpcclt_openapiNetworkOSVersionGet", -1);
    failCall("rpcclt_openapiApiVersionGet", -1);
    EXPECT_EQ(initHandler(base.c_str(), &handle), 0);
    EXPECT_EQ(logText(), registered(base) + "(ERROR) initHandler: Network OS Version retrieve error\n"
                                            "(ERROR) initHandler: Open API Version retrieve error\n");
    EXPECT_EQ(sleptSeconds(), 0U);
}
