#include "collectors/feature/sw_portmirroring.h"

// Three numbers of a session, read and reported alike, then its source ports, which the platform gives as one text. A
// session that is not configured is no fault.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/columns.h"

#include <cstring>

// Bytes offered for the source ports' numbers.
constexpr uint32_t SOURCE_LIST_SIZE = 5000;

struct SESSION_NUMBER_T {
    const char *key;
    const char *noun; // in the log lines
    int (*get)(CLIENT_HANDLE_T *clientHandle, uint32_t session, uint32_t *value);
};
static const SESSION_NUMBER_T sessionNumbers[] = {
    {"sessionMode", "port monitoring mode", rpcclt_openapiSwPortMonitorModeGet},
    {"reflectorPort", "monitoring reflector port", rpcclt_openapiSwMonitorReflectorPortGet},
    {"destPort", "destination port", rpcclt_openapiSwPortMonitorDestPortGet},
};

static const char caller[] = "getPortMirroring";

static uint32_t sessionNumberGet(CLIENT_HANDLE_T *clientHandle, int session, const SESSION_NUMBER_T &number)
{
    uint32_t value = 0;

    int result = number.get(clientHandle, static_cast<uint32_t>(session), &value);
    if (result == OPENCLT_OK) {
        LOG_DEBUG_AS(caller, "The %s for session %d is %d\n", number.noun, session, static_cast<int>(value));
        return value;
    }
    if (result != OPENCLT_NOT_FOUND)
        LOG_ERROR_AS(caller, "Failed to retrieve the %s for session %d. (Result = %d)\n", number.noun, session, result);
    return 0;
}

static void sourceAdd(CLIENT_HANDLE_T *clientHandle, int session, int ifNum, cJSON *sources)
{
    uint32_t direction = 0;

    int result = rpcclt_openapiMirrorSourcePortDirectionGet(clientHandle, static_cast<uint32_t>(session),
                                                            static_cast<uint32_t>(ifNum), &direction);
    if (result == OPENCLT_OK) {
        LOG_DEBUG_AS(caller, "The direction to be mirrored for a source port %d is: %d \n", ifNum,
                     static_cast<int>(direction));
    } else {
        LOG_ERROR_AS(caller, "Failed to retrive the direction to be mirrored for a source port %d. (Result = %d)\n",
                     ifNum, result);
        direction = 0;
    }
    cJSON *source = jsonAppendObject(sources);
    jsonAddNumber(source, "intfNum", ifNum);
    jsonAddNumber(source, "direction", direction);
}

// Interface numbers: "3,7,12".
static void sourcesFill(CLIENT_HANDLE_T *clientHandle, int session, cJSON *sources)
{
    char list[SOURCE_LIST_SIZE + 1] = ""; // one byte more than the platform is offered: always terminated
    openclt_buffer_t buffer = {SOURCE_LIST_SIZE, list};
    char *rest = nullptr;
    int ifNum;

    int result = rpcclt_openapiSwPortMonitorSourcePortsListGet(clientHandle, static_cast<uint32_t>(session), &buffer);
    if (result != OPENCLT_OK) {
        if (result != OPENCLT_NOT_FOUND)
            LOG_ERROR_AS(caller, "Failed to retrive the list of source interfaces for session %d. (Result = %d)\n",
                         session, result);
        return;
    }
    LOG_DEBUG_AS(caller, "The list of source interfaces for session %d is: %s\n", session, list);
    for (char *piece = strtok_r(list, ",", &rest); piece != nullptr; piece = strtok_r(nullptr, ",", &rest)) {
        if (columnNumber(piece, 0, &ifNum))
            sourceAdd(clientHandle, session, ifNum, sources);
    }
}

int getPortMirroring(CLIENT_HANDLE_T *clientHandle, int session, cJSON *object)
{
    jsonAddNumber(object, "sessionNum", session);
    for (const SESSION_NUMBER_T &number : sessionNumbers)
        jsonAddNumber(object, number.key, sessionNumberGet(clientHandle, session, number));
    sourcesFill(clientHandle, session, jsonAddArray(object, "srcPort"));
    return RESULT_OK;
}
