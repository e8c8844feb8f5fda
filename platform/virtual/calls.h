// calls.h - answers of the client calls. What all calls have in common stands once, in calls.cpp: counting, faults,
// what is missing of the arguments. An answer says what the state says, and finds the arguments under the names that
// calls.def gives them:
//
//     ANSWER(rpcclt_openapiServicePortIPv4AddrGet)
//     {
//         *args.address = call.state().system.serviceAddress;
//         ...
//     }
//
// Most calls answer one number or text of one object; such an answer is a line:
//
//     READS(openapiIfAutoNegGet, mode, &VS_PORT_T::autoNeg);
//
// What is read is a member of the object, or a function of (object) or (state, object, now). The object is that of the
// call's key, unless it is given before what is read of it; one that does not exist is OPENCLT_NOT_FOUND.
#pragma once

#include "vswitch.h"

#include <algorithm>
#include <call_table.h>
#include <cstdio>
#include <functional>
#include <type_traits>

#define CALL(name, arguments, meaning)                                                                                 \
    struct VS_##name##_T {                                                                                             \
        OPENCLT_EACH(OPENCLT_FIELD_OF, OPENCLT_NOTHING, arguments)                                                     \
    };                                                                                                                 \
    int vs_##name(const VS_CALL_T &call, const VS_##name##_T &args);
#include <calls.def>

#define ANSWER(name) int vs_##name([[maybe_unused]] const VS_CALL_T &call, [[maybe_unused]] const VS_##name##_T &args)
#define READS(name, output, ...)                                                                                       \
    ANSWER(name)                                                                                                       \
    {                                                                                                                  \
        return vsRead(call, args.output, __VA_ARGS__);                                                                 \
    }                                                                                                                  \
    struct VS_##name##_T

// Routing interface of a VLAN: above every port and LAG, ascending like the VLANs.
constexpr uint32_t VS_ROUTING_BASE = 4096;

constexpr uint32_t VS_STP_FORWARDING = 3;
constexpr uint32_t VS_MAC_BYTES = 6;

// ---- objects by their number ----

template <typename OBJECT> const OBJECT *vsFind(const VS_STATE_T &state, uint32_t key, double now);

template <> inline const VS_SYSTEM_T *vsFind(const VS_STATE_T &state, uint32_t, double)
{
    return &state.system;
}
template <> inline const VS_INTERFACE_T *vsFind(const VS_STATE_T &state, uint32_t ifNum, double)
{
    return vsInterface(state, ifNum);
}
template <> inline const VS_PORT_T *vsFind(const VS_STATE_T &state, uint32_t ifNum, double)
{
    return vsPort(state, ifNum);
}
template <> inline const VS_LAG_T *vsFind(const VS_STATE_T &state, uint32_t ifNum, double)
{
    return vsLag(state, ifNum);
}
template <> inline const VS_VLAN_T *vsFind(const VS_STATE_T &state, uint32_t id, double)
{
    return vsVlan(state, id);
}
// A port that cannot feed power has no readings.
template <> inline const VS_POE_T *vsFind(const VS_STATE_T &state, uint32_t ifNum, double)
{
    const VS_PORT_T *port = vsPort(state, ifNum);
    return port != nullptr && port->poe.valid ? &port->poe : nullptr;
}
// A unit that is away has no facts.
template <> inline const VS_UNIT_T *vsFind(const VS_STATE_T &state, uint32_t unit, double now)
{
    const VS_UNIT_T *found = vsUnit(state, unit);
    return found != nullptr && vsWindowOpen(found->present, now) ? found : nullptr;
}

inline bool vsInterfaceUp(const VS_STATE_T &state, const VS_INTERFACE_T &interface, double now)
{
    const VS_PORT_T *port = vsPort(state, interface.ifNum);
    const VS_LAG_T *lag = port != nullptr ? nullptr : vsLag(state, interface.ifNum);
    return port != nullptr ? vsLinkUp(state, *port, now) : lag != nullptr && vsLagUp(state, *lag, now);
}

// Bytes of "AA:BB:CC:DD:EE:FF"; false for any other text.
inline bool vsMacBytes(const std::string &text, uint8_t bytes[VS_MAC_BYTES])
{
    unsigned part[VS_MAC_BYTES];
    int read = 0;
    if (sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%n", &part[0], &part[1], &part[2], &part[3], &part[4], &part[5],
               &read) != VS_MAC_BYTES ||
        static_cast<size_t>(read) != text.size()) {
        return false;
    }
    std::copy(part, part + VS_MAC_BYTES, bytes);
    return true;
}

// ---- reading one object ----

// The object's type, by what is read of it.
template <typename OBJECT, typename VALUE> OBJECT vsObject(VALUE OBJECT::*);
template <typename OBJECT, typename VALUE> OBJECT vsObject(VALUE (*)(const OBJECT &));
template <typename OBJECT, typename VALUE> OBJECT vsObject(VALUE (*)(const VS_STATE_T &, const OBJECT &, double));

template <typename OBJECT, typename OUT, typename READ>
int vsRead(const VS_CALL_T &call, OUT *out, const OBJECT *object, READ read)
{
    if (object == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    auto value = [&] {
        if constexpr (std::is_invocable_v<READ, const OBJECT &>) {
            return std::invoke(read, *object);
        } else {
            return read(call.state(), *object, call.now());
        }
    };
    if constexpr (std::is_same_v<OUT, openclt_buffer_t>) {
        return vsTextOut(value(), out);
    } else {
        *out = static_cast<OUT>(value());
        return OPENCLT_OK;
    }
}

template <typename OUT, typename READ> int vsRead(const VS_CALL_T &call, OUT *out, READ read)
{
    using OBJECT = decltype(vsObject(read));
    return vsRead(call, out, vsFind<OBJECT>(call.state(), call.key, call.now()), read);
}

constexpr auto vsItself = [](const auto &object) {
    return object;
};

// ---- lists ----

// The row with this number or name; null when there is none.
template <typename ROW, typename FIELD, typename VALUE>
const ROW *vsRowOf(const std::vector<ROW> &rows, FIELD ROW::*field, const VALUE &value)
{
    auto found = std::find_if(rows.begin(), rows.end(), [&](const ROW &row) { return row.*field == value; });
    return found == rows.end() ? nullptr : &*found;
}

// First row above `previous` that is wanted; null at the end. keyOf(row) ascends through the list.
template <typename ROW, typename KEY, typename KEY_OF, typename WANTED>
const ROW *vsNextRow(const std::vector<ROW> &rows, const KEY &previous, KEY_OF keyOf, WANTED wanted)
{
    auto above = std::upper_bound(rows.begin(), rows.end(), previous,
                                  [&keyOf](const KEY &key, const ROW &row) { return key < std::invoke(keyOf, row); });
    auto found = std::find_if(above, rows.end(), wanted);
    return found == rows.end() ? nullptr : &*found;
}

template <typename ROW, typename KEY, typename KEY_OF>
const ROW *vsNextRow(const std::vector<ROW> &rows, const KEY &previous, KEY_OF keyOf)
{
    return vsNextRow(rows, previous, keyOf, [](const ROW &) { return true; });
}
