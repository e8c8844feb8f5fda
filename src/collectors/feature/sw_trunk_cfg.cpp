#include "collectors/feature/sw_trunk_cfg.h"

// Three small documents without a platform call of their own: two read lines of a show command, the third copies two
// members of a file. Uses the show files of switch/ and runtime/json.h.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"

#include <cstring>

constexpr size_t BALANCE_MODE_COLUMN = 48;

static bool isEnabled(const char *line)
{
    return strstr(line, "Enabled") != nullptr;
}

//           1         2         3         4
// 01234567890123456789012345678901234567890123456789
// Auto LAG Admin Mode............................ Disabled
// Auto LAG Global Hash Mode...................... 3 (Source/Destination MAC)
//
// The hash mode is numbered from 1 here and from 0 in the document.
static bool autoLagLineAdd(const char *line, cJSON *settings)
{
    int hashMode;

    if (textBegins(line, "Auto LAG Admin Mode"))
        jsonAddBool(settings, "autoMode", isEnabled(line));
    else if (textBegins(line, "Auto LAG Global Ha") && columnNumber(line, BALANCE_MODE_COLUMN, &hashMode))
        jsonAddNumber(settings, "balanceMode", static_cast<double>(hashMode) - 1);
    else
        return false;
    return true;
}

// A deep copy of the file's member, whatever it is; [] when there is none.
static void manualPortsAdd(const cJSON *file, const char *key, cJSON *trunk)
{
    const cJSON *ports = cJSON_GetObjectItem(file, key);

    jsonAddItem(trunk, key, OWNED_JSON(ports == nullptr ? cJSON_CreateArray() : cJSON_Duplicate(ports, true)));
}

int getAutoLagCfg(CLIENT_HANDLE_T *clientHandle, char **out)
{
    SHOW_REQUEST_T request = {__func__, "show port-channel auto all", PATH_SHOW_AUTO_LAG};
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];

    request.name = SHOW_NAME_RANDOM;
    request.openLine = SHOW_OPEN_UPPER;
    *out = nullptr;
    int result = showFileRun(&show, clientHandle, request);
    if (result != RESULT_OK)
        return result;

    OWNED_JSON settings(cJSON_CreateObject());
    while (showFileLine(&show, line, sizeof(line))) {
        if (autoLagLineAdd(line, settings.get()))
            showRowTaken();
    }
    return jsonToStr(settings.get(), JSON_COMPACT, out);
}

//           1         2         3         4
// 01234567890123456789012345678901234567890123456789
// Global Auto-Trunk Mode........................ Enabled
int switchTrunkModeGet(CLIENT_HANDLE_T *clientHandle, char **out)
{
    SHOW_REQUEST_T request = {__func__, "show interfaces switchport trunk", PATH_SHOW_TRUNK};
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];

    request.after = SHOW_AFTER_KEEP;
    request.openLine = SHOW_OPEN_UPPER;
    *out = nullptr;
    OWNED_JSON trunk(cJSON_CreateObject());
    if (trunk == nullptr) {
        LOG_ERROR("Create object root error\r\n");
        return RESULT_INVALID_POINTER;
    }
    // A command that failed has logged its line; any earlier output is gone then, so that the file tells.
    (void)cliShowExecuteToFile(clientHandle, request.command, PathGet(request.file));
    int opened = showFileOpen(&show, request);
    if (opened == RESULT_OK && showFileSkipTo(&show, "Global Auto-Trunk Mode", line, sizeof(line))) {
        showRowTaken();
        jsonAddBool(trunk.get(), "autoMode", isEnabled(line));
    }
    int printed = jsonToStr(trunk.get(), JSON_COMPACT, out);
    return opened != RESULT_OK ? opened : printed;
}

int manualTrunkGet(CLIENT_HANDLE_T *clientHandle, char **out)
{
    (void)clientHandle; // the platform is not asked

    *out = nullptr;
    OWNED_JSON trunk(cJSON_CreateObject());
    if (trunk == nullptr) {
        LOG_ERROR("create object root error\r\n");
        return RESULT_INVALID_POINTER;
    }
    OWNED_JSON file = jsonFileLoad(PathGet(PATH_MANUAL_TRUNK));
    manualPortsAdd(file.get(), "physicalPort", trunk.get());
    manualPortsAdd(file.get(), "lagPort", trunk.get());
    return jsonToStr(trunk.get(), JSON_COMPACT, out);
}
