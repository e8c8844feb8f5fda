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

// A chassis or port id with its subtype.
template <typename ARGS>
int idRead(const VS_CALL_T &call, const ARGS &args, openclt_buffer_t *text, std::string VS_LLDP_T::*id,
           uint32_t VS_LLDP_T::*subtype)
{
    const VS_LLDP_T *device = remote(call, args.ifNum, args.index);
    int result = vsRead(call, text, device, id);
    return result != OPENCLT_OK ? result : vsRead(call, args.subtype, device, subtype);
}

openclt_arp_entry_t arpOut(const VS_ARP_T &row)
{
    openclt_arp_entry_t entry = {};
    uint32_t address = htonl(row.address);
    entry.ifNum = VS_ROUTING_BASE + row.vlan;
    entry.address.family = OPENCLT_AF_IPV4;
    memcpy(entry.address.bytes, &address, sizeof address);
    (void)vsMacBytes(row.mac, entry.mac); // an incomplete entry has no MAC: zeroes
    return entry;
}

} // namespace

// ---- forwarding database and ARP ----

ANSWER(rpcclt_openapiFdbEntryNextGet)
{
    FDB_KEY_T previous{*args.vlanId, vsTextIn(args.mac)};
    const VS_FDB_T *next = vsNextRow(call.state().fdb, previous, fdbKey, [&](const VS_FDB_T &row) {
        return vsLearned(call.state(), row.ifNum, row.present, call.now());
    });
    int result = vsRead(call, args.mac, next, &VS_FDB_T::mac);
    if (result == OPENCLT_OK) {
        *args.vlanId = next->vlan;
        *args.ifNum = next->ifNum;
        *args.entryType = next->learned ? FDB_LEARNED : FDB_MANAGEMENT;
    }
    return result;
}

ANSWER(rpcclt_openapiArpEntryNextGet)
{
    uint32_t previous;
    memcpy(&previous, args.entry->address.bytes, sizeof previous);
    const VS_ARP_T *next = vsNextRow(call.state().arp, ntohl(previous), &VS_ARP_T::address,
                                     [&](const VS_ARP_T &row) { return vsWindowOpen(row.present, call.now()); });
    return vsRead(call, args.entry, next, arpOut);
}

// ---- LLDP ----

READS(rpcclt_openapiLldpMgmtStrLenGet, length, &LLDP_TEXT_SIZE, vsItself);

ANSWER(rpcclt_openapiLldpIntfRemoteDeviceNextGet)
{
    LLDP_KEY_T previous{args.ifNum, args.previousIndex};
    const VS_LLDP_T *next = vsNextRow(call.state().lldp, previous, lldpKey, [&](const VS_LLDP_T &row) {
        return vsLearned(call.state(), row.ifNum, row.present, call.now());
    });
    bool same = next != nullptr && next->ifNum == args.ifNum;
    return vsRead(call, args.index, same ? next : nullptr, &VS_LLDP_T::index);
}

ANSWER(rpcclt_openapiLldpIntfRemoteDeviceChassisIdGet)
{
    return idRead(call, args, args.chassisId, &VS_LLDP_T::chassisId, &VS_LLDP_T::chassisSubtype);
}

ANSWER(rpcclt_openapiLldpIntfRemoteDevicePortIdGet)
{
    return idRead(call, args, args.portId, &VS_LLDP_T::portId, &VS_LLDP_T::portSubtype);
}

READS(rpcclt_openapiLldpIntfRemoteDeviceSystemNameGet, name, remote(call, args.ifNum, args.index),
      &VS_LLDP_T::systemName);
READS(rpcclt_openapiLldpIntfRemoteDeviceSystemDescGet, description, remote(call, args.ifNum, args.index),
      &VS_LLDP_T::systemDescription);

ANSWER(rpcclt_openapiLldpIntfRemoteDeviceMgmtAddressNextGet)
{
    const VS_LLDP_T *device = remote(call, args.ifNum, args.index);
    if (device == nullptr || *args.entry >= device->addresses.size()) {
        return OPENCLT_NOT_FOUND;
    }
    int result = vsTextOut(device->addresses[*args.entry], args.address);
    *args.entry += result == OPENCLT_OK ? 1 : 0;
    return result;
}
