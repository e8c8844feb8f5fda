#include "restcache/monitor.h"

// The REST monitor: start-up documents, then a refresh cycle every 30 seconds. The schedule is a table of 28 items; one
// loop runs those that are due, in the table's order. Most items go through the writeback; direct items are written
// here without a name's lock and are announced by the last item, the change signal.

#include "restcache/builder.h"
#include "restcache/envelope.h"
#include "restcache/store.h"
#include "restcache/store_recovery.h"
#include "restcache/writeback.h"
#include "runtime/clock.h"
#include "runtime/document.h"
#include "runtime/files.h"
#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/osutils.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "runtime/result.h"
#include "runtime/startup.h"
#include "switch/walk.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iterator>
#include <unistd.h>

enum CADENCE_KIND : int {
    CADENCE_WRITEBACK,
    CADENCE_TEXT,       // direct: wrap the builder's text and write it
    CADENCE_WRITES,     // direct: the builder writes its own records
    CADENCE_LINK_WATCH, // "interfaces_status", and "port_vendor_detect" after a port came up
    CADENCE_FIBER,      // writeback when another process has asked for it
    CADENCE_SIGNAL,     // one signal for all direct changes of the cycle
};

// What a direct item needs besides its name.
struct DIRECT_T {
    const char *builder;    // for the "not linked" line
    const char *payloadKey; // CADENCE_TEXT only, like the two below
    const char *caller;     // function name in the failure line
    const char *failure;
};

// One item. It runs in the first cycle, and then in each cycle whose number leaves `phase` when divided by `period`.
struct CADENCE_ITEM_T {
    const char *name;
    CADENCE_KIND kind;
    uint32_t period;
    uint32_t phase;
    DIRECT_T direct;
};

constexpr CADENCE_ITEM_T writebackItem(const char *name, uint32_t period, uint32_t phase)
{
    return {name, CADENCE_WRITEBACK, period, phase, {}};
}
constexpr CADENCE_ITEM_T textItem(const char *name, uint32_t period, uint32_t phase, const DIRECT_T &direct)
{
    return {name, CADENCE_TEXT, period, phase, direct};
}
constexpr CADENCE_ITEM_T writesItem(const char *name, uint32_t period, uint32_t phase, const char *builder)
{
    return {name, CADENCE_WRITES, period, phase, {builder, nullptr, nullptr, nullptr}};
}

constexpr CADENCE_ITEM_T cadenceTable[] = {
    textItem("portStats_outbound_ex", 1, 0,
             {"pioBuildList", "OutPortStatisticsEx", "get_port_outbound_statistics_ex", "Failed"}),
    textItem("portStats_inbound_ex", 1, 0,
             {"pioBuildList", "InPortStatisticsEx", "get_port_inbound_statistics_ex", "Failed"}),
    writebackItem("radius_port_config", 6, 2),
    writebackItem("neighbor_ex", 2, 0),
    writebackItem("special_interface_route", 6, 3),
    writebackItem("sw_lag_cfg_ex", 1, 0),
    writebackItem("device_time", 60, 59),
    writebackItem("system_info", 60, 58),
    writebackItem("device_health", 1, 0),
    writesItem("stacking", 2, 1, "get_stacking_info"),
    writebackItem("multicast_mode_ex", 6, 5),
    writebackItem("profile/list_ex", 6, 4),
    writebackItem("sw_manual_trunk_cfg", 2, 1),
    {"interfaces_status", CADENCE_LINK_WATCH, 1, 0, {}},
    {"fiberOptics", CADENCE_FIBER, 1, 0, {}},
    writebackItem("sw_ptp_cfg", 6, 2),
    writebackItem("sw_auto_trunk_cfg", 2, 1),
    writebackItem("sw_portmirroring", 6, 1),
    writebackItem("sw_auto_lag_cfg", 2, 1),
    writesItem("multicast_groups_ex", 2, 1, "mgeWriteChunks"),
    writebackItem("multicast_block_address", 6, 5),
    writebackItem("scheduleList", 6, 3),
    writebackItem("swcfg_poe", 1, 0),
    textItem("swcfg_poe_info", 1, 0, {"gePoeInfoJson", "poeInfo", "get_poe_info", "Failed to get POE info"}),
    writebackItem("radius_config", 6, 1),
    writebackItem("logging", 6, 5),
    writesItem("bufferedLog", 1, 0, "get_buffered_log"),
    {"change signal", CADENCE_SIGNAL, 1, 0, {}},
};
constexpr size_t CADENCE_COUNT = std::size(cadenceTable);
static_assert(CADENCE_COUNT == 28, "every step of a refresh cycle");

