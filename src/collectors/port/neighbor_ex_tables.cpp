#include "collectors/port/neighbor_ex_tables.h"

// Three tables that are read or filled once per build. The two that are searched for every learned address are sorted
// by MAC first; a position kept in each ARP entry makes the search find what a search from the front would. Uses the
// walks of switch/.

#include "runtime/result.h"
#include "switch/columns.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <strings.h>
#include <utility>

constexpr size_t FIRST_CAPACITY = 64; // doubled when full

// Interface and address of an ARP entry.
using ARP_CIRCLE_T = KEY_CIRCLE_T<std::pair<uint32_t, std::array<uint8_t, sizeof(openclt_inet_addr_t::bytes)>>>;

// The entry stays all 0 without switch-port mode or place.
static void interfaceRead(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, NEIGHBOR_IF_T *entry)
{
    NEIGHBOR_IF_T read = {};
    uint32_t state = OPENCLT_LINK_UP;

    if (rpcclt_openapiDot1qSwPortModeGet(clientHandle, ifNum, &read.switchMode) != OPENCLT_OK ||
        ifUnitSlotPortGet(clientHandle, ifNum, &read.usp) != RESULT_OK)
        return;
    (void)ifNameGet(clientHandle, ifNum, read.name, sizeof(read.name)); // "" when it fails
    if (openapiVlanIfPvidGet(clientHandle, ifNum, &read.pvid) != OPENCLT_OK)
        read.pvid = 0;
    read.linkUp = openapiIfLinkStateGet(clientHandle, ifNum, &state) == OPENCLT_OK && state == OPENCLT_LINK_UP;
    read.valid = true;
    *entry = read;
}

// The entry after this one (all zero: the first). False after the last, and when an entry comes again.
static bool arpNext(CLIENT_HANDLE_T *clientHandle, ARP_CIRCLE_T *circle, openclt_arp_entry_t *entry)
{
    std::array<uint8_t, sizeof(openclt_inet_addr_t::bytes)> address;

    if (rpcclt_openapiArpEntryNextGet(clientHandle, entry) != OPENCLT_OK)
        return false;
    memcpy(address.data(), entry->address.bytes, address.size());
    return !keyRecurs(circle, {entry->ifNum, address});
}

static bool arpEntryAdd(ARP_TABLE_T *table, const openclt_arp_entry_t *entry)
{
    int family = entry->address.family == OPENCLT_AF_IPV6 ? AF_INET6 : AF_INET;

    if (table->count == table->capacity && !ownedArrayDouble(&table->entries, &table->capacity))
        return false;
    ARP_ENTRY_T *added = &table->entries[table->count];
    macText(entry->mac, added->mac);
    if (inet_ntop(family, entry->address.bytes, added->address, sizeof(added->address)) == nullptr)
        added->address[0] = '\0'; // too long for its field
    added->order = static_cast<uint32_t>(table->count++);
    return true;
}

static bool macTextLess(const MAC_TEXT_T &a, const MAC_TEXT_T &b)
{
    return strcasecmp(a.text, b.text) < 0;
}

bool interfaceTableRead(CLIENT_HANDLE_T *clientHandle, NEIGHBOR_IF_TABLE_T *table)
{
    IF_WALK_T port = {clientHandle, OPENCLT_IF_PHYSICAL, 0, 0, RESULT_OK, false};

    *table = ownedArray<NEIGHBOR_IF_T>(NEIGHBOR_IF_COUNT);
    if (*table == nullptr)
        return false;
    // Asked directly: without ports the list is empty, and no line is logged for it.
    port.valid = openapiIfFirstGet(clientHandle, OPENCLT_IF_PHYSICAL, &port.ifNum) == OPENCLT_OK;
    for (; port.valid && port.ifNum < NEIGHBOR_IF_COUNT; ifWalkNext(&port))
        interfaceRead(clientHandle, port.ifNum, &(*table)[port.ifNum]);
    return true;
}

bool arpTableRead(CLIENT_HANDLE_T *clientHandle, ARP_TABLE_T *table)
{
    openclt_arp_entry_t entry = {};
    ARP_CIRCLE_T circle;
    bool added = true;

    table->capacity = FIRST_CAPACITY;
    table->count = 0;
    table->entries = ownedArray<ARP_ENTRY_T>(FIRST_CAPACITY);
    if (table->entries == nullptr)
        return false;
    while (added && arpNext(clientHandle, &circle, &entry))
        added = arpEntryAdd(table, &entry);
    std::sort(table->entries.get(), table->entries.get() + table->count,
              [](const ARP_ENTRY_T &a, const ARP_ENTRY_T &b) {
                  int order = strcasecmp(a.mac, b.mac);
                  return order != 0 ? order < 0 : a.order < b.order;
              });
    return added;
}

const char *arpTableFind(const ARP_TABLE_T *table, const char *mac)
{
    const ARP_ENTRY_T *begin = table->entries.get();
    const ARP_ENTRY_T *end = begin + table->count;
    const ARP_ENTRY_T *entry = std::lower_bound(
        begin, end, mac, [](const ARP_ENTRY_T &a, const char *wanted) { return strcasecmp(a.mac, wanted) < 0; });

    return entry != end && strcasecmp(entry->mac, mac) == 0 ? entry->address : "";
}

bool macListStart(MAC_LIST_T *list)
{
    list->capacity = FIRST_CAPACITY;
    list->count = 0;
    list->macs = ownedArray<MAC_TEXT_T>(FIRST_CAPACITY);
    return list->macs != nullptr;
}

bool macListAdd(MAC_LIST_T *list, const char *mac)
{
    if (list->count == list->capacity && !ownedArrayDouble(&list->macs, &list->capacity))
        return false;
    textCopy(list->macs[list->count++].text, MAC_TEXT_SIZE, mac);
    return true;
}

void macListSort(MAC_LIST_T *list)
{
    std::sort(list->macs.get(), list->macs.get() + list->count, macTextLess);
}

bool macListHas(const MAC_LIST_T *list, const char *mac)
{
    MAC_TEXT_T wanted;

    textCopy(wanted.text, sizeof(wanted.text), mac);
    return std::binary_search(list->macs.get(), list->macs.get() + list->count, wanted, macTextLess);
}
