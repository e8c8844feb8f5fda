#include "calls.h"

// Client calls about physical ports and LAGs: walks, names, states, media and counters.
//
// A fan-out port that is not in use, and every port of a unit that is away, stays in the walks but is detached.

namespace {

constexpr uint32_t COMPLIANCE_SIZE = 64;
constexpr uint32_t COUNTER_RATE_IN = 58, COUNTER_RATE_OUT = 59;
constexpr uint32_t SPEED_AUTO = 1;
constexpr uint32_t STATE_ON = 1, STATE_OFF = 2; // of the operational state

bool attached(const VS_STATE_T &state, const VS_INTERFACE_T &interface, double now)
{
    const VS_PORT_T *port = vsPort(state, interface.ifNum);
    return port == nullptr || (port->attached && vsFind<VS_UNIT_T>(state, port->unit, now) != nullptr);
}

uint32_t linkState(const VS_STATE_T &state, const VS_INTERFACE_T &interface, double now)
{
    if (!attached(state, interface, now)) {
        return OPENCLT_LINK_DETACHED;
    }
    return vsInterfaceUp(state, interface, now) ? OPENCLT_LINK_UP : OPENCLT_LINK_DOWN;
}

uint32_t adminState(const VS_INTERFACE_T &interface)
{
    return interface.adminUp ? OPENCLT_ADMIN_UP : OPENCLT_ADMIN_DOWN;
}

uint32_t operationalState(const VS_STATE_T &state, const VS_INTERFACE_T &interface, double now)
{
    bool forwards = !interface.stpEnabled || interface.stpState == VS_STP_FORWARDING;
    return vsInterfaceUp(state, interface, now) && forwards ? STATE_ON : STATE_OFF;
}

uint64_t counterOf(const VS_STATE_T &state, const VS_INTERFACE_T &interface, uint32_t counter, double now)
{
    bool rate = counter == COUNTER_RATE_IN || counter == COUNTER_RATE_OUT;
    return rate && !vsInterfaceUp(state, interface, now) ? 0 : vsCounter(interface, counter, now);
}

uint32_t typeOf(const VS_STATE_T &state, const VS_INTERFACE_T &interface, double)
{
    return vsPort(state, interface.ifNum) != nullptr ? OPENCLT_IF_PHYSICAL : OPENCLT_IF_LAG;
}

std::string nameOf(const VS_STATE_T &state, const VS_INTERFACE_T &interface, double)
{
    const VS_PORT_T *port = vsPort(state, interface.ifNum);
    return port != nullptr ? vsPortName(*port) : vsLagName(*vsLag(state, interface.ifNum));
}

openclt_usp_t placeOf(const VS_PORT_T &port)
{
    return {static_cast<uint8_t>(port.unit), static_cast<uint8_t>(port.slot), static_cast<uint16_t>(port.port)};
}

// What a link would use is known only while it is up.
uint32_t speedOf(const VS_STATE_T &state, const VS_INTERFACE_T &interface, double now)
{
    return vsInterfaceUp(state, interface, now) ? interface.speed : SPEED_AUTO;
}

uint32_t interfaceCount(const VS_STATE_T &state, const VS_SYSTEM_T &, double)
{
    uint32_t lastPort = state.ports.empty() ? 0 : state.ports.back().ifNum;
    uint32_t lastLag = state.lags.empty() ? 0 : state.lags.back().ifNum;
    return std::max(lastPort, lastLag) + 1;
}

// Next interface of a type above ifNum; null at the end.
const VS_INTERFACE_T *nextOfType(const VS_STATE_T &state, uint32_t type, uint32_t ifNum)
{
    if (type == OPENCLT_IF_PHYSICAL) {
        return vsNextRow(state.ports, ifNum, &VS_INTERFACE_T::ifNum);
    }
    return type == OPENCLT_IF_LAG ? vsNextRow(state.lags, ifNum, &VS_INTERFACE_T::ifNum) : nullptr;
}

// "1/0/5"; "lag 2", also written "lag2", or a LAG by the name that was given to it. Nothing may follow. Null for any
// other text and for names that nobody has.
const VS_INTERFACE_T *byName(const VS_STATE_T &state, const std::string &name)
{
    unsigned unit = 0, slot = 0, port = 0;
    if (sscanf(name.c_str(), "%9u/%9u/%9u", &unit, &slot, &port) == 3) {
        const VS_PORT_T *found = vsPortAt(state, unit, slot, port);
        return found != nullptr && vsPortName(*found) == name ? found : nullptr;
    }
    for (const VS_LAG_T &lag : state.lags) {
        if (vsLagName(lag) == name || name == "lag" + std::to_string(lag.number) || lag.name == name) {
            return &lag;
        }
    }
    return nullptr;
}

// The optic that a port reaches: its own, or as a sub-port in use that of its front port. Null when there is none.
const VS_OPTIC_T *opticOf(const VS_STATE_T &state, const VS_PORT_T *port)
{
    if (port == nullptr || port->optic.present) {
        return port == nullptr ? nullptr : &port->optic;
    }
    const VS_PORT_T *root =
        port->attached && port->rootPort != 0 ? vsPortAt(state, port->unit, port->slot, port->rootPort) : nullptr;
    return root != nullptr && root->optic.present ? &root->optic : nullptr;
}

// To a sub-port its share of the optic is an SFP+.
uint32_t mediaKind(const VS_STATE_T &state, const VS_PORT_T &port, double)
{
    const VS_OPTIC_T *optic = opticOf(state, &port);
    return optic == nullptr ? 0 : port.optic.present ? optic->type : 2;
}

} // namespace

