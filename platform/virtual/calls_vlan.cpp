#include "calls.h"

#include <cstddef>

// Client calls about VLANs, routing interfaces and the service port.
//
// A routing interface has no record of its own: it is a VLAN that routes, numbered above every port and LAG.

namespace {

constexpr uint32_t VLAN_NAME_SIZE = 33;

bool anyVlan(const VS_VLAN_T &, double)
{
    return true;
}

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

int openapiVlanIfPvidGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *vlanId)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, vlanId, &VS_INTERFACE_T::pvid);
}

// An answer, not a result: a fault shows as the non-zero number that it is.
int openapiVlanIsStatic(openclt_handle_t *handle, uint32_t vlanId)
{
    VS_CALL_T call(__func__, vlanId);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_VLAN_T *vlan = vsVlan(call.state(), vlanId);
    return handle != nullptr && vlan != nullptr && vlan->isStatic;
}

int openapiVlanNextGet(openclt_handle_t *handle, uint32_t previousVlanId, uint32_t *vlanId)
{
    return vsNextNumber(__func__, handle, previousVlanId, vlanId, &VS_STATE_T::vlans, &VS_VLAN_T::id, anyVlan);
}

int rpcclt_openapiVlanNameLenGet(openclt_handle_t *handle, uint32_t *length)
{
    return vsLimit(__func__, handle, length, VLAN_NAME_SIZE);
}

int rpcclt_openapiVlanNameGet(openclt_handle_t *handle, uint32_t vlanId, openclt_buffer_t *name)
{
    return vsTextGet<VS_VLAN_T>(__func__, handle, vlanId, name, &VS_VLAN_T::name);
}

int rpcclt_openapiDot1qSwPortModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, mode, &VS_INTERFACE_T::switchMode);
}

int rpcclt_openapiDot1qSwPortTaggedVlanListGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *list)
{
    VS_CALL_T call(__func__, ifNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || !vsUsable(list)) {
        return OPENCLT_PARAM;
    }
    const VS_INTERFACE_T *interface = vsInterface(call.state(), ifNum);
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
    return vsBytesOut(&answer, static_cast<uint32_t>(used), list);
}

// ---- routing interfaces ----

int rpcclt_openapiRtrIntfNextGet(openclt_handle_t *handle, uint32_t previous, uint32_t *rtrIfNum)
{
    VS_CALL_T call(__func__, previous);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_VLAN_T *next =
        vsNextRow(call.state().vlans, previous, routingNumber, [](const VS_VLAN_T &vlan) { return vlan.routed; });
    return vsNumberOf(call, handle, next, rtrIfNum, routingNumber);
}

int rpcclt_openapiRtrIntfVlanIdGet(openclt_handle_t *handle, uint32_t rtrIfNum, uint32_t *vlanId)
{
    VS_CALL_T call(__func__, rtrIfNum);
    return call.result != OPENCLT_OK ? call.result
                                     : vsNumberOf(call, handle, routingVlan(call, rtrIfNum), vlanId, &VS_VLAN_T::id);
}

int rpcclt_openapiRtrIntfIpAddrGet(openclt_handle_t *handle, uint32_t family, uint32_t rtrIfNum, uint32_t *address,
                                   uint32_t *prefixLength)
{
    VS_CALL_T call(__func__, rtrIfNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || address == nullptr || prefixLength == nullptr || family != OPENCLT_AF_IPV4) {
        return OPENCLT_PARAM;
    }
    const VS_VLAN_T *vlan = routingVlan(call, rtrIfNum);
    if (vlan == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    *address = vlan->address;
    *prefixLength = vlan->prefixLength;
    return OPENCLT_OK;
}

// ---- service port ----

int rpcclt_openapiServicePortIPv4AddrGet(openclt_handle_t *handle, uint32_t *address, uint32_t *mask)
{
    VS_CALL_T call(__func__);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || address == nullptr || mask == nullptr) {
        return OPENCLT_PARAM;
    }
    *address = call.state().system.serviceAddress;
    *mask = call.state().system.serviceMask;
    return OPENCLT_OK;
}

int rpcclt_openapiServicePortGatewayIPv4AddrGet(openclt_handle_t *handle, uint32_t *gateway)
{
    return vsSystemNumber(__func__, handle, gateway, &VS_SYSTEM_T::serviceGateway);
}

int rpcclt_openapiServicePortIPv4ProtocolModeGet(openclt_handle_t *handle, uint32_t *mode)
{
    return vsSystemNumber(__func__, handle, mode, &VS_SYSTEM_T::serviceProtocol);
}
