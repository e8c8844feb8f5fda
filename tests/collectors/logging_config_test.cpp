#include "collectors/feature/logging_config.h"
#include "support/build.h"
#include "switch/fixture.h"

using LoggingConfig = SWITCH_TEST;

TEST_F(LoggingConfig, BufferedLogFollowsTheCommandLines)
{
    struct {
        const char *text;
        const char *switchLog;
        int level;
    } cases[] = {
        {"", "false", 1}, // the console's severity
        {"Buffered Logging : enabled\nBuffered Logging Severity Filter : warning\n", "true", 4},
        {"Buffered Logging : disabled\r\nBuffered Logging Severity Filter : informational\r\n", "false", 6},
        {"Console Logging : enabled\nBuffered Logging : enabled\nBuffered Logging Severity Filter : odd\n", "true", 1},
        {"Buffered Logging Severity Filter : emergency\nBuffered Logging Severity Filter : debug", "false", 0},
    };
    vsState().system.commandLogging = true;
    vsState().system.consoleLogging = false;
    for (const auto &one : cases) {
        vsTextSet("show logging", one.text);
        EXPECT_EQ(compact(buildBuffer(getLogConfigJson, 4096).text),
                  std::string(R"({"commandLog":true,"consoleLog":false,"switchLog":)") + one.switchLog +
                      R"(,"bufferedLoggingLevel":)" + std::to_string(one.level) + R"(,"consoleLoggingLevel":1})")
            << one.text;
    }
    EXPECT_FALSE(fileExists(PathGet(PATH_SHOW_LOGGING)));
}

TEST_F(LoggingConfig, FirstFailureEndsIt)
{
    struct {
        VS_FAULT_T fault;
        int result;
        const char *what;
    } cases[] = {
        {{"show logging", "", 1, VS_FAIL}, 10000, "sys Logging mode"},
        {{"show logging", "", 1, VS_NO_FILE}, -26, "sys Logging mode"},
        {{"rpcclt_openapiConsoleLoggingSeverityGet"}, -1, "Console Logging level"},
        {{"show logging", "", 2, VS_NO_FILE}, -26, "Buffered Logging level"},
        {{"rpcclt_openapiConsoleLoggingModeGet"}, -1, "Persistent Logging mode"},
        {{"rpcclt_openapiCliCmdLoggingModeGet"}, -1, "Persistent Logging mode"},
    };
    for (const auto &one : cases) {
        vsFaultAdd(one.fault);
        BUILT_T built = buildBuffer(getLogConfigJson, 4096);
        std::string line = std::string("(ERROR) getLogConfig: Bad return code trying to get ") + one.what +
                           ". (result = " + std::to_string(one.result) + ")\n";
        EXPECT_EQ(built.result, one.result) << line;
        EXPECT_EQ(built.text, "") << line;
        EXPECT_NE(logText().find(line), std::string::npos) << logText();
        vsFaultsClear();
    }
}
