#include "calls.h"

// Client calls about link aggregation, spanning tree, 802.1X and RADIUS.

namespace {

constexpr uint32_t STP_DISABLED = 4;
constexpr uint32_t ADDRESS_IPV4 = 1, ADDRESS_HOST_NAME = 16;

// State in instance 0, the only one.
uint32_t forwardingState(const VS_STATE_T &state, const VS_INTERFACE_T &interface, double now)
{
    return interface.stpEnabled && vsInterfaceUp(state, interface, now) ? interface.stpState : STP_DISABLED;
}

} // namespace

// ---- link aggregation ----

int rpcclt_openapiLagNameGet(openclt_handle_t *handle, uint32_t lagIfNum, openclt_buffer_t *name)
{
    return vsTextGet<VS_LAG_T>(__func__, handle, lagIfNum, name, &VS_LAG_T::name);
}

int rpcclt_openapiLagStaticModeGet(openclt_handle_t *handle, uint32_t lagIfNum, uint32_t *mode)
{
    return vsNumberGet<VS_LAG_T>(__func__, handle, lagIfNum, mode, &VS_LAG_T::staticMode);
}

int rpcclt_openapiLagLoadBalanceModeGet(openclt_handle_t *handle, uint32_t lagIfNum, uint32_t *mode)
{
    return vsNumberGet<VS_LAG_T>(__func__, handle, lagIfNum, mode, &VS_LAG_T::hashMode);
}

int rpcclt_openapiLagMaxMemberCountGet(openclt_handle_t *handle, uint32_t *count)
{
    return vsSystemNumber(__func__, handle, count, &VS_SYSTEM_T::lagMaxMembers);
}

int rpcclt_openapiLagMembersGet(openclt_handle_t *handle, uint32_t lagIfNum, uint32_t *count, openclt_buffer_t *members,
                                uint32_t bufferSize)
{
    VS_CALL_T call(__func__, lagIfNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || count == nullptr || !vsUsable(members)) {
        return OPENCLT_PARAM;
    }
    const VS_LAG_T *lag = vsLag(call.state(), lagIfNum);
    if (lag == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    std::vector<uint32_t> all = lag->members;
    all.insert(all.end(), lag->phantoms.begin(), lag->phantoms.end());
    uint32_t bytes = static_cast<uint32_t>(all.size() * sizeof(uint32_t));
    if (all.size() > *count || bytes > bufferSize) {
        return OPENCLT_FAIL;
    }
    int result = vsBytesOut(all.empty() ? count : all.data(), bytes, members);
    *count = result == OPENCLT_OK ? static_cast<uint32_t>(all.size()) : *count;
    return result;
}

// ---- spanning tree ----

int rpcclt_openapiDot1SMSTInstancePriorityGet(openclt_handle_t *handle, uint32_t instance, uint16_t *priority)
{
    VS_CALL_T call(__func__, instance);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_SYSTEM_T *bridge = instance == 0 ? &call.state().system : nullptr;
    return vsNumberOf(call, handle, bridge, priority, &VS_SYSTEM_T::stpPriority);
}

int rpcclt_openapiDot1SIntfModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, mode, &VS_INTERFACE_T::stpEnabled);
}

int rpcclt_openapiDot1SIntfPortFwdStateGet(openclt_handle_t *handle, uint32_t instance, uint32_t ifNum, uint32_t *state)
{
    VS_CALL_T call(__func__, ifNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_INTERFACE_T *interface = instance == 0 ? vsInterface(call.state(), ifNum) : nullptr;
    return vsNumberOf(call, handle, interface, state, forwardingState);
}

int rpcclt_openapiDot1SIntfEdgePortModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, mode, &VS_INTERFACE_T::stpEdge);
}

int rpcclt_openapiDot1SIntfBPDUFilterModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, mode, &VS_INTERFACE_T::stpBpduFilter);
}

int rpcclt_openapiDot1SPortRestrictedTcnGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *restricted)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, restricted, &VS_INTERFACE_T::stpTcnGuard);
}

// ---- 802.1X and RADIUS ----

int rpcclt_openapiDot1xSystemAuthControlModeGet(openclt_handle_t *handle, uint32_t *mode)
{
    return vsSystemNumber(__func__, handle, mode, &VS_SYSTEM_T::dot1x);
}

int rpcclt_openapiAuthMgrAdminModeGet(openclt_handle_t *handle, uint32_t *mode)
{
    return vsSystemNumber(__func__, handle, mode, &VS_SYSTEM_T::authManager);
}

int rpcclt_openapiAuthMgrPortControlModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode)
{
    return vsNumberGet<VS_PORT_T>(__func__, handle, ifNum, mode, &VS_PORT_T::dot1xControl);
}

int rpcclt_openapiAuthMgrPortStatusGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *status)
{
    return vsNumberGet<VS_PORT_T>(__func__, handle, ifNum, status, &VS_PORT_T::dot1xStatus);
}

int rpcclt_openapiRadiusAuthServerPortNumGet(openclt_handle_t *handle, openclt_buffer_t *address, uint32_t addressType,
                                             uint32_t *port)
{
    std::string text = vsUsable(address) ? vsTextIn(address) : std::string();
    VS_CALL_T call(__func__, text);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (!vsUsable(address) || (addressType != ADDRESS_IPV4 && addressType != ADDRESS_HOST_NAME)) {
        return OPENCLT_PARAM;
    }
    const std::vector<VS_RADIUS_T> &servers = call.state().radius;
    auto found =
        std::find_if(servers.begin(), servers.end(), [&](const VS_RADIUS_T &row) { return row.address == text; });
    return vsNumberOf(call, handle, found == servers.end() ? nullptr : &*found, port, &VS_RADIUS_T::port);
}
