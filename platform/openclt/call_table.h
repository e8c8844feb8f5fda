// call_table.h - calls.def for C++: what a program needs that answers, forwards, records or checks every call.
//
// OPENCLT_EACH(M, S, arguments) is M(kind, type, name, room) for each argument of a row, with S() between them.
#pragma once

#include "openclt.h"

#include <cstddef>
#include <string_view>
#include <type_traits>

// What calls.def says of each kind. What comes out stands behind what goes in; cursors and counts do both.
enum OPENCLT_KIND {
    OPENCLT_NO_ARGUMENT,
    OPENCLT_HANDLE,
    OPENCLT_KEY,
    OPENCLT_IN,
    OPENCLT_NAME,
    OPENCLT_KEY_TEXT,
    OPENCLT_COMMAND,
    OPENCLT_PATH,
    OPENCLT_OUT,
    OPENCLT_PLACE,
    OPENCLT_RECORD,
    OPENCLT_TEXT,
    OPENCLT_BLOCK,
    OPENCLT_COUNT,
    OPENCLT_CURSOR,
    OPENCLT_CURSOR_TEXT,
    OPENCLT_CURSOR_RECORD,
};

constexpr bool opencltIsOutput(OPENCLT_KIND kind)
{
    return kind >= OPENCLT_OUT;
}

struct OPENCLT_ARGUMENT_T {
    OPENCLT_KIND kind;
    const char *name;
    uint32_t size;    // bytes of the number or record, or of what the pointer points to
    const char *room; // as in calls.def, "" where there is none
};

struct OPENCLT_CALL_T {
    const char *name;
    OPENCLT_ARGUMENT_T arguments[8]; // in order; OPENCLT_NO_ARGUMENT behind the last
};

#define OPENCLT_1(M, S, a) M a
#define OPENCLT_2(M, S, a, ...) M a S() OPENCLT_1(M, S, __VA_ARGS__)
#define OPENCLT_3(M, S, a, ...) M a S() OPENCLT_2(M, S, __VA_ARGS__)
#define OPENCLT_4(M, S, a, ...) M a S() OPENCLT_3(M, S, __VA_ARGS__)
#define OPENCLT_5(M, S, a, ...) M a S() OPENCLT_4(M, S, __VA_ARGS__)
#define OPENCLT_6(M, S, a, ...) M a S() OPENCLT_5(M, S, __VA_ARGS__)
#define OPENCLT_7(M, S, a, ...) M a S() OPENCLT_6(M, S, __VA_ARGS__)
#define OPENCLT_PICK(a, b, c, d, e, f, g, picked, ...) picked
#define OPENCLT_UNPACKED(M, S, ...)                                                                                    \
    OPENCLT_PICK(__VA_ARGS__, OPENCLT_7, OPENCLT_6, OPENCLT_5, OPENCLT_4, OPENCLT_3, OPENCLT_2, OPENCLT_1, )           \
    (M, S, __VA_ARGS__)
#define OPENCLT_UNPACK(...) __VA_ARGS__
#define OPENCLT_EACH(M, S, arguments) OPENCLT_UNPACKED(M, S, OPENCLT_UNPACK arguments)

#define OPENCLT_COMMA() ,
#define OPENCLT_NOTHING()
#define OPENCLT_TYPE_OF(kind, type, name, room) type
#define OPENCLT_NAME_OF(kind, type, name, room) name
#define OPENCLT_PARAMETER_OF(kind, type, name, room) type name
#define OPENCLT_FIELD_OF(kind, type, name, room) type name;
#define OPENCLT_ROW_OF(kind, type, name, room)                                                                         \
    {                                                                                                                  \
        OPENCLT_##kind, #name, sizeof(std::remove_pointer_t<type>), #room                                              \
    }

#define CALL(name, arguments, meaning)                                                                                 \
    static_assert(std::is_same_v<decltype(name), int(OPENCLT_EACH(OPENCLT_TYPE_OF, OPENCLT_COMMA, arguments))>,        \
                  #name " is not in openclt.h as in calls.def");
#include "calls.def"

// The table itself, and the place of each call in it.
inline constexpr OPENCLT_CALL_T opencltCalls[] = {
#define CALL(name, arguments, meaning) {#name, {OPENCLT_EACH(OPENCLT_ROW_OF, OPENCLT_COMMA, arguments)}},
#include "calls.def"
};

enum OPENCLT_INDEX {
#define CALL(name, arguments, meaning) OPENCLT_AT_##name,
#include "calls.def"
};

// The name without rpcclt_, as scenarios, schemas and pages have it. Another text stays as it is.
constexpr std::string_view opencltPlainName(std::string_view name)
{
    constexpr std::string_view prefix = "rpcclt_";
    return name.substr(0, prefix.size()) == prefix ? name.substr(prefix.size()) : name;
}
