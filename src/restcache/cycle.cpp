#include "restcache/cycle.h"

// A loop over the table and what must be known of each row between two cycles. Whether a row is due is
// a question that changes nothing.

#include "restcache/account_file.h"
#include "restcache/link_watch.h"
#include "restcache/notify.h"
#include "restcache/run.h"
#include "restcache/store.h"
#include "runtime/account.h"
#include "runtime/clock.h"
#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "runtime/result.h"
#include "runtime/service.h"

#include <cstdio>

constexpr char initCompleteText[] =
    "{\"init_complete\": {},\"resp\": {\"respCode\": 0,\"respMsg\": \"Success\",\"status\": \"success\"}}";
static_assert(sizeof(initCompleteText) == 86 + 1, "readers compare it as text");

constexpr time_t REQUEST_AGE = 60; // seconds that a request counts

struct ROW_STATE_T {
    bool hasRun = false;      // in a cycle, since the cache was begun
    bool startMissing = true; // to be written at the start, and not stored yet
};

struct CYCLE_STATE_T {
    CLIENT_HANDLE_T clientHandle = {};
    uint32_t number = 0;
    unsigned beginnings = 0; // of the cache, when everything was last built
    ROW_STATE_T rows[DOCUMENTS_MAX];
};
static CYCLE_STATE_T cycle;

static void cycleReset()
{
    cycle = CYCLE_STATE_T();
}
static PROCESS_STATE_T cycleState(cycleReset);

static ROW_STATE_T *stateOf(const DOCUMENT_T &row)
{
    return &cycle.rows[&row - documentTable().begin()];
}

// A row is written until it was stored. One whose build fails is not tried again.
static void startRowsWrite(unsigned first, unsigned last)
{
    for (unsigned place = first; place <= last; place++) {
        for (const DOCUMENT_T &row : documentTable()) {
            bool *missing = &stateOf(row)->startMissing;
            unsigned before = restDbNotStored();

            if (row.start != place || !*missing)
                continue;
            (void)rowRun(&cycle.clientHandle, row); // logs its own failures
            *missing = restDbNotStored() != before;
        }
    }
}

// The name of a document, or of one of its chunks: the name, a slash and digits.
static bool isOurName(const char *record)
{
    std::string_view name = record;
    size_t slash = name.rfind('/');

    if (documentFind(name) != nullptr)
        return true;
    return slash != std::string_view::npos && slash + 1 < name.size() &&
           name.find_first_not_of("0123456789", slash + 1) == std::string_view::npos &&
           documentFind(name.substr(0, slash)) != nullptr;
}

void cacheBegin()
{
    restDbCheck(isOurName);
    (void)restapi_db_operation(REST_DB_CREATE, nullptr, nullptr); // every later operation reports the same failure
    cycle.beginnings = restDbBeginnings();
    accountCacheBegun();
    startRowsWrite(START_MARK, START_MARK);
}

int initCompleteWrite(CLIENT_HANDLE_T *)
{
    (void)restapi_db_operation(REST_DB_WRITE, "init_complete", initCompleteText); // the next cycle tries again
    return RESULT_OK;
}

void startDocumentsWrite()
{
    startRowsWrite(START_MARK + 1, DOCUMENTS_MAX);
}

// Another process leaves the time of its request in seconds; a request counts for a minute, one in the future never.
static bool isRequested()
{
    char text[64];
    char *end = nullptr;
    time_t now = ClockSeconds();
    OWNED_FILE request(fileOpenRead(PathGet(PATH_FIBER_REQUEST)));

    if (request == nullptr)
        return false;
    text[fread(text, 1, sizeof(text) - 1, request.get())] = '\0';
    long stamp = strtol(text, &end, 10);
    return end != text && stamp <= now && stamp >= now - REQUEST_AGE;
}

static bool isDue(const DOCUMENT_T &row)
{
    return documentIsInCycle(row) && (!stateOf(row)->hasRun || cycle.number % row.due.period == row.due.phase);
}

// Cycles from this one to the next in which a row is due.
static int cyclesToDue(const DOCUMENT_T &row)
{
    if (row.due.kind != DUE_CYCLES && row.due.kind != DUE_LINK_WATCH)
        return ACCOUNT_NOT_DUE;
    uint32_t beyond = (cycle.number + row.due.period - row.due.phase) % row.due.period; // the last one in which it was
    return static_cast<int>(row.due.period - beyond);
}

static void cycleAccount()
{
    char status[64];

    for (const DOCUMENT_T &row : documentTable())
        accountDocumentDue(row.name, cyclesToDue(row));
    accountCycleEnd();
    accountFileWrite();
    snprintf(status, sizeof(status), "cycle %u has ended; documents that fail: %u", cycle.number, accountFailing());
    serviceStatus(status);
}

static void rowsRun(DUE_KIND kind)
{
    for (const DOCUMENT_T &row : documentTable()) {
        if (row.due.kind == kind)
            (void)rowRun(&cycle.clientHandle, row); // logs its own failures; none stops the cycle
    }
}

void portLinkWatch()
{
    rowsRun(DUE_LINK_WATCH);
    if (linkWatch(&cycle.clientHandle))
        rowsRun(DUE_PORT_UP);
}

void cycleRow(const DOCUMENT_T &row)
{
    if (row.due.kind == DUE_LINK_WATCH)
        portLinkWatch();
    else if (row.due.kind != DUE_REQUEST || isRequested())
        (void)rowRun(&cycle.clientHandle, row); // logs its own failures; none stops the cycle
}

void GetAllRestApiData()
{
    LOG_DEBUG("%s() Start\n", __func__);
    cycle.number++;
    accountCycleBegin(cycle.number);
    for (const DOCUMENT_T &row : documentTable()) {
        if (!isDue(row))
            continue;
        stateOf(row)->hasRun = true;
        cycleRow(row);
    }
    changesSignal();
    cycleAccount();
    LOG_DEBUG("%s() End\n", __func__);
}

void monitorRefresh()
{
    (void)restapi_db_operation(REST_DB_CREATE, nullptr, nullptr); // every later operation reports the same failure
    if (restDbBeginnings() != cycle.beginnings) {
        cycle.beginnings = restDbBeginnings();
        LOG_ERROR_AS("cacheWatch", "REST cache %s was begun anew, everything is built again\n", PathGet(PATH_REST_DB));
        for (ROW_STATE_T &row : cycle.rows)
            row = ROW_STATE_T();
        linkWatchRestart();
        accountCacheBegun();
    }
    startRowsWrite(START_MARK, DOCUMENTS_MAX);
    GetAllRestApiData();
}

uint32_t refreshCycleNumber()
{
    return cycle.number;
}

CLIENT_HANDLE_T *monitorClientHandle()
{
    return &cycle.clientHandle;
}
