#include "collectors/port/port_stats.h"

// One row per physical port, then one per LAG that has members. Both directions are the same document with other
// counters and other key names, so a direction is a row of a table. Uses the walks and labels of switch/ and
// runtime/json.h.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/labels.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <cstdio>
#include <iterator>

constexpr size_t COUNTERS = 7;
constexpr size_t NAME_SIZE = 256;

// Counters, in the order of the document, and key names of one direction.
struct DIRECTION_T {
    struct {
        uint32_t number; // of rpcclt_openapiStatGet
        const char *key;
    } counters[COUNTERS];
    uint32_t rateCounter; // bits per second
    const char *bitRateKey, *bandwidthKey, *utilisationKey, *percentKey;
};
static const DIRECTION_T directions[] = {
    // PIO_OUTBOUND
    {{{20, "outOctets"},
      {28, "outUcastPkts"},
      {29, "outMcastPkts"},
      {30, "outBcastPkts"},
      {54, "txError"},
      {49, "outDropPkts"},
      {53, "outTotalPkts"}},
     59,
     "outBitRate",
     "bandwidthUpload",
     "txBwUtil%",
     "percetUtilizationTransmitted"},
    // PIO_INBOUND
    {{{1, "inOctets"},
      {13, "inUcastPkts"},
      {14, "inMcastPkts"},
      {15, "inBcastPkts"},
      {52, "rxError"},
      {50, "inDropPkts"},
      {51, "inTotalPkts"}},
     58,
     "inBitRate",
     "bandwidthDownload",
     "rxBwUtil%",
     "percetUtilizationReceived"},
};

// Bits per second by speed code; 0 where a code has no speed.
static const uint64_t speedBits[] = {
    0,            // 0
    0,            // 1: auto
    100000000,    // 2: half duplex
    100000000,    // 3
    10000000,     // 4: half duplex
    10000000,     // 5
    100000000,    // 6: fibre
    1000000000,   // 7
    2500000000,   // 8
    5000000000,   // 9
    10000000000,  // 10
    20000000000,  // 11
    25000000000,  // 12
    40000000000,  // 13
    50000000000,  // 14
    100000000000, // 15
    0,            // 16: not Ethernet
    200000000000, // 17
    400000000000, // 18
};
constexpr size_t SPEED_CODES = std::size(speedBits);
static_assert(SPEED_CODES == 19, "speed codes 0 to 18");

// What a row says of one interface now; all 0 while its link is down.
struct VALUES_T {
    uint64_t counters[COUNTERS];
    uint64_t rate;        // bits per second
    uint32_t utilisation; // percent of the link speed
};

static bool linkUp(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t state = OPENCLT_LINK_UP;

    return openapiIfLinkStateGet(clientHandle, ifNum, &state) == OPENCLT_OK && state == OPENCLT_LINK_UP;
}

static uint64_t counterGet(CLIENT_HANDLE_T *clientHandle, uint32_t counter, uint32_t ifNum)
{
    uint64_t value = 0;

    return rpcclt_openapiStatGet(clientHandle, counter, ifNum, &value) == OPENCLT_OK ? value : 0;
}

// Percent of the link speed, cut to an integer; 0 without a rate or a known speed.
static uint32_t utilisationGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint64_t rate)
{
    uint32_t speed = 0;

    if (rate == 0 || openapiIfSpeedGet(clientHandle, ifNum, &speed) != OPENCLT_OK)
        return 0;
    if (speed >= SPEED_CODES || speedBits[speed] == 0)
        return 0;
    return static_cast<uint32_t>(rate * 100 / speedBits[speed]);
}

static VALUES_T valuesGet(CLIENT_HANDLE_T *clientHandle, const DIRECTION_T &direction, uint32_t ifNum)
{
    VALUES_T values = {};

    if (!linkUp(clientHandle, ifNum))
        return values;
    for (size_t i = 0; i < COUNTERS; i++)
        values.counters[i] = counterGet(clientHandle, direction.counters[i].number, ifNum);
    values.rate = counterGet(clientHandle, direction.rateCounter, ifNum);
    values.utilisation = utilisationGet(clientHandle, ifNum, values.rate);
    return values;
}

