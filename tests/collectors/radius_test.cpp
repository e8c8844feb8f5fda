#include "collectors/feature/radius.h"
#include "support/build.h"
#include "switch/fixture.h"

using Radius = SWITCH_TEST;

static const char servers[] = "\nCur  Host Address                      Port  Type\n"
                              "---- --------------------------------- ----- ---------\n"
                              "*    192.168.1.10                      1812  Primary\n"
                              "     authentication-server.example.net 1645  Secondary\r\n"
                              "     unknown.example.net               1812  Secondary\n"
                              "     10.0.0.9                          1813  Secondary\n"
                              "     10.0.0.10                         1812  Secondary\n";

TEST_F(Radius, FirstFourServersAreListedLastReadFirst)
{
    vsState().system.dot1x = vsState().system.authManager = true;
    vsState().radius = {{"192.168.1.10", 1812}, {"authentication-server.example.net", 1645}, {"10.0.0.9", 1813}};
    vsTextSet("show radius servers", servers);
    BUILT_T built = buildBuffer(getRadiusServerJson, 8192);
    EXPECT_EQ(compact(built.text), R"({"servers":[{"ipAddress":"10.0.0.9","portNumber":1813},)"
                                   R"({"ipAddress":"unknown.example.net","portNumber":0},)"
                                   R"({"ipAddress":"authentication-server.example.n","portNumber":1645},)"
                                   R"({"ipAddress":"192.168.1.10","portNumber":1812}],"status":true,"reauthTime":0})");
    EXPECT_EQ(buildBuffer(getRadiusServerJson, built.text.size() + 1).text, built.text);
    EXPECT_EQ(buildBuffer(getRadiusServerJson, built.text.size()).result, 10000);
    logClear();
    failCall("show radius servers", -5, 1);
    EXPECT_EQ(buildBuffer(getRadiusServerJson, 8192).result, 10016);
    EXPECT_EQ(logText(), "(ERROR) platformRun: Show cmd failed: show radius servers\n"
                         "(ERROR) getRadiusServer: show radius servers failed, result:-5\n");
}