// Written back once, before the first cycle.
static const char *const startDocuments[] = {
    "profile",     "imageInfo", "system_info", "special_interface_route", "swcfg_ports_settings", "port_hardware_info",
    "fiberOptics",
};

constexpr size_t START_DOCUMENTS = std::size(startDocuments);

constexpr char initCompleteText[] =
    "{\"init_complete\": {},\"resp\": {\"respCode\": 0,\"respMsg\": \"Success\",\"status\": \"success\"}}";
static_assert(sizeof(initCompleteText) == 86 + 1, "readers compare it as text");

constexpr uint32_t WATCHED_INTERFACES = 1000;
constexpr uint8_t VENDOR_REPEATS = 2;    // further builds after a port came up: its addresses are learned late
constexpr time_t FIBER_REQUEST_AGE = 60; // seconds
constexpr uint32_t REFRESH_EVENT = 2;
constexpr uint32_t EVENT_MASK = 3;
constexpr uint32_t REFRESH_PERIOD = 30; // ticks

struct MONITOR_STATE_T {
    uint32_t taskId = 0;
    CLIENT_HANDLE_T clientHandle = {};
    uint32_t refreshCycleCount = 0;
    bool hasRun[CADENCE_COUNT] = {};
    unsigned beginnings = 0; // of the cache, when everything was last built
    bool markMissing = false;
    bool startMissing[START_DOCUMENTS] = {}; // start documents that could not be stored
    uint32_t linkState[WATCHED_INTERFACES] = {};
    uint8_t countdown[WATCHED_INTERFACES] = {};
    bool firstScan = true;
};
static MONITOR_STATE_T monitor;

static void eventsServe();
static bool isOurName(const char *name);
static bool isNameOf(const char *name, const char *record);
static void everythingAnew();
static void missingWrite();
static void cacheWatch();
static bool itemDue(size_t index);
static void itemRun(const CADENCE_ITEM_T *item);
static void documentWriteBack(const char *apiName);
static void directTextRun(const CADENCE_ITEM_T *item);
static void directWritesRun(const CADENCE_ITEM_T *item);
static const BUILDER_T *directBuilder(const CADENCE_ITEM_T *item, BUILDER_KIND kind);
static bool linkScan();
static bool linkCameUp(uint32_t ifNum, uint32_t state);
static bool fiberRequested();
static void changeSignal();
static void monitorReset();

static PROCESS_STATE_T monitorState(monitorReset);

void AgentRestMonitor(intptr_t)
{
    if (OsTaskIdSelf(&monitor.taskId) != 0)
        LOG_WARN("not running as a task: no timer event can arrive\n");
    (void)OsTaskInitDone(0); // logs nothing that this task could act upon
    if (initHandler("restApiMonitor", &monitor.clientHandle) < 0) {
        LOG_ERROR("Init clientHandle error\r\n");
        return;
    }
    restDbCheck(isOurName);
    (void)restapi_db_operation(REST_DB_CREATE, nullptr, nullptr); // every later operation reports the same failure
    monitor.beginnings = restDbBeginnings();
    (void)initCompleteWrite(); // logs its own failure; the next cycle tries again
    while (access(PathGet(PATH_VLANINFO_DB), F_OK) != 0)
        ClockSleep(1);
    startDocumentsWrite();
    GetAllRestApiData();
    (void)TmrStart(monitor.taskId, REFRESH_EVENT, REFRESH_PERIOD); // logs its own failure
    eventsServe();
}

void GetAllRestApiData()
{
    LOG_DEBUG("%s() Start\n", __func__);
    monitor.refreshCycleCount++;
    for (size_t i = 0; i < CADENCE_COUNT; i++) {
        if (itemDue(i))
            itemRun(&cadenceTable[i]);
    }
    LOG_DEBUG("%s() End\n", __func__);
}