static void rowAdd(CLIENT_HANDLE_T *clientHandle, const DIRECTION_T &direction, uint32_t ifNum, bool isLag, cJSON *rows)
{
    char name[NAME_SIZE] = "";
    char label[PORT_LABEL_SIZE] = "";
    char rate[32];
    openclt_usp_t usp = {1, 0, 0};

    (void)ifNameGet(clientHandle, ifNum, name, sizeof(name)); // stays empty when it fails
    if (!isLag) {
        (void)ifUnitSlotPortGet(clientHandle, ifNum, &usp); // all 0 when it fails
        portLabel(&usp, label);
    }
    VALUES_T values = valuesGet(clientHandle, direction, ifNum);
    snprintf(rate, sizeof(rate), "%.1f", static_cast<double>(values.rate) / 1000000);

    cJSON *row = jsonAppendObject(rows);
    jsonAddNumber(row, "port", ifNum);
    jsonAddNumber(row, "portNum", ifNum);
    jsonAddText(row, "portName", name);
    jsonAddText(row, "displayPort", isLag ? name : label);
    jsonAddNumber(row, "unit", usp.unit);
    for (size_t i = 0; i < COUNTERS; i++)
        jsonAddNumber(row, direction.counters[i].key, static_cast<double>(values.counters[i]));
    jsonAddText(row, direction.bitRateKey, rate);
    jsonAddText(row, direction.bandwidthKey, rate);
    jsonAddNumber(row, direction.utilisationKey, values.utilisation);
    jsonAddNumber(row, direction.percentKey, values.utilisation);
}

static void lagRowsAdd(CLIENT_HANDLE_T *clientHandle, const DIRECTION_T &direction, cJSON *rows)
{
    uint32_t maxMembers = 0;

    // Asked directly: a platform without LAGs is no fault here, so no line is logged for it.
    if (rpcclt_openapiLagMaxMemberCountGet(clientHandle, &maxMembers) != OPENCLT_OK)
        return;
    for (IF_WALK_T lag = ifWalkStart(clientHandle, OPENCLT_IF_LAG); lag.valid; ifWalkNext(&lag)) {
        LAG_MEMBERS_T members;
        int result = lagMembersGet(clientHandle, lag.ifNum, maxMembers, &members);
        if (result == RESULT_NO_MEMORY)
            return;
        if (result == RESULT_OK && members.count > 0)
            rowAdd(clientHandle, direction, lag.ifNum, true, rows);
    }
}

int pioBuildList(CLIENT_HANDLE_T *clientHandle, PIO_DIRECTION direction, char **out)
{
    *out = nullptr;
    OWNED_JSON root(cJSON_CreateObject());
    cJSON *rows = jsonAddArray(root.get(), "rows");
    if (rows == nullptr)
        return RESULT_FAILED;

    for (IF_WALK_T port = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port))
        rowAdd(clientHandle, directions[direction], port.ifNum, false, rows);
    lagRowsAdd(clientHandle, directions[direction], rows);
    jsonAddNumber(root.get(), "total", cJSON_GetArraySize(rows));

    *out = jsonPrint(root.get(), JSON_COMPACT);
    if (*out == nullptr) {
        LOG_ERROR("pioBuildList: print failed\n");
        return RESULT_FAILED;
    }
    return RESULT_OK;
}

int portStatsInboundGet(CLIENT_HANDLE_T *clientHandle, char **out)
{
    if (clientHandle == nullptr || out == nullptr)
        return RESULT_INVALID_ARGUMENT;
    return pioBuildList(clientHandle, PIO_INBOUND, out);
}

int portStatsOutboundGet(CLIENT_HANDLE_T *clientHandle, char **out)
{
    if (clientHandle == nullptr || out == nullptr)
        return RESULT_INVALID_ARGUMENT;
    return pioBuildList(clientHandle, PIO_OUTBOUND, out);
}
