#include "calls.h"

#include <cstdio>

// Client calls about physical ports and LAGs: walks, names, states, media and counters.
//
// A fan-out port that is not in use, and every port of a unit that is away, stays in the walks but is detached.

namespace {

constexpr uint32_t COMPLIANCE_SIZE = 64;
constexpr uint32_t COUNTER_RATE_IN = 58, COUNTER_RATE_OUT = 59;
constexpr uint32_t SPEED_AUTO = 1;
constexpr uint32_t STATE_ON = 1, STATE_OFF = 2; // of the administrative and the operational state

enum LINK_STATE : uint32_t { LINK_UP = 0, LINK_DOWN = 1, LINK_DETACHED = 2 };

bool attached(const VS_STATE_T &state, const VS_INTERFACE_T &interface, double now)
{
    const VS_PORT_T *port = vsPort(state, interface.ifNum);
    return port == nullptr || (port->attached && vsFind<VS_UNIT_T>(state, port->unit, now) != nullptr);
}

LINK_STATE linkState(const VS_STATE_T &state, const VS_INTERFACE_T &interface, double now)
{
    if (!attached(state, interface, now)) {
        return LINK_DETACHED;
    }
    return vsInterfaceUp(state, interface, now) ? LINK_UP : LINK_DOWN;
}

uint64_t counterOf(const VS_STATE_T &state, const VS_INTERFACE_T &interface, uint32_t counter, double now)
{
    bool rate = counter == COUNTER_RATE_IN || counter == COUNTER_RATE_OUT;
    return rate && !vsInterfaceUp(state, interface, now) ? 0 : vsCounter(interface, counter, now);
}

// Next interface of a type above ifNum; 0 at the end.
uint32_t nextOfType(const VS_STATE_T &state, uint32_t type, uint32_t ifNum)
{
    auto any = [](const VS_INTERFACE_T &) {
        return true;
    };
    const VS_INTERFACE_T *next = nullptr;
    if (type == OPENCLT_IF_PHYSICAL) {
        next = vsNextRow(state.ports, ifNum, &VS_INTERFACE_T::ifNum, any);
    } else if (type == OPENCLT_IF_LAG) {
        next = vsNextRow(state.lags, ifNum, &VS_INTERFACE_T::ifNum, any);
    }
    return next == nullptr ? 0 : next->ifNum;
}

int walk(const VS_CALL_T &call, const void *handle, uint32_t type, uint32_t above, uint32_t *ifNum)
{
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    uint32_t next = nextOfType(call.state(), type, above);
    return vsNumberOf(call, handle, next == 0 ? nullptr : &next, ifNum, [](uint32_t number) { return number; });
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
const VS_OPTIC_T *opticOf(const VS_STATE_T &state, const VS_PORT_T &port)
{
    if (port.optic.present) {
        return &port.optic;
    }
    const VS_PORT_T *root =
        port.attached && port.rootPort != 0 ? vsPortAt(state, port.unit, port.slot, port.rootPort) : nullptr;
    return root != nullptr && root->optic.present ? &root->optic : nullptr;
}

// To a sub-port its share of the optic is an SFP+.
uint32_t mediaKind(const VS_STATE_T &state, const VS_PORT_T &port, double)
{
    const VS_OPTIC_T *optic = opticOf(state, port);
    return optic == nullptr ? 0 : port.optic.present ? optic->type : 2;
}

} // namespace

// ---- walks and names ----

int openapiIfFirstGet(openclt_handle_t *handle, uint32_t type, uint32_t *ifNum)
{
    return walk({__func__, type}, handle, type, 0, ifNum);
}

int openapiIfNextGet(openclt_handle_t *handle, uint32_t type, uint32_t ifNum, uint32_t *nextIfNum)
{
    return walk({__func__, ifNum}, handle, type, ifNum, nextIfNum);
}

int openapiIfTypeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *type)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, type,
                                       [](const VS_STATE_T &state, const VS_INTERFACE_T &interface, double) {
                                           return vsPort(state, interface.ifNum) ? OPENCLT_IF_PHYSICAL : OPENCLT_IF_LAG;
                                       });
}

int openapiIfNameGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *name)
{
    return vsTextGet<VS_INTERFACE_T>(
        __func__, handle, ifNum, name, [](const VS_STATE_T &state, const VS_INTERFACE_T &interface, double) {
            const VS_PORT_T *port = vsPort(state, interface.ifNum);
            return port != nullptr ? vsPortName(*port) : vsLagName(*vsLag(state, interface.ifNum));
        });
}

int openapiMaxInterfaceCountGet(openclt_handle_t *handle, uint32_t *count)
{
    return vsSystemNumber(__func__, handle, count, [](const VS_STATE_T &state, const VS_SYSTEM_T &, double) {
        uint32_t lastPort = state.ports.empty() ? 0 : state.ports.back().ifNum;
        uint32_t lastLag = state.lags.empty() ? 0 : state.lags.back().ifNum;
        return std::max(lastPort, lastLag) + 1;
    });
}

