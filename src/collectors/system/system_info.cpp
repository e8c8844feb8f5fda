#include "collectors/system/system_info.h"

// The switch as a whole, gathered through the query wrappers of switch/. Each source that fails has logged its own line
// and leaves its field at zero, so the document is always made.

#include "runtime/json.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/swapi.h"

int systemInfoGet(CLIENT_HANDLE_T *clientHandle, char **out)
{
    SYSTEM_INFO_RECORD_T record;
    uint32_t poeSupported = 0;
    int managementVlan = 1;

    *out = nullptr;
    (void)poeIsSupported(clientHandle, &poeSupported); // always 0
    systemInfoRecordGet(clientHandle, &record, 0);
    (void)managementVlanGet(clientHandle, &managementVlan); // stays 1 when it cannot be read

    OWNED_JSON info(cJSON_CreateObject());
    if (info == nullptr)
        return RESULT_INVALID_POINTER;
    jsonAddText(info.get(), "name", record.name);
    jsonAddText(info.get(), "mac", record.mac);
    jsonAddText(info.get(), "keloVer", record.version);
    jsonAddBool(info.get(), "poe", poeSupported != 0);
    jsonAddNumber(info.get(), "STP", record.stpPriority);
    jsonAddNumber(info.get(), "fanMode", record.fanMode);
    jsonAddNumber(info.get(), "mgmtVlan", managementVlan);

    *out = jsonPrint(info.get(), JSON_FORMATTED);
    return *out == nullptr ? RESULT_INVALID_POINTER : RESULT_OK;
}

void systemInfoRecordGet(CLIENT_HANDLE_T *clientHandle, SYSTEM_INFO_RECORD_T *record, int skipFanMode)
{
    *record = {};
    // A source that fails leaves its field zero or empty: that is the default of the documents.
    (void)servicePortAddressAndMacGet(clientHandle, record->ip, record->mac, ':');
    (void)systemNameGet(clientHandle, record->name);
    uiVersionGet(record->version);
    (void)bootCodeVersionGet(clientHandle, record->bootVersion);
    (void)swapiDot1SMSTInstancePriorityGet(clientHandle, 0, &record->stpPriority);
    if (skipFanMode == 0)
        (void)fanModeGet(clientHandle, &record->fanMode);
}
