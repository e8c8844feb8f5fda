// startup.h - the start-up sequence: tasks of a table, one after the other, each waited for.
#pragma once

#include "runtime/osutils.h"

// One row of a task table; a row without an entry ends the table.
struct DM_TASK_T {
    const char *name; // at most 7 characters, also the thread's name
    OS_TASK_ENTRY entry;
    intptr_t argument;
};

// Allocator settings, logging, OS routines, the "SEQ" semaphore, then the tasks of the table. 0 when every task has
// reported success, -1 (with the failure lines logged) otherwise.
[[nodiscard]] int DmInit(const DM_TASK_T *table);

// What main does after its options: DmInit, then idle for ever. Returns 1 when start-up failed, else never.
int DmMain(const DM_TASK_T *table);

// Called exactly once by every task entry, early: reports whether the task initialised (failed = 0) and lets start-up
// go on.
int OsTaskInitDone(int failed);

// Entry of the timer task: makes the timer list's lock, then ticks once a second.
void TmrTask(intptr_t argument);
