#include "calls.h"

#include "show_layout.h"

#include <arpa/inet.h>
#include <cstring>
#include <tuple>

// Client calls about neighbours: forwarding database, ARP table and LLDP remote devices.
//
// An entry that is away at the moment is passed over by the walks and not found by its key.

namespace {

constexpr uint32_t LLDP_TEXT_SIZE = 256;
constexpr uint32_t FDB_LEARNED = 1, FDB_MANAGEMENT = 0;

using FDB_KEY_T = std::tuple<uint32_t, std::string>;
using LLDP_KEY_T = std::tuple<uint32_t, uint32_t>;

FDB_KEY_T fdbKey(const VS_FDB_T &row)
{
    return {row.vlan, row.mac};
}

LLDP_KEY_T lldpKey(const VS_LLDP_T &row)
{
    return {row.ifNum, row.index};
}

// The remote device with this index; null when there is none now.
const VS_LLDP_T *remote(const VS_CALL_T &call, uint32_t ifNum, uint32_t index)
{
    const std::vector<VS_LLDP_T> &all = call.state().lldp;
    LLDP_KEY_T key{ifNum, index};
    auto found = std::lower_bound(all.begin(), all.end(), key,
                                  [](const VS_LLDP_T &row, const LLDP_KEY_T &k) { return lldpKey(row) < k; });
    bool there = found != all.end() && lldpKey(*found) == key &&
                 vsLearned(call.state(), found->ifNum, found->present, call.now());
    return there ? &*found : nullptr;
}

int remoteText(const char *name, void *handle, uint32_t ifNum, uint32_t index, openclt_buffer_t *text,
               std::string VS_LLDP_T::*read)
{
    VS_CALL_T call(name, ifNum);
    return call.result != OPENCLT_OK ? call.result : vsTextOf(call, handle, remote(call, ifNum, index), text, read);
}

// A chassis or port id with its subtype.
int remoteId(const char *name, void *handle, uint32_t ifNum, uint32_t index, uint32_t *subtype, openclt_buffer_t *id,
             uint32_t VS_LLDP_T::*subtypeOf, std::string VS_LLDP_T::*idOf)
{
    VS_CALL_T call(name, ifNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (subtype == nullptr) {
        return OPENCLT_PARAM;
    }
    const VS_LLDP_T *device = remote(call, ifNum, index);
    int result = vsTextOf(call, handle, device, id, idOf);
    *subtype = result == OPENCLT_OK && device != nullptr ? device->*subtypeOf : *subtype;
    return result;
}

} // namespace

// ---- forwarding database and ARP ----

int rpcclt_openapiFdbEntryNextGet(openclt_handle_t *handle, openclt_buffer_t *mac, uint32_t *vlanId, uint32_t *ifNum,
                                  uint32_t *entryType)
{
    std::string previous = vsUsable(mac) ? vsTextIn(mac) : std::string();
    VS_CALL_T call(__func__, previous);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || !vsUsable(mac) || vlanId == nullptr || ifNum == nullptr || entryType == nullptr) {
        return OPENCLT_PARAM;
    }
    const VS_FDB_T *next = vsNextRow(call.state().fdb, FDB_KEY_T{*vlanId, previous}, fdbKey, [&](const VS_FDB_T &row) {
        return vsLearned(call.state(), row.ifNum, row.present, call.now());
    });
    if (next == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    int result = vsTextOut(next->mac, mac);
    if (result != OPENCLT_OK) {
        return result;
    }
    *vlanId = next->vlan;
    *ifNum = next->ifNum;
    *entryType = next->learned ? FDB_LEARNED : FDB_MANAGEMENT;
    return OPENCLT_OK;
}

int rpcclt_openapiArpEntryNextGet(openclt_handle_t *handle, openclt_arp_entry_t *entry)
{
    uint32_t previous = 0;
    if (entry != nullptr) {
        memcpy(&previous, entry->address.bytes, sizeof previous);
        previous = ntohl(previous);
    }
    VS_CALL_T call(__func__, vsAddress(previous));
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    return vsNumberOf(call, handle,
                      vsNextRow(call.state().arp, previous, &VS_ARP_T::address,
                                [&](const VS_ARP_T &row) { return vsWindowOpen(row.present, call.now()); }),
                      entry, [](const VS_ARP_T &row) {
                          openclt_arp_entry_t next = {};
                          uint32_t address = htonl(row.address);
                          next.ifNum = VS_ROUTING_BASE + row.vlan;
                          next.address.family = OPENCLT_AF_IPV4;
                          memcpy(next.address.bytes, &address, sizeof address);
                          (void)vsMacBytes(row.mac, next.mac); // an incomplete entry has no MAC: zeroes
                          return next;
                      });
}

// ---- LLDP ----

int rpcclt_openapiLldpMgmtStrLenGet(openclt_handle_t *handle, uint32_t *length)
{
    return vsLimit(__func__, handle, length, LLDP_TEXT_SIZE);
}

int rpcclt_openapiLldpIntfRemoteDeviceNextGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t previousIndex,
                                              uint32_t *index)
{
    VS_CALL_T call(__func__, ifNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_LLDP_T *next =
        vsNextRow(call.state().lldp, LLDP_KEY_T{ifNum, previousIndex}, lldpKey,
                  [&](const VS_LLDP_T &row) { return vsLearned(call.state(), row.ifNum, row.present, call.now()); });
    bool same = next != nullptr && next->ifNum == ifNum;
    return vsNumberOf(call, handle, same ? next : nullptr, index, &VS_LLDP_T::index);
}

int rpcclt_openapiLldpIntfRemoteDeviceChassisIdGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                   uint32_t *subtype, openclt_buffer_t *chassisId)
{
    return remoteId(__func__, handle, ifNum, index, subtype, chassisId, &VS_LLDP_T::chassisSubtype,
                    &VS_LLDP_T::chassisId);
}

int rpcclt_openapiLldpIntfRemoteDevicePortIdGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                uint32_t *subtype, openclt_buffer_t *portId)
{
    return remoteId(__func__, handle, ifNum, index, subtype, portId, &VS_LLDP_T::portSubtype, &VS_LLDP_T::portId);
}

int rpcclt_openapiLldpIntfRemoteDeviceSystemNameGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                    openclt_buffer_t *name)
{
    return remoteText(__func__, handle, ifNum, index, name, &VS_LLDP_T::systemName);
}

int rpcclt_openapiLldpIntfRemoteDeviceSystemDescGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                    openclt_buffer_t *description)
{
    return remoteText(__func__, handle, ifNum, index, description, &VS_LLDP_T::systemDescription);
}

int rpcclt_openapiLldpIntfRemoteDeviceMgmtAddressNextGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                         uint32_t *entry, openclt_buffer_t *address)
{
    VS_CALL_T call(__func__, ifNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (entry == nullptr) {
        return OPENCLT_PARAM;
    }
    const VS_LLDP_T *device = remote(call, ifNum, index);
    const std::string *text = nullptr;
    if (device != nullptr && *entry < device->addresses.size()) {
        text = &device->addresses[*entry];
    }
    int result = vsTextOf(call, handle, text, address, [](const std::string &row) { return row; });
    *entry += result == OPENCLT_OK ? 1 : 0;
    return result;
}
