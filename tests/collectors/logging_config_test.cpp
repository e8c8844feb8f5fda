#include "collectors/feature/logging.h"
#include "support/build.h"
#include "switch/fixture.h"

using LoggingConfig = SWITCH_TEST;

TEST_F(LoggingConfig, BufferedLogFollowsTheCommandLines)
{
    const std::tuple<const char *, const char *, int> cases[] = {
        {"", "false", 1}, // the console's severity
        {"Buffered Logging : enabled\nBuffered Logging Severity Filter : warning\n", "true", 4},
        {"Buffered Logging : disabled\r\nBuffered Logging Severity Filter : informational\r\n", "false", 6},
        {"Console Logging : enabled\nBuffered Logging : enabled\nBuffered Logging Severity Filter : odd\n", "true", 1},
        {"Buffered Logging Severity Filter : emergency\nBuffered Logging Severity Filter : debug", "false", 0},
    };
    vsState().system.commandLogging = true;
    vsState().system.consoleLogging = false;
    for (const auto &[text, switchLog, level] : cases) {
        vsTextSet("show logging", text);
        EXPECT_EQ(compact(buildBuffer(getLogConfigJson, 4096).text),
                  std::string(R"({"commandLog":true,"consoleLog":false,"switchLog":)") + switchLog +
                      R"(,"bufferedLoggingLevel":)" + std::to_string(level) + R"(,"consoleLoggingLevel":1})")
            << text;
    }
    for (const auto &[kind, result] : {std::pair(VS_FAIL, 10000), {VS_NO_FILE, -26}}) {
        vsFaultAdd({"show logging", "", 1, kind});
        logClear();
        EXPECT_EQ(buildBuffer(getLogConfigJson, 4096).result, result);
        EXPECT_TRUE(has(logText(), "(ERROR) getLogConfig: Bad return code trying to get sys Logging mode. (result = " +
                                       std::to_string(result) + ")\n"));
        vsFaultsClear();
    }
}
