#include "collectors/port/neighbor_ex.h"

// LLDP knows a device best, so its rows come first; a learned address gives a row only when no LLDP row has it. The
// tables that rows are made from are read once per build, and searched in logarithmic time, since a large switch has
// 16,384 learned addresses. Rows go through the chunk writer of restcache/.

#include "collectors/port/neighbor_ex_rows.h"
#include "collectors/port/neighbor_ex_tables.h"
#include "restcache/chunks.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "stores/oui.h"
#include "switch/fdb.h"
#include "switch/lldp.h"

#include <algorithm>
#include <cstring>

constexpr uint32_t LLDP_TEXT_SIZE = 256;                // when the platform does not say
constexpr uint32_t CHASSIS_IS_MAC = 4, PORT_IS_MAC = 3; // subtypes

// State of one build.
struct NEIGHBOR_BUILD_T {
    CLIENT_HANDLE_T *clientHandle;
    CHUNK_SINK_T sink;
    ARP_TABLE_T arp;
    NEIGHBOR_IF_TABLE_T interfaces;
    MAC_LIST_T lldpMacs; // of the LLDP rows
};

// One remote device; the texts are `size` bytes each, in one block.
struct LLDP_DEVICE_T {
    OWNED_ARRAY<char> block;
    uint32_t size;
    char *chassisId, *portId, *systemName, *address;
    uint32_t chassisSubtype, portSubtype;
};

static bool lldpDeviceAlloc(CLIENT_HANDLE_T *clientHandle, LLDP_DEVICE_T *device)
{
    uint32_t size = 0;

    if (rpcclt_openapiLldpMgmtStrLenGet(clientHandle, &size) != OPENCLT_OK || size == 0)
        size = LLDP_TEXT_SIZE;
    device->size = std::min(size, LLDP_TEXT_MAX);
    device->block = ownedArray<char>(4 * static_cast<size_t>(device->size));
    if (device->block == nullptr)
        return false;
    device->chassisId = device->block.get();
    device->portId = device->chassisId + device->size;
    device->systemName = device->portId + device->size;
    device->address = device->systemName + device->size;
    return true;
}

static openclt_buffer_t emptyText(char *text, uint32_t size)
{
    memset(text, 0, size);
    return {size, text};
}

// False when an id cannot be read: the device is passed over. A missing name or address is "".
static bool lldpDeviceRead(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t index, LLDP_DEVICE_T *device)
{
    openclt_buffer_t chassisId = emptyText(device->chassisId, device->size);
    openclt_buffer_t portId = emptyText(device->portId, device->size);
    openclt_buffer_t systemName = emptyText(device->systemName, device->size);
    openclt_buffer_t address = emptyText(device->address, device->size);
    uint32_t firstAddress = 0;

    if (rpcclt_openapiLldpIntfRemoteDeviceChassisIdGet(clientHandle, ifNum, index, &device->chassisSubtype,
                                                       &chassisId) != OPENCLT_OK ||
        rpcclt_openapiLldpIntfRemoteDevicePortIdGet(clientHandle, ifNum, index, &device->portSubtype, &portId) !=
            OPENCLT_OK)
        return false;
    if (rpcclt_openapiLldpIntfRemoteDeviceSystemNameGet(clientHandle, ifNum, index, &systemName) != OPENCLT_OK)
        device->systemName[0] = '\0';
    if (rpcclt_openapiLldpIntfRemoteDeviceMgmtAddressNextGet(clientHandle, ifNum, index, &firstAddress, &address) !=
        OPENCLT_OK)
        device->address[0] = '\0';
    for (char *text : {device->chassisId, device->portId, device->systemName, device->address})
        text[device->size - 1] = '\0';
    return true;
}

// False when the row is too long and is left out.
static bool rowAdd(NEIGHBOR_BUILD_T *build, NEIGHBOR_ROW_FORM form, const NEIGHBOR_ROW_T &row)
{
    char text[NEIGHBOR_ROW_SIZE];

    size_t length = neighborRowPrint(form, row, text);
    if (length == 0) {
        LOG_WARN("neighbor_ex: a row of interface %u is too long, dropping\n", row.ifNum);
        return false;
    }
    chunkRowAdd(&build->sink, text, length);
    return true;
}