void monitorRefresh()
{
    cacheWatch();
    GetAllRestApiData();
}

int initCompleteWrite()
{
    unsigned before = restDbNotStored();
    int result = restapi_db_operation(REST_DB_WRITE, "init_complete", initCompleteText);

    monitor.markMissing = restDbNotStored() != before;
    return result;
}

void startDocumentsWrite()
{
    for (bool &missing : monitor.startMissing)
        missing = true;
    missingWrite();
}

const char *cycleItemName(unsigned index)
{
    return index < CADENCE_COUNT ? cadenceTable[index].name : nullptr;
}

void cycleItemRun(unsigned index)
{
    if (index < CADENCE_COUNT)
        itemRun(&cadenceTable[index]);
}

void portLinkWatch()
{
    documentWriteBack("interfaces_status");
    if (linkScan())
        documentWriteBack("port_vendor_detect");
}

uint32_t refreshCycleNumber()
{
    return monitor.refreshCycleCount;
}

struct openclt_handle *monitorClientHandle()
{
    return &monitor.clientHandle;
}

// A cycle per timer event; events that arrive during a cycle have become one. A wait that fails does so at once, so it
// must not be repeated without a pause.
static void eventsServe()
{
    for (;;) {
        uint32_t received = 0;

        if (OsEventWait(monitor.taskId, EVENT_MASK, -1, &received) != 0) {
            ClockSleep(1);
        } else if ((received & REFRESH_EVENT) != 0) {
            monitorRefresh();
        }
    }
}

// What the cache lost is written within this cycle: all of it when the file was removed, replaced or set aside as
// damaged, and what is written only at the start when a full disk or a lock kept it from being stored then.
static void cacheWatch()
{
    (void)restapi_db_operation(REST_DB_CREATE, nullptr, nullptr); // every later operation reports the same failure
    if (restDbBeginnings() != monitor.beginnings)
        everythingAnew();
    if (monitor.markMissing)
        (void)initCompleteWrite();
    missingWrite();
}

static void everythingAnew()
{
    monitor.beginnings = restDbBeginnings();
    LOG_ERROR_AS("cacheWatch", "REST cache %s was begun anew, everything is built again\n", PathGet(PATH_REST_DB));
    monitor.markMissing = true;
    std::fill(std::begin(monitor.startMissing), std::end(monitor.startMissing), true);
    std::fill(std::begin(monitor.hasRun), std::end(monitor.hasRun), false);
    monitor.firstScan = true; // every port that is up counts as having come up
}

// A start document is written until it was stored. One whose build fails is not tried again.
static void missingWrite()
{
    for (size_t i = 0; i < START_DOCUMENTS; i++) {
        unsigned before = restDbNotStored();

        if (!monitor.startMissing[i])
            continue;
        documentWriteBack(startDocuments[i]);
        monitor.startMissing[i] = restDbNotStored() != before;
    }
}

static bool isOurName(const char *record)
{
    if (strcmp(record, "init_complete") == 0)
        return true;
    for (unsigned i = 0; writebackName(i) != nullptr; i++) {
        if (isNameOf(writebackName(i), record))
            return true;
    }
    for (const CADENCE_ITEM_T &item : cadenceTable) {
        if (isNameOf(item.name, record))
            return true;
    }
    return false;
}

// The name itself, or one of its chunks: the name, a slash and digits.
static bool isNameOf(const char *name, const char *record)
{
    size_t length = strlen(name);

    if (strncmp(record, name, length) != 0)
        return false;
    const char *rest = record + length;
    return rest[0] == '\0' || (rest[0] == '/' && rest[1] != '\0' && rest[1 + strspn(rest + 1, "0123456789")] == '\0');
}

static bool itemDue(size_t index)
{
    const CADENCE_ITEM_T *item = &cadenceTable[index];
    bool first = !monitor.hasRun[index];

    monitor.hasRun[index] = true;
    return first || monitor.refreshCycleCount % item->period == item->phase;
}

