// calls.h - shapes of the client calls: most answer one number or one text of one object of the state, or the next key
// of an ascending list. Each shape is one template here, so that a call is a line that says what is read of what.
//
// `read` is a member of the object, or a function of (object) or (state, object, now). Null handles and out-arguments
// give OPENCLT_PARAM, an object that does not exist OPENCLT_NOT_FOUND; a fault aimed at the call comes before both.
#pragma once

#include "vswitch.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <type_traits>

// Routing interface of a VLAN: above every port and LAG, ascending like the VLANs.
constexpr uint32_t VS_ROUTING_BASE = 4096;

constexpr uint32_t VS_STP_FORWARDING = 3;
constexpr uint32_t VS_MAC_BYTES = 6;

inline bool vsUsable(const openclt_buffer_t *buffer)
{
    return buffer != nullptr && buffer->bytes != nullptr;
}

// ---- objects by their number ----

template <typename OBJECT> const OBJECT *vsFind(const VS_STATE_T &state, uint32_t key, double now);

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

template <typename OBJECT, typename READ> auto vsReadOf(const VS_CALL_T &call, const OBJECT &object, READ read)
{
    if constexpr (std::is_invocable_v<READ, const OBJECT &>) {
        return std::invoke(read, object);
    } else {
        return read(call.state(), object, call.now());
    }
}

// What a fault has a call answer instead; false for records that a text cannot say.
template <typename VALUE> bool vsValueSet(const std::string &text, VALUE *value)
{
    if constexpr (std::is_integral_v<VALUE>) {
        *value = static_cast<VALUE>(strtoull(text.c_str(), nullptr, 10));
        return true;
    } else if constexpr (std::is_same_v<VALUE, openclt_usp_t>) {
        return sscanf(text.c_str(), "%3hhu/%3hhu/%5hu", &value->unit, &value->slot, &value->port) == 3;
    } else {
        return false;
    }
}

template <typename OBJECT, typename VALUE, typename READ>
int vsNumberOf(const VS_CALL_T &call, const void *handle, const OBJECT *object, VALUE *value, READ read)
{
    if (handle == nullptr || value == nullptr) {
        return OPENCLT_PARAM;
    }
    if (call.value != nullptr && vsValueSet(*call.value, value)) {
        return OPENCLT_OK;
    }
    if (object == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    *value = static_cast<VALUE>(vsReadOf(call, *object, read));
    return OPENCLT_OK;
}

template <typename OBJECT, typename READ>
int vsTextOf(const VS_CALL_T &call, const void *handle, const OBJECT *object, openclt_buffer_t *text, READ read)
{
    if (handle == nullptr || !vsUsable(text)) {
        return OPENCLT_PARAM;
    }
    if (call.value != nullptr) {
        return vsTextOut(*call.value, text);
    }
    return object == nullptr ? OPENCLT_NOT_FOUND : vsTextOut(vsReadOf(call, *object, read), text);
}

// Number or text of the object with this key.
template <typename OBJECT, typename VALUE, typename READ>
int vsNumberGet(const char *name, const void *handle, uint32_t key, VALUE *value, READ read)
{
    VS_CALL_T call(name, key);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    return vsNumberOf(call, handle, vsFind<OBJECT>(call.state(), key, call.now()), value, read);
}

template <typename OBJECT, typename READ>
int vsTextGet(const char *name, const void *handle, uint32_t key, openclt_buffer_t *text, READ read)
{
    VS_CALL_T call(name, key);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    return vsTextOf(call, handle, vsFind<OBJECT>(call.state(), key, call.now()), text, read);
}

// Number or text of the whole switch.
template <typename VALUE, typename READ>
int vsSystemNumber(const char *name, const void *handle, VALUE *value, READ read)
{
    VS_CALL_T call(name);
    return call.result != OPENCLT_OK ? call.result : vsNumberOf(call, handle, &call.state().system, value, read);
}

template <typename READ> int vsSystemText(const char *name, const void *handle, openclt_buffer_t *text, READ read)
{
    VS_CALL_T call(name);
    return call.result != OPENCLT_OK ? call.result : vsTextOf(call, handle, &call.state().system, text, read);
}

// What a text of some kind can need, terminator included: a property of the platform, not of the scenario.
inline int vsLimit(const char *name, const void *handle, uint32_t *size, uint32_t limit)
{
    return vsSystemNumber(name, handle, size, [limit](const VS_SYSTEM_T &) { return limit; });
}

// ---- ascending lists ----

// First row above `previous` that is wanted; null at the end. keyOf(row) ascends through the list.
template <typename ROW, typename KEY, typename KEY_OF, typename WANTED>
const ROW *vsNextRow(const std::vector<ROW> &rows, const KEY &previous, KEY_OF keyOf, WANTED wanted)
{
    auto above = std::upper_bound(rows.begin(), rows.end(), previous,
                                  [&keyOf](const KEY &key, const ROW &row) { return key < std::invoke(keyOf, row); });
    auto found = std::find_if(above, rows.end(), wanted);
    return found == rows.end() ? nullptr : &*found;
}

// Next number of a list, with the previous one as the call's key. wanted(row, now).
template <typename ROW, typename WANTED>
int vsNextNumber(const char *name, const void *handle, uint32_t previous, uint32_t *next,
                 std::vector<ROW> VS_STATE_T::*rows, uint32_t ROW::*number, WANTED wanted)
{
    VS_CALL_T call(name, previous);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    double now = call.now();
    const ROW *row = vsNextRow(call.state().*rows, previous, number, [&](const ROW &r) { return wanted(r, now); });
    return vsNumberOf(call, handle, row, next, number);
}
