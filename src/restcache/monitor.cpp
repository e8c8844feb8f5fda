#include "restcache/monitor.h"

#include "restcache/cycle.h"
#include "runtime/clock.h"
#include "runtime/log.h"
#include "runtime/osutils.h"
#include "runtime/paths.h"
#include "runtime/startup.h"

#include <unistd.h>

constexpr uint32_t REFRESH_EVENT = 2;
constexpr uint32_t EVENT_MASK = 3;

void AgentRestMonitor(intptr_t)
{
    uint32_t taskId = 0;

    if (OsTaskIdSelf(&taskId) != 0)
        LOG_WARN("not running as a task: no timer event can arrive\n");
    (void)OsTaskInitDone(0); // logs nothing that this task could act upon
    if (initHandler("restApiMonitor", monitorClientHandle()) < 0) {
        LOG_ERROR("Init clientHandle error\r\n");
        return;
    }
    cacheBegin();
    while (access(PathGet(PATH_VLANINFO_DB), F_OK) != 0)
        ClockSleep(1);
    startDocumentsWrite();
    GetAllRestApiData();
    (void)TmrStart(taskId, REFRESH_EVENT, REFRESH_PERIOD); // logs its own failure
    for (;;) {                                             // events that arrive during a cycle have become one
        uint32_t received = 0;

        if (OsEventWait(taskId, EVENT_MASK, -1, &received) != 0)
            ClockSleep(1); // it failed at once, and would again
        else if ((received & REFRESH_EVENT) != 0)
            monitorRefresh();
    }
}
