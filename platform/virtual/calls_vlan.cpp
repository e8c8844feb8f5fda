#include "calls.h"

#include <cstddef>

// Client calls about VLANs, routing interfaces and the service port.
//
// A routing interface has no record of its own: it is a VLAN that routes, numbered above every port and LAG.

namespace {

constexpr uint32_t VLAN_NAME_SIZE = 33;

uint32_t routingNumber(const VS_VLAN_T &vlan)
{
    return VS_ROUTING_BASE + vlan.id;
}

// The VLAN behind a routing interface; null when there is none that routes.
const VS_VLAN_T *routingVlan(const VS_CALL_T &call, uint32_t rtrIfNum)
{
    const VS_VLAN_T *vlan = rtrIfNum > VS_ROUTING_BASE ? vsVlan(call.state(), rtrIfNum - VS_ROUTING_BASE) : nullptr;
    return vlan != nullptr && vlan->routed ? vlan : nullptr;
}

} // namespace

// ---- VLANs ----

READS(openapiVlanIfPvidGet, vlanId, &VS_INTERFACE_T::pvid);

// An answer, not a result: a fault shows as the non-zero number that it is.
ANSWER(openapiVlanIsStatic)
{
    const VS_VLAN_T *vlan = vsVlan(call.state(), args.vlanId);
    return vlan != nullptr && vlan->isStatic;
}

READS(openapiVlanNextGet, vlanId, vsNextRow(call.state().vlans, args.previousVlanId, &VS_VLAN_T::id), &VS_VLAN_T::id);
READS(rpcclt_openapiVlanNameLenGet, length, &VLAN_NAME_SIZE, vsItself);
READS(rpcclt_openapiVlanNameGet, name, &VS_VLAN_T::name);
READS(rpcclt_openapiDot1qSwPortModeGet, mode, &VS_INTERFACE_T::switchMode);

ANSWER(rpcclt_openapiDot1qSwPortTaggedVlanListGet)
{
    const VS_INTERFACE_T *interface = vsInterface(call.state(), args.ifNum);
    if (interface == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    const std::vector<uint16_t> &tagged = interface->tagged;
    if (tagged.size() > OPENCLT_VLAN_LIST_MAX) {
        return OPENCLT_FAIL;
    }
    openclt_vlan_list_t answer = {};
    answer.count = static_cast<uint32_t>(tagged.size());
    std::copy(tagged.begin(), tagged.end(), answer.ids);
    size_t used = offsetof(openclt_vlan_list_t, ids) + tagged.size() * sizeof answer.ids[0];
    return vsBytesOut(&answer, static_cast<uint32_t>(used), args.list);
}

// ---- routing interfaces ----

READS(rpcclt_openapiRtrIntfNextGet, rtrIfNum,
      vsNextRow(call.state().vlans, args.previous, routingNumber, [](const VS_VLAN_T &vlan) { return vlan.routed; }),
      routingNumber);
READS(rpcclt_openapiRtrIntfVlanIdGet, vlanId, routingVlan(call, args.rtrIfNum), &VS_VLAN_T::id);

ANSWER(rpcclt_openapiRtrIntfIpAddrGet)
{
    if (args.family != OPENCLT_AF_IPV4) {
        return OPENCLT_PARAM;
    }
    const VS_VLAN_T *vlan = routingVlan(call, args.rtrIfNum);
    int result = vsRead(call, args.address, vlan, &VS_VLAN_T::address);
    return result != OPENCLT_OK ? result : vsRead(call, args.prefixLength, vlan, &VS_VLAN_T::prefixLength);
}

// ---- service port ----

ANSWER(rpcclt_openapiServicePortIPv4AddrGet)
{
    *args.address = call.state().system.serviceAddress;
    *args.mask = call.state().system.serviceMask;
    return OPENCLT_OK;
}

READS(rpcclt_openapiServicePortGatewayIPv4AddrGet, gateway, &VS_SYSTEM_T::serviceGateway);
READS(rpcclt_openapiServicePortIPv4ProtocolModeGet, mode, &VS_SYSTEM_T::serviceProtocol);
