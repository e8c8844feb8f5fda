#include "collectors/feature/radius.h"

// The server list is a CLI table, its ports are asked for one by one; the modes and the ports' states are platform
// reads. Uses show files and walks of switch/.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <arpa/inet.h>
#include <cstring>

constexpr size_t SERVER_LINE_SIZE = 255;
constexpr size_t ADDRESS_COLUMN = 5;
constexpr uint32_t ADDRESS_IPV4 = 1, ADDRESS_HOST_NAME = 16;

// A mode that cannot be read counts as off.
static bool authenticationOn(CLIENT_HANDLE_T *clientHandle)
{
    uint32_t dot1x = 0, manager = 0;

    if (rpcclt_openapiDot1xSystemAuthControlModeGet(clientHandle, &dot1x) != OPENCLT_OK)
        dot1x = 0;
    if (rpcclt_openapiAuthMgrAdminModeGet(clientHandle, &manager) != OPENCLT_OK)
        manager = 0;
    return (dot1x & manager) != 0;
}

static int serversFill(const RADIUS_SERVER_T *servers, int count, cJSON *root)
{
    static const char caller[] = "getRadiusServerJson";
    cJSON *array = jsonAddArray(root, "servers");

    if (array == nullptr) {
        LOG_ERROR_AS(caller, "getRadiusServerJson: Failed to create array\n");
        return RESULT_FAILED;
    }
    for (int i = count - 1; i >= 0; i--) {
        cJSON *server = jsonAppendObject(array);
        if (server == nullptr) {
            LOG_ERROR_AS(caller, "getRadiusServerJson: Failed to create server object\n");
            return RESULT_FAILED;
        }
        LOG_DEBUG_AS(caller, "server:%s\r\n", servers[i].ipAddress);
        jsonAddText(server, "ipAddress", servers[i].ipAddress);
        jsonAddNumber(server, "portNumber", servers[i].portNumber);
    }
    return RESULT_OK;
}

//           1         2         3         4         5         6         7         8         9
// 0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890
// Cur  Host Address                                   Server Name              Port  Type
// ---- ---------------------------------------------- ------------------------ ----- ----------
// *    192.168.1.10                                   Default-RADIUS-Server    1812  Primary
//      auth.example.net                               Default-RADIUS-Server    1645  Secondary
//
// The whole address names the server to the platform; only what is stored of it is cut.
static void serverRead(CLIENT_HANDLE_T *clientHandle, const char *line, RADIUS_SERVER_T *server)
{
    static const char caller[] = "getRadiusServer";
    char address[SERVER_LINE_SIZE];
    in_addr ipv4;

    textCopy(address, sizeof(address), line + ADDRESS_COLUMN); // a line with one of the words is longer
    address[strcspn(address, " \t\r\n")] = '\0';
    LOG_DEBUG_AS(caller, "server addr:%s\r\n", address);
    textCopy(server->ipAddress, sizeof(server->ipAddress), address);

    openclt_buffer_t name = {static_cast<uint32_t>(strlen(address) + 1), address};
    uint32_t type = inet_pton(AF_INET, address, &ipv4) == 1 ? ADDRESS_IPV4 : ADDRESS_HOST_NAME;
    server->portNumber = 0;
    int result = rpcclt_openapiRadiusAuthServerPortNumGet(clientHandle, &name, type, &server->portNumber);
    if (result != OPENCLT_OK) {
        LOG_ERROR_AS(caller, "get server port failed, ret:%d\r\n", result);
        server->portNumber = 0;
    }
}

int getRadiusServerJson(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size)
{
    RADIUS_SERVER_T servers[RADIUS_SERVERS];

    bool status = authenticationOn(clientHandle);
    int count = getRadiusServer(clientHandle, servers);
    if (count < 0)
        return RESULT_OPEN_FAILED;

    OWNED_JSON root(cJSON_CreateObject());
    if (root == nullptr) {
        LOG_ERROR("getRadiusServerJson: Failed to create root object\n");
        return RESULT_FAILED;
    }
    int result = serversFill(servers, count, root.get());
    if (result != RESULT_OK)
        return result;
    jsonAddBool(root.get(), "status", status);
    jsonAddNumber(root.get(), "reauthTime", 0);
    return jsonPrintInto(root.get(), JSON_FORMATTED, buffer, size);
}

int getRadiusServer(CLIENT_HANDLE_T *clientHandle, RADIUS_SERVER_T servers[RADIUS_SERVERS])
{
    SHOW_REQUEST_T request = {__func__, "show radius servers", PATH_SHOW_RADIUS};
    SHOW_FILE_T show;
    char line[SERVER_LINE_SIZE];
    int count = 0;

    request.run = SHOW_RUN_PLATFORM;
    int result = showFileRun(&show, clientHandle, request);
    if (result == RESULT_FAILED)
        LOG_ERROR("show radius servers failed, result:%d\r\n", show.platformResult);
    if (result != RESULT_OK)
        return -RESULT_OPEN_FAILED;

    while (count < RADIUS_SERVERS && showFileLine(&show, line, sizeof(line))) {
        if (strstr(line, "Primary") == nullptr && strstr(line, "Secondary") == nullptr)
            continue;
        showRowTaken();
        serverRead(clientHandle, line, &servers[count++]);
    }
    LOG_DEBUG("get radius server count:%d\r\n", count);
    return count;
}

int getPortAuthConfigJson(CLIENT_HANDLE_T *clientHandle, char **out)
{
    OWNED_JSON root(cJSON_CreateObject());
    cJSON *rows = jsonAddArray(root.get(), "radiusPortConfig");

    for (IF_WALK_T port = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port)) {
        uint32_t mode = 0, status = 0;
        if (swapiDot1xPortControlModeGet(clientHandle, port.ifNum, &mode) != OPENCLT_OK ||
            swapiDot1xPortStatusGet(clientHandle, port.ifNum, &status) != OPENCLT_OK)
            continue;
        cJSON *row = jsonAppendObject(rows);
        jsonAddNumber(row, "portNum", port.ifNum);
        jsonAddNumber(row, "portControlMode", mode);
        jsonAddNumber(row, "portStatus", status);
    }
    *out = jsonPrint(root.get(), JSON_FORMATTED);
    return RESULT_OK;
}
