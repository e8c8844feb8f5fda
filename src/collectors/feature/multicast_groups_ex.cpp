#include "collectors/feature/multicast_groups_ex.h"

// From the platform's group table to rows of text. The label of each interface is looked up once per build, in a map by
// interface number, since thousands of rows name a few hundred interfaces. Each row is a small document of its own, so
// that one without memory is left out and no other. Uses the walks of switch/ and the chunk writer of restcache/.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/columns.h"
#include "switch/labels.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <tuple>

constexpr uint32_t MAP_SIZE = 896;
constexpr size_t ADDRESS_SIZE = 16;
constexpr size_t MAC_SIZE = 18;
constexpr uint32_t LAG_UNIT = 1; // unit shown for a LAG

// How rows name an interface.
struct MAP_ENTRY_T {
    bool valid;
    bool isLag;
    uint32_t lagNumber;
    openclt_usp_t usp;
};

// What all rows of one group share.
struct GROUP_TEXTS_T {
    uint32_t unit;
    char port[PORT_LABEL_SIZE];
    char address[ADDRESS_SIZE];
    char mac[MAC_SIZE];
    char type[sizeof(openclt_snoop_group_t::type) + 1];
    bool version3; // its members have timers of their own
};

// VLAN, address and interface of a group.
using GROUP_CIRCLE_T = KEY_CIRCLE_T<std::tuple<uint16_t, uint32_t, uint16_t>>;

static void portLabelsFill(CLIENT_HANDLE_T *clientHandle, MAP_ENTRY_T *map)
{
    for (IF_WALK_T port = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port)) {
        if (port.ifNum >= MAP_SIZE)
            break; // they ascend
        MAP_ENTRY_T *entry = &map[port.ifNum];
        entry->valid = ifUnitSlotPortGet(clientHandle, port.ifNum, &entry->usp) == RESULT_OK;
    }
}

static void lagLabelsFill(CLIENT_HANDLE_T *clientHandle, MAP_ENTRY_T *map)
{
    IF_WALK_T lag = {clientHandle, OPENCLT_IF_LAG, 0, 0, RESULT_OK, true};

    // Asked directly: a switch without LAGs is no fault here, so no line is logged for it.
    if (openapiIfFirstGet(clientHandle, OPENCLT_IF_LAG, &lag.first) != OPENCLT_OK)
        return;
    for (lag.ifNum = lag.first; lag.valid && lag.ifNum < MAP_SIZE; ifWalkNext(&lag)) {
        if (!map[lag.ifNum].valid)
            map[lag.ifNum] = {true, true, lagNumber(lag.ifNum, lag.first), {}};
    }
}

// The group after this one (all zero: the first). False after the last, and when a group comes again.
static bool groupNext(CLIENT_HANDLE_T *clientHandle, GROUP_CIRCLE_T *circle, openclt_snoop_group_t *group)
{
    return rpcclt_openapiSnoopingGroupNextGet(clientHandle, OPENCLT_AF_IPV4, 0, group) == OPENCLT_OK &&
           !keyRecurs(circle, {group->vlanId, group->groupAddress, group->ifNum});
}

static GROUP_TEXTS_T groupTexts(const openclt_snoop_group_t *group, const MAP_ENTRY_T *entry)
{
    GROUP_TEXTS_T texts = {};

    texts.unit = entry->isLag ? LAG_UNIT : entry->usp.unit;
    if (entry->isLag)
        lagLabel(entry->lagNumber, texts.port);
    else
        portLabel(&entry->usp, texts.port);
    ipv4Text(group->groupAddress, texts.address);
    macText(group->groupMac, texts.mac);
    memcpy(texts.type, group->type, sizeof(group->type)); // may fill its field to the last byte
    texts.version3 = strstr(texts.type, "v3") != nullptr || strstr(texts.type, "V3") != nullptr;
    return texts;
}

// One row; without a subscriber (null) its texts are empty.
static void rowAdd(const openclt_snoop_group_t *group, const GROUP_TEXTS_T *texts,
                   const openclt_snoop_subscriber_t *subscriber, CHUNK_SINK_T *sink)
{
    char address[ADDRESS_SIZE] = "";
    char mac[MAC_SIZE] = "";

    if (subscriber != nullptr) {
        ipv4Text(subscriber->address, address);
        macText(subscriber->mac, mac);
    }
    jsonBuildBegin(); // an earlier row without memory does not drop this one
    OWNED_JSON row(cJSON_CreateObject());
    jsonAddNumber(row.get(), "unit", texts->unit);
    jsonAddText(row.get(), "port", texts->port);
    jsonAddNumber(row.get(), "vlanId", group->vlanId);
    jsonAddText(row.get(), "subscriberAddress", address);
    jsonAddText(row.get(), "subscriberMacAddress", mac);
    jsonAddText(row.get(), "multicastAddress", texts->address);
    jsonAddText(row.get(), "multicastMacAddress", texts->mac);
    jsonAddText(row.get(), "type", texts->type);
    if (texts->version3)
        jsonAddItem(row.get(), "timeout", OWNED_JSON(cJSON_CreateNull()));
    else
        jsonAddNumber(row.get(), "timeout", group->timeout);

    OWNED_TEXT text(jsonPrint(row.get(), JSON_COMPACT));
    if (text != nullptr)
        chunkRowAdd(sink, text.get(), strlen(text.get()));
    else
        LOG_ERROR("multicast_groups_ex: no memory for a row\n");
}

static void groupRowsAdd(const openclt_snoop_group_t *group, const MAP_ENTRY_T *entry, CHUNK_SINK_T *sink)
{
    GROUP_TEXTS_T texts = groupTexts(group, entry);
    uint32_t count = std::min<uint32_t>(group->subscriberCount, OPENCLT_SNOOP_SUBSCRIBERS_MAX);

    if (count == 0)
        rowAdd(group, &texts, nullptr, sink);
    for (uint32_t i = 0; i < count; i++)
        rowAdd(group, &texts, &group->subscribers[i], sink);
}

int mgeWriteChunks(CLIENT_HANDLE_T *clientHandle)
{
    CHUNK_SINK_T sink;

    int result = chunkBegin(&sink, CHUNK_MULTICAST_GROUPS);
    if (result != RESULT_OK) {
        LOG_ERROR("multicast_groups_ex: no memory for the rows\n"); // the cycle does not look at the result
        return result;
    }
    mgeCollectGroups(clientHandle, &sink);
    return chunkEnd(&sink);
}

void mgeCollectGroups(CLIENT_HANDLE_T *clientHandle, CHUNK_SINK_T *sink)
{
    openclt_snoop_group_t group = {};
    GROUP_CIRCLE_T circle;

    auto map = ownedArray<MAP_ENTRY_T>(MAP_SIZE);
    if (map == nullptr) {
        LOG_ERROR("multicast_groups_ex: no memory for the interfaces\n");
        return;
    }
    portLabelsFill(clientHandle, map.get());
    lagLabelsFill(clientHandle, map.get());
    while (groupNext(clientHandle, &circle, &group)) {
        if (group.ifNum < MAP_SIZE && map[group.ifNum].valid)
            groupRowsAdd(&group, &map[group.ifNum], sink);
    }
}
