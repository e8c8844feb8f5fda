#include "restcache/monitor.h"

#include "restcache/cycle.h"
#include "runtime/account.h"
#include "runtime/clock.h"
#include "runtime/log.h"
#include "runtime/osutils.h"
#include "runtime/paths.h"
#include "runtime/service.h"
#include "runtime/startup.h"

#include <cstdio>
#include <unistd.h>

constexpr uint32_t REFRESH_EVENT = 2;
constexpr uint32_t EVENT_MASK = 3;

// When a document is due, in words.
static const char *dueWords(const DOCUMENT_T &row)
{
    static char words[DOCUMENTS_MAX][24];
    char *text = words[&row - documentTable().begin()];

    if (row.due.kind == DUE_CYCLES && row.due.period > 1)
        snprintf(text, sizeof(words[0]), "every %u cycles", row.due.period);
    else if (row.due.kind == DUE_CYCLES || row.due.kind == DUE_LINK_WATCH)
        return "every cycle";
    else if (row.due.kind == DUE_PORT_UP)
        return "after a port came up";
    else
        return row.start != 0 && row.due.kind == DUE_IN_NO_CYCLE ? "at the start" : "when asked for";
    return text;
}

static void documentsAccount()
{
    for (const DOCUMENT_T &row : documentTable()) {
        if (row.start != START_MARK)
            accountDocumentAdd(row.name, dueWords(row));
    }
}

// For the account and for the service manager.
static void doing(ACCOUNT_DOING what, const char *name)
{
    ACCOUNT_TELL_T tell;

    accountDoing(what, name);
    accountTell(&tell);
    serviceStatus(tell.text);
}

void AgentRestMonitor(intptr_t)
{
    uint32_t taskId = 0;

    if (OsTaskIdSelf(&taskId) != 0)
        LOG_WARN("not running as a task: no timer event can arrive\n");
    (void)OsTaskInitDone(0); // logs nothing that this task could act upon
    documentsAccount();
    doing(ACCOUNT_REGISTERING, nullptr);
    if (initHandler("restApiMonitor", monitorClientHandle()) < 0) {
        LOG_ERROR("Init clientHandle error\r\n");
        doing(ACCOUNT_REFUSED, nullptr);
        return;
    }
    cacheBegin();
    serviceReady();
    if (access(PathGet(PATH_VLANINFO_DB), F_OK) != 0)
        doing(ACCOUNT_FILE_WAIT, PathGet(PATH_VLANINFO_DB));
    while (access(PathGet(PATH_VLANINFO_DB), F_OK) != 0)
        ClockSleep(1);
    startDocumentsWrite();
    GetAllRestApiData();
    (void)TmrStart(taskId, REFRESH_EVENT, REFRESH_PERIOD); // logs its own failure
    for (;;) {                                             // events that arrive during a cycle have become one
        uint32_t received = 0;

        serviceAlive();
        if (OsEventWait(taskId, EVENT_MASK, -1, &received) != 0)
            ClockSleep(1); // it failed at once, and would again
        else if ((received & REFRESH_EVENT) != 0)
            monitorRefresh();
    }
}
