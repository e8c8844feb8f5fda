// osutils.h - a small, fixed world of named tasks, named semaphores, per-task event bits and one-second timers over
// POSIX threads, and the process's signal policy.
//
// At most 3 tasks (ids 1 to 3) and 5 semaphores exist at once. All operations return 0 or -1 unless stated.
#pragma once

#include <cstdint>
#include <semaphore.h>

using OS_TASK_ENTRY = void (*)(intptr_t argument);
using OS_SEM = sem_t *;

// Initialise the registries and install the signal policy (OsSignalHandler for SIGSEGV, SIGQUIT, SIGHUP, SIGTERM).
[[nodiscard]] int OsInit();

// SIGSEGV becomes SIGABRT; SIGHUP, SIGQUIT and SIGTERM end the process at once with status 2; others are ignored.
void OsSignalHandler(int signalNumber);

// Create a named task (7 characters of the name count) that runs entry(argument). *taskId is set to its id, or, when a
// task of that name exists, to that one's id with result -1. An empty name is refused.
[[nodiscard]] int OsTaskCreate(const char *name, OS_TASK_ENTRY entry, intptr_t argument, uint32_t *taskId);

// End a task and free its slot. Deleting oneself does not return; another task is cancelled and joined first (a
// cancelled OsEventWait lets go of its lock). -1 for an id that has no running task, or whose task is being ended
// already.
int OsTaskDelete(uint32_t taskId);

// Id of the calling task; -1 for a thread that is none, *taskId untouched.
[[nodiscard]] int OsTaskIdSelf(uint32_t *taskId);

// Create a named counting semaphore (4 characters of the name count), available once when initialState is 1. When one
// of that name exists, *sem is that one and the result is -1. An empty name is refused.
[[nodiscard]] int OsSemCreate(const char *name, int initialState, OS_SEM *sem);
int OsSemGive(OS_SEM sem);
[[nodiscard]] int OsSemTake(OS_SEM sem); // waits without limit; an interrupted wait goes on
int OsSemDelete(OS_SEM sem);
int OsSemDeleteByName(const char *name);

// Add bits to a task's pending events and wake it. -1 for an id outside 1 to 3.
int OsEventSend(uint32_t taskId, uint32_t bits);

// Wait until any bit of the mask is pending, take those, leave the others. The time limit is ignored. -1 (at once) only
// for an id outside 1 to 3.
int OsEventWait(uint32_t taskId, uint32_t mask, int timeLimit, uint32_t *received);

// Timers. The list's lock is made by the timer task (TmrListInit) before any task arms one.
[[nodiscard]] int TmrListInit();
int TmrStart(uint32_t taskId, uint32_t eventBits, uint32_t period); // periodic, in ticks
int TmrStop(uint32_t taskId, uint32_t eventBits);
void TmrTick();