static void itemRun(const CADENCE_ITEM_T *item)
{
    switch (item->kind) {
    case CADENCE_WRITEBACK:
        documentWriteBack(item->name);
        break;
    case CADENCE_TEXT:
        directTextRun(item);
        break;
    case CADENCE_WRITES:
        directWritesRun(item);
        break;
    case CADENCE_LINK_WATCH:
        portLinkWatch();
        break;
    case CADENCE_FIBER:
        if (fiberRequested())
            documentWriteBack(item->name);
        break;
    case CADENCE_SIGNAL:
        changeSignal();
        break;
    }
}

static void documentWriteBack(const char *apiName)
{
    (void)rest_db_writeback(&monitor.clientHandle, apiName); // logs its own failures; none stops the cycle
}

static void directTextRun(const CADENCE_ITEM_T *item)
{
    const BUILDER_T *builder = directBuilder(item, BUILDER_TEXT);
    char *text = nullptr;

    if (builder == nullptr)
        return;
    jsonBuildBegin();
    documentSet(item->name);
    int result = builder->text(&monitor.clientHandle, &text);
    documentSet(nullptr);
    if (result != RESULT_OK || text == nullptr)
        LOG_ERROR_AS(item->direct.caller, "%s: %s, result=%d\n", item->direct.caller, item->direct.failure, result);
    else if (responseJsonRreallocStr(RESULT_OK, item->direct.payloadKey, text, &text) == RESULT_OK)
        (void)restapi_db_operation(REST_DB_WRITE, item->name, text); // logs its own failure
    free(text);
}

static void directWritesRun(const CADENCE_ITEM_T *item)
{
    const BUILDER_T *builder = directBuilder(item, BUILDER_WRITES);

    if (builder == nullptr)
        return;
    jsonBuildBegin();
    documentSet(item->name);
    (void)builder->writes(&monitor.clientHandle); // logs its own failures
    documentSet(nullptr);
}

static const BUILDER_T *directBuilder(const CADENCE_ITEM_T *item, BUILDER_KIND kind)
{
    const BUILDER_T *builder = builderFind(item->name, kind);

    if (builder == nullptr)
        LOG_ERROR_AS("GetAllRestApiData", "%s: %s not linked\n", item->name, item->direct.builder);
    return builder;
}

// Look at every port's link. True when the vendors are to be detected anew: a port came up in this scan or in one of
// the two before it.
static bool linkScan()
{
    bool changed = false;

    for (IF_WALK_T port = ifWalkStart(&monitor.clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port)) {
        uint32_t state = OPENCLT_LINK_DOWN;

        if (port.ifNum >= WATCHED_INTERFACES ||
            openapiIfLinkStateGet(&monitor.clientHandle, port.ifNum, &state) != OPENCLT_OK)
            continue;
        changed |= linkCameUp(port.ifNum, state);
        monitor.linkState[port.ifNum] = state;
    }
    monitor.firstScan = false;
    return changed;
}

static bool linkCameUp(uint32_t ifNum, uint32_t state)
{
    uint8_t *countdown = &monitor.countdown[ifNum];

    if (state != OPENCLT_LINK_UP) {
        *countdown = 0;
        return false;
    }
    if (monitor.firstScan || monitor.linkState[ifNum] != OPENCLT_LINK_UP) {
        *countdown = VENDOR_REPEATS;
        return true;
    }
    if (*countdown == 0)
        return false;
    (*countdown)--;
    return true;
}

// Another process leaves the time of its request in seconds; a request counts for a minute, one in the future never.
static bool fiberRequested()
{
    char text[64];
    char *end = nullptr;
    time_t now = ClockSeconds();
    OWNED_FILE request(fileOpenRead(PathGet(PATH_FIBER_REQUEST)));

    if (request == nullptr)
        return false;
    text[fread(text, 1, sizeof(text) - 1, request.get())] = '\0';
    long stamp = strtol(text, &end, 10);
    return end != text && stamp <= now && stamp >= now - FIBER_REQUEST_AGE;
}

static void changeSignal()
{
    if (restDbChanged == 0)
        return;
    send_signal_to_ws();
    restDbChanged = 0;
}

static void monitorReset()
{
    monitor = MONITOR_STATE_T();
}
