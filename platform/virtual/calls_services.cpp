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

READS(rpcclt_openapiLagNameGet, name, &VS_LAG_T::name);
READS(rpcclt_openapiLagStaticModeGet, mode, &VS_LAG_T::staticMode);
READS(rpcclt_openapiLagLoadBalanceModeGet, mode, &VS_LAG_T::hashMode);
READS(rpcclt_openapiLagMaxMemberCountGet, count, &VS_SYSTEM_T::lagMaxMembers);

ANSWER(rpcclt_openapiLagMembersGet)
{
    const VS_LAG_T *lag = vsLag(call.state(), args.lagIfNum);
    if (lag == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    std::vector<uint32_t> all = lag->members;
    all.insert(all.end(), lag->phantoms.begin(), lag->phantoms.end());
    uint32_t bytes = static_cast<uint32_t>(all.size() * sizeof(uint32_t));
    if (all.size() > *args.count || bytes > args.bufferSize) {
        return OPENCLT_FAIL;
    }
    int result = vsBytesOut(all.empty() ? args.count : all.data(), bytes, args.members);
    *args.count = result == OPENCLT_OK ? static_cast<uint32_t>(all.size()) : *args.count;
    return result;
}

// ---- spanning tree ----

READS(rpcclt_openapiDot1SMSTInstancePriorityGet, priority, args.instance == 0 ? &call.state().system : nullptr,
      &VS_SYSTEM_T::stpPriority);
READS(rpcclt_openapiDot1SIntfModeGet, mode, &VS_INTERFACE_T::stpEnabled);
READS(rpcclt_openapiDot1SIntfPortFwdStateGet, state,
      args.instance == 0 ? vsInterface(call.state(), args.ifNum) : nullptr, forwardingState);
READS(rpcclt_openapiDot1SIntfEdgePortModeGet, mode, &VS_INTERFACE_T::stpEdge);
READS(rpcclt_openapiDot1SIntfBPDUFilterModeGet, mode, &VS_INTERFACE_T::stpBpduFilter);
READS(rpcclt_openapiDot1SPortRestrictedTcnGet, restricted, &VS_INTERFACE_T::stpTcnGuard);

// ---- 802.1X and RADIUS ----

READS(rpcclt_openapiDot1xSystemAuthControlModeGet, mode, &VS_SYSTEM_T::dot1x);
READS(rpcclt_openapiAuthMgrAdminModeGet, mode, &VS_SYSTEM_T::authManager);
READS(rpcclt_openapiAuthMgrPortControlModeGet, mode, &VS_PORT_T::dot1xControl);
READS(rpcclt_openapiAuthMgrPortStatusGet, status, &VS_PORT_T::dot1xStatus);

ANSWER(rpcclt_openapiRadiusAuthServerPortNumGet)
{
    if (args.addressType != ADDRESS_IPV4 && args.addressType != ADDRESS_HOST_NAME) {
        return OPENCLT_PARAM;
    }
    return vsRead(call, args.port, vsRowOf(call.state().radius, &VS_RADIUS_T::address, vsTextIn(args.address)),
                  &VS_RADIUS_T::port);
}
