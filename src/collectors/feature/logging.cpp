#include "collectors/feature/logging.h"

// Console and command logging are platform reads; the buffered log's mode and severity stand only in "show logging",
// which is run once for each.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/cli.h"

#include <cstring>
#include <iterator>

// Characters of a line in which the severity is looked for, terminator included.
constexpr size_t SEVERITY_LINE_SIZE = 512;

// First line of "show logging" that has the label; "" when there is none.
static int loggingLineGet(CLIENT_HANDLE_T *clientHandle, const char *caller, const char *label, char *line, size_t size)
{
    SHOW_FILE_T show;

    line[0] = '\0';
    int result = showFileRun(&show, clientHandle, {caller, "show logging", PATH_SHOW_LOGGING});
    if (result != RESULT_OK)
        return result == RESULT_OPEN_FAILED ? static_cast<int>(OPENCLT_NOT_FOUND) : result;
    while (showFileLine(&show, line, size)) {
        if (strstr(line, label) != nullptr) {
            showRowTaken();
            return RESULT_OK;
        }
    }
    line[0] = '\0';
    return RESULT_OK;
}

int getLogConfig(CLIENT_HANDLE_T *clientHandle, LOG_CONFIG_T *config)
{
    *config = {};
    int result = bufferedLogModeGet(clientHandle, &config->switchLog);
    if (result != RESULT_OK) {
        LOG_ERROR("Bad return code trying to get sys Logging mode. (result = %d)\n", result);
        return result;
    }
    result = rpcclt_openapiConsoleLoggingSeverityGet(clientHandle, &config->consoleLoggingLevel);
    if (result != OPENCLT_OK) {
        LOG_ERROR("Bad return code trying to get Console Logging level. (result = %d)\n", result);
        return result;
    }
    config->bufferedLoggingLevel = config->consoleLoggingLevel; // for an output that gives none
    result = bufferedLogseverityGet(clientHandle, &config->bufferedLoggingLevel);
    if (result != RESULT_OK) {
        LOG_ERROR("Bad return code trying to get Buffered Logging level. (result = %d)\n", result);
        return result;
    }
    result = rpcclt_openapiConsoleLoggingModeGet(clientHandle, &config->consoleLog);
    if (result == OPENCLT_OK)
        result = rpcclt_openapiCliCmdLoggingModeGet(clientHandle, &config->commandLog);
    if (result != OPENCLT_OK)
        LOG_ERROR("Bad return code trying to get Persistent Logging mode. (result = %d)\n", result);
    return result;
}

int getLogConfigJson(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size)
{
    LOG_CONFIG_T config;

    int result = getLogConfig(clientHandle, &config);
    if (result != RESULT_OK)
        return result;
    OWNED_JSON logging(cJSON_CreateObject());
    if (logging == nullptr) {
        LOG_ERROR("getLogConfigJson: Failed to create cJSON object\n");
        return RESULT_FAILED;
    }
    jsonAddBool(logging.get(), "commandLog", config.commandLog != 0);
    jsonAddBool(logging.get(), "consoleLog", config.consoleLog != 0);
    jsonAddBool(logging.get(), "switchLog", config.switchLog != 0);
    jsonAddNumber(logging.get(), "bufferedLoggingLevel", config.bufferedLoggingLevel);
    jsonAddNumber(logging.get(), "consoleLoggingLevel", config.consoleLoggingLevel);
    return jsonPrintInto(logging.get(), JSON_FORMATTED, buffer, size);
}

// Buffered Logging                        : enabled
int bufferedLogModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t *mode)
{
    char line[CLI_LINE_SIZE];

    int result = loggingLineGet(clientHandle, __func__, "Buffered Logging", line, sizeof(line));
    if (result == RESULT_OK && line[0] != '\0')
        *mode = strstr(line, "enabled") != nullptr ? 1 : 0;
    return result;
}

// Buffered Logging Severity Filter        : info
int bufferedLogseverityGet(CLIENT_HANDLE_T *clientHandle, uint32_t *level)
{
    static const char *const severities[] = {"emergency", "alert",  "critical", "error",
                                             "warning",   "notice", "info",     "debug"};
    char line[SEVERITY_LINE_SIZE];

    int result = loggingLineGet(clientHandle, __func__, "Buffered Logging Severity Filter", line, sizeof(line));
    if (result != RESULT_OK)
        return result;
    for (uint32_t i = 0; i < std::size(severities); i++) {
        if (strstr(line, severities[i]) != nullptr) {
            *level = i;
            break;
        }
    }
    return RESULT_OK;
}
