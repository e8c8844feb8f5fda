#include "switch/fdb.h"

// The learned MAC addresses, from the table that the CLI prints in one go or, slower, by one platform call for each.
// Both grow one array and keep what they have when it cannot grow further. Uses the show files of cli.h.

#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"
#include "switch/walk.h"

#include <array>
#include <cctype>
#include <cstring>
#include <utility>

namespace {
constexpr size_t FIRST_CAPACITY = 1024;
constexpr size_t TABLE_LINE_SIZE = 256;
static_assert(sizeof(FDB_ENTRY_T) == 32, "16,384 of them are half a megabyte");

// An array being filled.
struct FDB_LIST_T {
    const char *caller;
    OWNED_ARRAY<FDB_ENTRY_T> *entries;
    size_t capacity;
    uint32_t count;
};
using FDB_CIRCLE_T = KEY_CIRCLE_T<std::pair<int32_t, std::array<char, MAC_TEXT_SIZE>>>; // VLAN and address

bool listStart(FDB_LIST_T *list, const char *caller, OWNED_ARRAY<FDB_ENTRY_T> *entries);
bool listAdd(FDB_LIST_T *list, const FDB_ENTRY_T &entry);

bool tableStartFind(SHOW_FILE_T *show, char line[TABLE_LINE_SIZE]);
bool rowParse(char *line, FDB_ENTRY_T *entry);
size_t lineSplit(char *line, char **tokens, size_t room);
bool fdbNext(CLIENT_HANDLE_T *clientHandle, FDB_CIRCLE_T *circle, FDB_ENTRY_T *entry);
bool isPhysical(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum);
} // namespace

uint32_t fdbEntryListGetSimpleFast(CLIENT_HANDLE_T *clientHandle, OWNED_ARRAY<FDB_ENTRY_T> *entries)
{
    SHOW_REQUEST_T request = {__func__, "show mac-addr-table", PATH_SHOW_MAC_TABLE};
    request.openLine = SHOW_OPEN_SILENT;
    SHOW_FILE_T show;
    FDB_LIST_T list;
    char line[TABLE_LINE_SIZE];

    entries->reset();
    int result = showFileRun(&show, clientHandle, request);
    if (result == RESULT_FAILED)
        LOG_ERROR("fdbEntryListGetSimpleFast: cliShowExecuteToFile failed\n");
    if (result != RESULT_OK)
        return 0;
    if (!listStart(&list, __func__, entries)) {
        LOG_ERROR("fdbEntryListGetSimpleFast: malloc failed\n");
        return 0;
    }

    if (!tableStartFind(&show, line))
        return 0;
    while (showFileLine(&show, line, sizeof line)) {
        // What a carriage return begins is no line of the table, whatever follows.
        bool isPrompt = line[0] != '\r' && strchr(line, '#') != nullptr && strstr(line, "TK") != nullptr;
        if (isPrompt)
            break;
        FDB_ENTRY_T entry;
        if (rowParse(line, &entry) && !listAdd(&list, entry))
            break;
    }
    return list.count;
}

uint32_t fdbEntryListGetSimple(CLIENT_HANDLE_T *clientHandle, OWNED_ARRAY<FDB_ENTRY_T> *entries)
{
    FDB_LIST_T list;
    FDB_CIRCLE_T circle;
    FDB_ENTRY_T entry = {};

    if (!listStart(&list, __func__, entries)) {
        LOG_ERROR("fdbEntryListGetSimple: Failed to allocate initial array\n");
        return 0;
    }
    while (fdbNext(clientHandle, &circle, &entry)) {
        if (isPhysical(clientHandle, entry.ifNum) && !listAdd(&list, entry))
            break;
    }
    return list.count;
}

uint32_t fdbSnapshotGet(CLIENT_HANDLE_T *clientHandle, OWNED_ARRAY<FDB_ENTRY_T> *entries)
{
    uint32_t count = fdbEntryListGetSimpleFast(clientHandle, entries);
    return count != 0 ? count : fdbEntryListGetSimple(clientHandle, entries);
}