// False when there is no memory to remember the address of a row.
static bool lldpRowAdd(NEIGHBOR_BUILD_T *build, uint32_t ifNum, const LLDP_DEVICE_T *device)
{
    const NEIGHBOR_IF_T *interface = &build->interfaces[ifNum];
    const char *mac = "";

    if (device->chassisSubtype == CHASSIS_IS_MAC)
        mac = device->chassisId;
    else if (device->portSubtype == PORT_IS_MAC)
        mac = device->portId;
    const char *hostName = device->systemName[0] != '\0' ? device->systemName : ouiVendorOfMac(mac);

    bool added = rowAdd(build, NEIGHBOR_ROW_LLDP,
                        {interface, ifNum, interface->pvid, hostName, device->address, mac, device->portId});
    return !added || mac[0] == '\0' || macListAdd(&build->lldpMacs, mac);
}

// Rows of all devices on one port; false when there is no memory.
static bool interfaceDevicesAdd(NEIGHBOR_BUILD_T *build, uint32_t ifNum, LLDP_DEVICE_T *device)
{
    uint32_t index = 0;

    while (lldpDeviceNext(build->clientHandle, ifNum, &index)) {
        if (lldpDeviceRead(build->clientHandle, ifNum, index, device) && !lldpRowAdd(build, ifNum, device))
            return false;
    }
    return true;
}

static bool lldpRowsAdd(NEIGHBOR_BUILD_T *build)
{
    LLDP_DEVICE_T device = {};

    if (!lldpDeviceAlloc(build->clientHandle, &device) || !macListStart(&build->lldpMacs))
        return false;
    for (uint32_t ifNum = 0; ifNum < NEIGHBOR_IF_COUNT; ifNum++) {
        const NEIGHBOR_IF_T *interface = &build->interfaces[ifNum];
        if (interface->valid && interface->linkUp && !interfaceDevicesAdd(build, ifNum, &device))
            return false;
    }
    return true;
}

static bool fdbEntryShown(const NEIGHBOR_BUILD_T *build, const FDB_ENTRY_T *entry)
{
    if (entry->ifNum >= NEIGHBOR_IF_COUNT || entry->learned != 1)
        return false;
    const NEIGHBOR_IF_T *interface = &build->interfaces[entry->ifNum];
    return interface->valid && interface->switchMode != OPENCLT_PORT_MODE_AUTO_TRUNK &&
           !macListHas(&build->lldpMacs, entry->mac);
}

static void fdbRowsAdd(NEIGHBOR_BUILD_T *build)
{
    OWNED_ARRAY<FDB_ENTRY_T> entries;

    uint32_t count = fdbSnapshotGet(build->clientHandle, &entries);
    for (uint32_t i = 0; i < count; i++) {
        const FDB_ENTRY_T *entry = &entries[i];
        if (!fdbEntryShown(build, entry))
            continue;
        (void)rowAdd(build, NEIGHBOR_ROW_FDB, // one that is dropped has said so
                     {&build->interfaces[entry->ifNum], entry->ifNum, static_cast<uint32_t>(entry->vlanId),
                      ouiVendorOfMac(entry->mac), arpTableFind(&build->arp, entry->mac), entry->mac, ""});
    }
}

// False when there is no memory for something that rows cannot be made without.
static bool rowsCollect(NEIGHBOR_BUILD_T *build)
{
    if (!arpTableRead(build->clientHandle, &build->arp)) // rows lack addresses then, no more
        LOG_ERROR("neighbor_ex: no memory for the ARP table at count=%zu\n", build->arp.count);
    if (!interfaceTableRead(build->clientHandle, &build->interfaces))
        return false;
    ouiTableLoad();
    if (!lldpRowsAdd(build))
        return false;
    macListSort(&build->lldpMacs);
    fdbRowsAdd(build);
    return true;
}

int neighborListExChunkedPush(CLIENT_HANDLE_T *clientHandle)
{
    NEIGHBOR_BUILD_T build = {};

    build.clientHandle = clientHandle;
    int result = chunkBegin(&build.sink, CHUNK_NEIGHBORS);
    if (result != RESULT_OK)
        return result;
    if (!rowsCollect(&build))
        build.sink.error = 1;
    return chunkEnd(&build.sink);
}
