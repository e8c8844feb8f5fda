#include "calls.h"

#include "show_layout.h"

#include <arpa/inet.h>
#include <cstring>
#include <tuple>

// Every client call as the daemon finds it in the shared library, made from calls.def: says what the call is about,
// lets a fault strike, sees that all arguments are there, and hands them to the call's answer in calls_*.cpp.

namespace {

// Index of the argument that says what a call is about: the key, or where a walk stands, or nothing but the session.
constexpr size_t keyIndex(const OPENCLT_CALL_T &row)
{
    size_t found = 0;
    for (size_t i = std::size(row.arguments); i-- > 0;) {
        OPENCLT_KIND kind = row.arguments[i].kind;
        if (kind == OPENCLT_KEY || kind == OPENCLT_KEY_TEXT || kind == OPENCLT_NAME || kind == OPENCLT_COMMAND) {
            return i;
        }
        found = kind >= OPENCLT_CURSOR ? i : found;
    }
    return found;
}

std::string keyText(const openclt_handle_t *)
{
    return "";
}

std::string keyText(uint32_t number)
{
    return std::to_string(number);
}

std::string keyText(const uint32_t *number)
{
    return std::to_string(number == nullptr ? 0 : *number);
}

std::string keyText(const char *text)
{
    return text == nullptr ? "" : text;
}

std::string keyText(const openclt_buffer_t *text)
{
    return vsTextIn(text);
}

std::string keyText(const openclt_arp_entry_t *entry)
{
    uint32_t address = 0;
    if (entry != nullptr) {
        memcpy(&address, entry->address.bytes, sizeof address);
    }
    return vsAddress(ntohl(address));
}

std::string keyText(const openclt_snoop_group_t *group)
{
    return vsAddress(group == nullptr ? 0 : group->groupAddress);
}

// ---- what a fault has a call answer ----

void numberSet(uint64_t number, uint32_t size, void *output)
{
    if (size == sizeof(uint16_t)) {
        *static_cast<uint16_t *>(output) = static_cast<uint16_t>(number);
    } else if (size == sizeof(uint32_t)) {
        *static_cast<uint32_t *>(output) = static_cast<uint32_t>(number);
    } else {
        *static_cast<uint64_t *>(output) = number;
    }
}

void outputSet(const OPENCLT_ARGUMENT_T &argument, void *output, const std::string &value)
{
    auto *place = static_cast<openclt_usp_t *>(output);
    auto *buffer = static_cast<openclt_buffer_t *>(output);
    switch (argument.kind) {
    case OPENCLT_PLACE:
        (void)sscanf(value.c_str(), "%3hhu/%3hhu/%5hu", &place->unit, &place->slot, &place->port);
        break;
    case OPENCLT_RECORD:
    case OPENCLT_CURSOR_RECORD:
        memset(output, 0, argument.size);
        memcpy(output, value.data(), std::min<size_t>(value.size(), argument.size));
        break;
    case OPENCLT_TEXT:
    case OPENCLT_CURSOR_TEXT:
        (void)vsTextOut(value.substr(0, std::max(buffer->size, 1U) - 1), buffer); // cut, it fits
        break;
    case OPENCLT_BLOCK:
        (void)vsBytesOut(value.data(), std::min(buffer->size, static_cast<uint32_t>(value.size())), buffer);
        break;
    default:
        numberSet(strtoull(value.c_str(), nullptr, 10), argument.size, output);
    }
}

// Each output takes its part of the value, the last one what is left. A call without outputs answers by its result.
int valueAnswer(const OPENCLT_CALL_T &row, void *const *given, const std::string &value)
{
    auto left = std::count_if(std::begin(row.arguments), std::end(row.arguments),
                              [](const OPENCLT_ARGUMENT_T &argument) { return opencltIsOutput(argument.kind); });
    if (left == 0) {
        return atoi(value.c_str());
    }
    size_t from = 0;
    for (size_t i = 0; left > 0; i++) {
        if (!opencltIsOutput(row.arguments[i].kind)) {
            continue;
        }
        size_t end = --left == 0 ? value.size() : std::min(value.find('\0', from), value.size());
        outputSet(row.arguments[i], given[i], value.substr(from, end - from));
        from = std::min(end + 1, value.size());
    }
    return OPENCLT_OK;
}

// ---- a call ----

void *pointerOf(uint32_t)
{
    return nullptr;
}

void *pointerOf(const void *pointer)
{
    return const_cast<void *>(pointer); // into what the caller lets the library write
}

bool isThere(uint32_t)
{
    return true;
}

bool isThere(const void *pointer)
{
    return pointer != nullptr;
}

bool isThere(const openclt_buffer_t *buffer)
{
    return buffer != nullptr && buffer->bytes != nullptr;
}

void roomsNote(const VS_CALL_T &call, const OPENCLT_CALL_T &row, void *const *given)
{
    for (size_t i = 0; row.arguments[i].kind != OPENCLT_NO_ARGUMENT; i++) {
        if (*row.arguments[i].room != '\0') {
            call.roomNote(row.name, static_cast<const openclt_buffer_t *>(given[i])->size);
        }
    }
}

template <OPENCLT_INDEX INDEX, typename ARGS, typename... GIVEN>
int enter(int (*answer)(const VS_CALL_T &, const ARGS &), GIVEN... given)
{
    constexpr OPENCLT_CALL_T row = opencltCalls[INDEX];
    constexpr size_t keyAt = keyIndex(row);
    constexpr bool isCommand = row.arguments[keyAt].kind == OPENCLT_COMMAND;
    auto key = std::get<keyAt>(std::tuple(given...));

    const std::string command = isCommand ? keyText(key) : "";
    VS_CALL_T call(
        isCommand ? command.c_str() : row.name, [key] { return keyText(key); }, isCommand);
    if constexpr (std::is_same_v<decltype(key), uint32_t>) {
        call.key = key;
    }
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (!(isThere(given) && ...)) {
        return OPENCLT_PARAM;
    }
    void *const all[] = {pointerOf(given)...};
    roomsNote(call, row, all);
    if (call.fault != nullptr && call.fault->kind == VS_ANSWER) {
        return valueAnswer(row, all, call.fault->value);
    }
    return answer(call, ARGS{given...});
}

} // namespace

#define CALL(name, arguments, meaning)                                                                                 \
    int name(OPENCLT_EACH(OPENCLT_PARAMETER_OF, OPENCLT_COMMA, arguments))                                             \
    {                                                                                                                  \
        return enter<OPENCLT_AT_##name>(vs_##name, OPENCLT_EACH(OPENCLT_NAME_OF, OPENCLT_COMMA, arguments));           \
    }
#include <calls.def>
