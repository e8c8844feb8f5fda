// startup.cpp - brings the process up: allocator, logging, OS routines, then the tasks, one after the other.
//
// The order of the task table is relied on: the timer task has made the timer list's lock before a later task arms a
// timer. A task reports through OsTaskInitDone; its give and our take of "SEQ" order the flag between the two threads.
#include "runtime/startup.h"

#include "runtime/account.h"
#include "runtime/clock.h"
#include "runtime/log.h"
#include "runtime/ownfile.h"
#include "runtime/paths.h"
#include "runtime/scratch.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <malloc.h>
#include <sys/file.h>
#include <sys/stat.h>

enum TASK_INIT_STATUS : int { TASK_NOT_REPORTED = 0, TASK_INITIALISED = 1, TASK_FAILED = 2 };

constexpr int SYSLOG_FACILITY_USER = 8;

static void allocatorTune();
static void processGuard();
static bool alone();
static int tasksStart(const DM_TASK_T *table);

static OS_SEM sequenceSemaphore = nullptr; // "SEQ"
static int taskInitStatus = TASK_NOT_REPORTED;
static int runLock = -1;

int DmInit(const DM_TASK_T *table)
{
    allocatorTune();
    processGuard();
    LogInit(LOG_OPTION_FILE, SYSLOG_FACILITY_USER, "kelo_cgi");
    if (!alone())
        return -1;
    scratchFilesSweep();
    int result = -1;
    if (OsInit() != 0)
        LOG_ERROR("Could not initialize OS routines for devmgr");
    else if (OsSemCreate("SEQ", 0, &sequenceSemaphore) != 0)
        LOG_ERROR("Could not initialize sequence semaphore\n");
    else
        result = tasksStart(table);
    if (result != 0)
        LOG_ERROR_AS("main", "Failed to initialize orbit agent daemon \n");
    else
        LOG_INFO("Successfully initialized orbit agent daemon\n");
    return result;
}

int DmMain(const DM_TASK_T *table)
{
    if (DmInit(table) != 0)
        return 1;
    for (;;)
        ClockSleep(3);
}

int OsTaskInitDone(int failed)
{
    taskInitStatus = failed != 0 ? TASK_FAILED : TASK_INITIALISED;
    return OsSemGive(sequenceSemaphore);
}

void TmrTask(intptr_t argument)
{
    (void)argument; // the table passes none
    if (TmrListInit() != 0) {
        (void)OsTaskInitDone(1); // start-up ends the process
        return;
    }
    (void)OsTaskInitDone(0); // without the semaphore start-up would not have come here
    for (;;) {
        ClockSleep(1);
        TmrTick();
        lockWaitTick();
        accountTick();
    }
}

// One arena for all threads, no trimming, blocks up to 8 MiB from the heap: the steady state is reached in the first
// cycles and nothing is given back and fetched again after that.
static void allocatorTune()
{
    // a setting that an allocator does not know costs memory, not correctness
    (void)mallopt(M_ARENA_MAX, 1);
    (void)mallopt(M_TRIM_THRESHOLD, -1);
    (void)mallopt(M_MMAP_THRESHOLD, 8388608);
}

// A full disk or a reader that went away fails a write, which is handled where it is written; nothing that is made here
// is writable for others.
static void processGuard()
{
    (void)signal(SIGXFSZ, SIG_IGN);
    (void)signal(SIGPIPE, SIG_IGN);
    (void)umask(umask(0) | S_IWGRP | S_IWOTH);
}

// Two daemons on one root would take each other's output files of show commands. Held to the end of the process.
static bool alone()
{
    const char *path = PathGet(PATH_RUN_LOCK);
    char folder[PATH_OUTPUT_SIZE];

    snprintf(folder, sizeof(folder), "%.*s", static_cast<int>(strrchr(path, '/') - path), path);
    (void)mkdir(folder, 0755); // it is there, but for a fresh root
    runLock = lockFileOpen(path);
    if (runLock >= 0 && flock(runLock, LOCK_EX | LOCK_NB) == 0)
        return true;
    if (runLock >= 0 && errno == EWOULDBLOCK) {
        LOG_ERROR_AS("DmInit", "Another devmgr holds %s\n", path);
        fprintf(stderr, "devmgr: another devmgr holds %s\n", path);
        return false;
    }
    LOG_ERROR_AS("DmInit", "Cannot lock %s: %s\n", path, strerror(errno));
    return true; // the cache is worth more than the guard
}

static int tasksStart(const DM_TASK_T *table)
{
    for (const DM_TASK_T *row = table; row->entry != nullptr; row++) {
        uint32_t taskId = 0;
        taskInitStatus = TASK_NOT_REPORTED;
        if (OsTaskCreate(row->name, row->entry, row->argument, &taskId) != 0 || OsSemTake(sequenceSemaphore) != 0 ||
            taskInitStatus != TASK_INITIALISED) {
            LOG_ERROR_AS("DmInit", "Task Init Failed for <%s> \n", row->name);
            return -1;
        }
        LOG_INFO_AS("DmInit", "Successfully created thread <%s>\n", row->name);
    }
    return 0;
}
