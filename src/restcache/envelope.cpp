#include "restcache/envelope.h"

// The response envelope: one function builds its tree; the two public forms differ in where the text goes and in which
// failures they log. A key lost for want of memory makes the print fail, so a half envelope is never handed out.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/result.h"

#include <cstring>
#include <iterator>
#include <utility>

struct RESP_CODE_T {
    int code;
    const char *message;
};

constexpr RESP_CODE_T respCodeTable[] = {
    {0, "Success"},
    {999, "unknown fail"},
    {10000, "General Failed"},
    {10001, "system error"},
    {10002, "Invalid Pointer"},
    {10027, "Disable PTP Mode"},
    {10003, "Invalid argument"},
    {10004, "Not implemented"},
    {10005, "Out of memory"},
    {10006, "Buffer error"},
    {10007, "Permission denied"},
    {10008, "Timed out"},
    {10009, "Object not init"},
    {10010, "Object init failed"},
    {10011, "Object exist"},
    {10012, "Object not exist"},
    {10015, "Device or resource empty"},
    {10016, "Device or resource open failed"},
    {10017, "Device or resource read failed"},
    {10018, "Device or resource write failed"},
    {10019, "Device or resource delete failed"},
    {10020, "Network is unreachable"},
    {10021, "Illegal request"},
    {10022, "Invalid weibo user"},
    {10023, "Request api not found"},
    {10024, "HTTP method is not suported for this request"},
    {10025, "Upload file error"},
    {10026, "upgrade file error"},
    {12001, "User name or password is incorrect"},
    {12002, "Change default password"},
    {12003, "User lockout when login fail more than 5 time, please try again in 5 minutes"},
    {13103, "Add Interface IP error"},
    {13101, "Create Vlan error"},
    {14101, "This Template is being used by a Network Profile. Please delete the associated Network Profile first"},
    {14102, "Profile type was duplicated"},
    {14103, "The AVB profile template should be only configured on one vlan"},
    {14104, "Unable to set 802.1AS Status with Enable,PTP TC is enable. Disable PTP TC to enable 802.1AS Status"},
    {14105, "Unable to set PTP TC with Enable,802.1AS Status is enable. Disable 802.1AS Status to enable PTP TC"},
    {14106, "The Shure profile template should be only configured on one vlan"},
    {14107, "The profile name is already in use. Please enter a different name."},
    {14108, "The current device does not support this profile"},
    {14109, "The SMPTE profile template should be only configured on one vlan"},
    {15001, "Setting LAG Name is failed. Please check if it is a duplicate name"},
    {16001, "The maximum of 100 Time Ranges is already configured"},
    {17001, "The configuration is invalid"},
    {18001, "IP Address/Netmask entered conflicts with the configured IP Address/Netmask of a router interface"},
    {20001, "Invalid physical mode for this port."},
    {11000, ""},
    {17002, "Unsupported Feature"},
    {17003, "PTP Boundary Clock API is not supported on this model"},
    {26001, "Kernel upgrade required, please upload ONIE file"},
    {-200, "Maximum user accounts reached"},
    {-201, "Invalid user name, does not meet policy"},
    {-202, "Invalid password, does not meet policy"},
    {-203, "Invalid user type"},
    {-204, "Invalid user, user does not exist"},
    {-205, "User account already exist"},
    {-206, "Should not modify user type of admin account"},
    {-207, "Request failed, not a privileged user"},
    {-208, "Can not create/delete admin account"},
    {-300, "Failed to set configuration on the device"},
    {-301, "Failed to get configuration from the device"},
    {-302, "Invalid REST API request"},
    {-7, "Failed to allocate memory"},
};
static_assert(std::size(respCodeTable) == 64, "one row for each result code that web pages know");

const char *respCodeMsgGet(int code)
{
    for (const RESP_CODE_T &row : respCodeTable) {
        if (row.code == code)
            return row.message;
    }
    return "Error code unknown";
}

// Null, or what failed.
static const char *envelopeBuild(int code, const char *key, const char *payload, OWNED_JSON *tree)
{
    OWNED_JSON root(cJSON_CreateObject());
    if (root == nullptr)
        return "Failed to create root object";
    OWNED_JSON resp(cJSON_CreateObject());
    if (resp == nullptr)
        return "Failed to create resp object";
    jsonAddNumber(resp.get(), "respCode", code);
    jsonAddText(resp.get(), "respMsg", respCodeMsgGet(code));
    jsonAddText(resp.get(), "status", code == RESULT_OK ? "success" : "fail");
    if (code == RESULT_OK && key != nullptr && payload != nullptr) {
        OWNED_JSON value(cJSON_Parse(payload));
        if (value == nullptr)
            return "Failed to parse data JSON";
        jsonAddItem(root.get(), key, std::move(value));
    }
    jsonAddItem(root.get(), "resp", std::move(resp));
    *tree = std::move(root);
    return nullptr;
}

int responseJsonRreallocStr(int code, const char *key, const char *payload, char **text)
{
    OWNED_JSON root;
    const char *failure = envelopeBuild(code, key, payload, &root);

    if (failure != nullptr) {
        LOG_ERROR("[MEM] %s\n", failure);
        return RESULT_FAILED;
    }
    char *printed = jsonPrint(root.get(), JSON_FORMATTED);
    if (printed == nullptr) {
        LOG_ERROR("[MEM] Failed to print JSON\n");
        return RESULT_FAILED;
    }
    free(*text);
    *text = printed;
    return RESULT_OK;
}

int responseJsonStr(int code, const char *key, const char *payload, char *buffer, size_t size)
{
    OWNED_JSON root;

    if (envelopeBuild(code, key, payload, &root) != nullptr)
        return RESULT_ERROR;
    OWNED_TEXT printed(jsonPrint(root.get(), JSON_FORMATTED));
    if (printed == nullptr) {
        LOG_ERROR("package response str error\r\n");
        return RESULT_ERROR;
    }
    size_t length = strlen(printed.get());
    if (length >= size) {
        LOG_ERROR("envelope of %zu bytes does not fit into %zu\n", length, size);
        return RESULT_ERROR;
    }
    memcpy(buffer, printed.get(), length + 1);
    return RESULT_OK;
}