int rpcclt_openapiIfNumGet(openclt_handle_t *handle, openclt_buffer_t *name, uint32_t *ifNum)
{
    std::string text = vsUsable(name) ? vsTextIn(name) : std::string();
    VS_CALL_T call(__func__, text);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (!vsUsable(name)) {
        return OPENCLT_PARAM;
    }
    return vsNumberOf(call, handle, byName(call.state(), text), ifNum, &VS_INTERFACE_T::ifNum);
}

int rpcclt_openapiIfDescrGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *description)
{
    return vsTextGet<VS_INTERFACE_T>(__func__, handle, ifNum, description, &VS_INTERFACE_T::description);
}

int rpcclt_openapiHashIntfUnitSlotPortGet(openclt_handle_t *handle, uint32_t ifNum, openclt_usp_t *usp)
{
    return vsNumberGet<VS_PORT_T>(__func__, handle, ifNum, usp, [](const VS_PORT_T &port) {
        return openclt_usp_t{static_cast<uint8_t>(port.unit), static_cast<uint8_t>(port.slot),
                             static_cast<uint16_t>(port.port)};
    });
}

// ---- states ----

// What a link would use is known only while it is up.
int openapiIfSpeedGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *speed)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, speed,
                                       [](const VS_STATE_T &state, const VS_INTERFACE_T &interface, double now) {
                                           return vsInterfaceUp(state, interface, now) ? interface.speed : SPEED_AUTO;
                                       });
}

int openapiIfLinkStateGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *state)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, state, linkState);
}

int openapiIfAdminStateGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *state)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, state, [](const VS_INTERFACE_T &interface) {
        return interface.adminUp ? STATE_ON : STATE_OFF;
    });
}

int openapiIfOprStateGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *state)
{
    return vsNumberGet<VS_INTERFACE_T>(
        __func__, handle, ifNum, state, [](const VS_STATE_T &record, const VS_INTERFACE_T &interface, double now) {
            bool forwards = !interface.stpEnabled || interface.stpState == VS_STP_FORWARDING;
            return vsInterfaceUp(record, interface, now) && forwards ? STATE_ON : STATE_OFF;
        });
}

int openapiIfAutoNegGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode)
{
    return vsNumberGet<VS_PORT_T>(__func__, handle, ifNum, mode, &VS_PORT_T::autoNeg);
}

int openapiIfMaxFrameSizeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *bytes)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, bytes, &VS_INTERFACE_T::frameSize);
}

int rpcclt_openapiIfStatusGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *status)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, status, attached);
}

int rpcclt_openapiIfEthernetHeaderSizeGet(openclt_handle_t *handle, uint32_t *bytes)
{
    return vsSystemNumber(__func__, handle, bytes, &VS_SYSTEM_T::ethernetHeader);
}

int rpcclt_openapiFlowControlIfModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode)
{
    return vsNumberGet<VS_PORT_T>(__func__, handle, ifNum, mode, &VS_PORT_T::flowControl);
}

int rpcclt_openapiStormControlIntfModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t stormType, uint32_t *mode)
{
    constexpr uint32_t BROADCAST = 2;
    return vsNumberGet<VS_PORT_T>(__func__, handle, ifNum, mode, [stormType](const VS_PORT_T &port) {
        return stormType == BROADCAST && port.stormControl;
    });
}

int rpcclt_openapiStatGet(openclt_handle_t *handle, uint32_t counter, uint32_t ifNum, uint64_t *value)
{
    return vsNumberGet<VS_INTERFACE_T>(__func__, handle, ifNum, value,
                                       [counter](const VS_STATE_T &state, const VS_INTERFACE_T &interface, double now) {
                                           return counterOf(state, interface, counter, now);
                                       });
}

// ---- media ----

int rpcclt_openapiBoxsSfpTypeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *sfpType)
{
    return vsNumberGet<VS_PORT_T>(__func__, handle, ifNum, sfpType, mediaKind);
}

int rpcclt_openapiBoxsSfpComplianceGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *compliance)
{
    VS_CALL_T call(__func__, ifNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_PORT_T *port = vsPort(call.state(), ifNum);
    const VS_OPTIC_T *optic = port != nullptr ? opticOf(call.state(), *port) : nullptr;
    return vsTextOf(call, handle, optic, compliance, &VS_OPTIC_T::compliance);
}

int rpcclt_openapiBoxsSfpComplianceSizeGet(openclt_handle_t *handle, uint32_t *size)
{
    return vsLimit(__func__, handle, size, COMPLIANCE_SIZE);
}