namespace {
bool listStart(FDB_LIST_T *list, const char *caller, OWNED_ARRAY<FDB_ENTRY_T> *entries)
{
    *entries = ownedArray<FDB_ENTRY_T>(FIRST_CAPACITY);
    *list = {caller, entries, FIRST_CAPACITY, 0};
    return *entries != nullptr;
}

// False when the entry has no room.
bool listAdd(FDB_LIST_T *list, const FDB_ENTRY_T &entry)
{
    if (list->count == list->capacity && !ownedArrayDouble(list->entries, &list->capacity)) {
        LOG_ERROR_AS(list->caller, "%s: realloc failed at count=%u\n", list->caller, list->count);
        return false;
    }
    (*list->entries)[list->count++] = entry;
    return true;
}

bool tableStartFind(SHOW_FILE_T *show, char line[TABLE_LINE_SIZE])
{
    while (showFileLine(show, line, TABLE_LINE_SIZE)) {
        if (strstr(line, "----------") != nullptr)
            return true;
    }
    return false;
}

/*
 *           1         2         3         4         5         6         7
 * 0123456789012345678901234567890123456789012345678901234567890123456789012
 * VLAN ID  MAC Address         Interface              IfIndex  Status
 * -------  ------------------  ---------------------  -------  ------------
 * 1        00:1D:56:10:20:30   1/0/3                  3        Learned
 * 1        02:10:18:4A:00:01   CPU Interface:         0/5/1    Management
 *
 * Five words; addresses of the switch itself and of LAGs have an interface that is no port, and are passed over.
 */
bool rowParse(char *line, FDB_ENTRY_T *entry)
{
    constexpr size_t FIELDS = 5;
    constexpr size_t TOKENS = 8; // more than a row has, so that a longer one is seen
    char *tokens[TOKENS];

    size_t fields = line[0] == '\n' || line[0] == '\r' ? 0 : lineSplit(line, tokens, TOKENS);
    int vlanId = fields < FIELDS ? 0 : columnStrtol(tokens[0], 0);
    if (vlanId >= 1)
        showRowTaken();
    if (fields != FIELDS)
        return false;
    const char *interface = tokens[2];
    int ifNum = columnStrtol(tokens[3], 0);
    if (isdigit(static_cast<unsigned char>(interface[0])) == 0 || strchr(interface, '/') == nullptr || vlanId < 1 ||
        ifNum < 1)
        return false;

    entry->vlanId = vlanId;
    entry->ifNum = static_cast<uint32_t>(ifNum);
    entry->learned = strcmp(tokens[4], "Learned") == 0 ? 1 : 0;
    textCopy(entry->mac, sizeof entry->mac, tokens[1]);
    return true;
}

size_t lineSplit(char *line, char **tokens, size_t room)
{
    char *rest = nullptr;
    size_t count = 0;
    for (char *token = strtok_r(line, " \t\r\n", &rest); token != nullptr && count < room;
         token = strtok_r(nullptr, " \t\r\n", &rest))
        tokens[count++] = token;
    return count;
}

// The entry after this one (all zero: the first). False after the last, and when the platform goes in a circle.
bool fdbNext(CLIENT_HANDLE_T *clientHandle, FDB_CIRCLE_T *circle, FDB_ENTRY_T *entry)
{
    openclt_buffer_t mac = {sizeof entry->mac, entry->mac};
    uint32_t vlanId = static_cast<uint32_t>(entry->vlanId);
    uint32_t entryType = 0;
    std::array<char, MAC_TEXT_SIZE> address;

    if (rpcclt_openapiFdbEntryNextGet(clientHandle, &mac, &vlanId, &entry->ifNum, &entryType) != OPENCLT_OK)
        return false;
    entry->mac[sizeof entry->mac - 1] = '\0';
    entry->vlanId = static_cast<int32_t>(vlanId);
    entry->learned = static_cast<int32_t>(entryType);
    memcpy(address.data(), entry->mac, address.size());
    return !keyRecurs(circle, {entry->vlanId, address});
}

bool isPhysical(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t type = OPENCLT_IF_PHYSICAL;
    return openapiIfTypeGet(clientHandle, ifNum, &type) == OPENCLT_OK && type == OPENCLT_IF_PHYSICAL;
}
} // namespace