// ---- walks and names ----

READS(openapiIfFirstGet, ifNum, nextOfType(call.state(), args.type, 0), &VS_INTERFACE_T::ifNum);
READS(openapiIfNextGet, nextIfNum, nextOfType(call.state(), args.type, args.ifNum), &VS_INTERFACE_T::ifNum);
READS(openapiIfTypeGet, type, typeOf);
READS(openapiIfNameGet, name, nameOf);
READS(openapiMaxInterfaceCountGet, count, interfaceCount);
READS(rpcclt_openapiIfNumGet, ifNum, byName(call.state(), vsTextIn(args.name)), &VS_INTERFACE_T::ifNum);
READS(rpcclt_openapiIfDescrGet, description, &VS_INTERFACE_T::description);
READS(rpcclt_openapiHashIntfUnitSlotPortGet, usp, placeOf);

// ---- states ----

READS(openapiIfSpeedGet, speed, speedOf);
READS(openapiIfLinkStateGet, state, linkState);
READS(openapiIfAdminStateGet, state, adminState);
READS(openapiIfOprStateGet, state, operationalState);
READS(openapiIfAutoNegGet, mode, &VS_PORT_T::autoNeg);
READS(openapiIfMaxFrameSizeGet, bytes, &VS_INTERFACE_T::frameSize);
READS(rpcclt_openapiIfStatusGet, status, attached);
READS(rpcclt_openapiIfEthernetHeaderSizeGet, bytes, &VS_SYSTEM_T::ethernetHeader);
READS(rpcclt_openapiFlowControlIfModeGet, mode, &VS_PORT_T::flowControl);

ANSWER(rpcclt_openapiStormControlIntfModeGet)
{
    constexpr uint32_t BROADCAST = 2;
    const VS_PORT_T *port = vsPort(call.state(), args.ifNum);
    return vsRead(call, args.mode, port,
                  [&](const VS_PORT_T &row) { return args.stormType == BROADCAST && row.stormControl; });
}

ANSWER(rpcclt_openapiStatGet)
{
    const VS_INTERFACE_T *interface = vsInterface(call.state(), args.ifNum);
    return vsRead(call, args.value, interface,
                  [&](const VS_INTERFACE_T &row) { return counterOf(call.state(), row, args.counter, call.now()); });
}

// ---- media ----

READS(rpcclt_openapiBoxsSfpTypeGet, sfpType, mediaKind);
READS(rpcclt_openapiBoxsSfpComplianceGet, compliance, opticOf(call.state(), vsPort(call.state(), args.ifNum)),
      &VS_OPTIC_T::compliance);
READS(rpcclt_openapiBoxsSfpComplianceSizeGet, size, &COMPLIANCE_SIZE, vsItself);
