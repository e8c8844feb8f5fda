// osutils.cpp - tasks, semaphores, event bits and timers over POSIX threads, and the signal policy.
//
// Everything is a fixed array in one record; only timer nodes are allocated. Slot 0 of each registry is never handed
// out, so that an id of 0 means none. The locks of a task slot live as long as the process: a timer may still send to a
// task that has just ended, and must find a lock there.
// Order of locks: timer list before event lock, start gate before registry lock; never registry and event lock
// together. No section under a lock contains a cancellation point, except the wait of OsEventWait, which gives its lock
// back.
#include "runtime/osutils.h"

#include "runtime/log.h"
#include "runtime/process_state.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <pthread.h>
#include <unistd.h>

namespace {

constexpr uint32_t TASK_SLOTS = 4;
constexpr uint32_t SEM_SLOTS = 6;
constexpr size_t NAME_SIZE = 8;
constexpr size_t TASK_NAME_LENGTH = 7;
constexpr size_t SEM_NAME_LENGTH = 4;

struct OS_TASK_SLOT_T {
    pthread_t thread; // 0 when free
    intptr_t argument;
    pthread_mutex_t startGate = PTHREAD_MUTEX_INITIALIZER; // held by the creator until the thread is named
    pthread_cond_t eventCondition = PTHREAD_COND_INITIALIZER;
    pthread_mutex_t eventLock = PTHREAD_MUTEX_INITIALIZER;
    uint32_t eventBits; // pending
    OS_TASK_ENTRY entry;
    char name[NAME_SIZE];
    bool inUse;
    bool joining; // another task is ending this one and will free the slot
};

struct OS_SEM_SLOT_T {
    sem_t semaphore;
    bool inUse;
    char name[NAME_SIZE];
};

struct TMR_NODE_T {
    TMR_NODE_T *next;
    uint32_t taskId;
    uint32_t eventBits;
    uint32_t period;    // ticks
    uint32_t countdown; // ticks left until it fires
};

struct OS_STATE_T {
    pthread_mutex_t registryLock = PTHREAD_MUTEX_INITIALIZER;
    OS_TASK_SLOT_T tasks[TASK_SLOTS];
    OS_SEM_SLOT_T semaphores[SEM_SLOTS];
    pthread_mutex_t timerLock = PTHREAD_MUTEX_INITIALIZER;
    TMR_NODE_T *timers;
    struct sigaction action;
};
OS_STATE_T osState;

class LOCKED_T {
public:
    explicit LOCKED_T(pthread_mutex_t *taken) : mutex(taken)
    {
        pthread_mutex_lock(mutex);
    }
    ~LOCKED_T()
    {
        pthread_mutex_unlock(mutex);
    }
    LOCKED_T(const LOCKED_T &) = delete;
    LOCKED_T &operator=(const LOCKED_T &) = delete;

private:
    pthread_mutex_t *mutex;
};

void signalPolicyInstall();
int taskSlotClaim(const char *name, uint32_t *taskId);
void taskSlotFree(OS_TASK_SLOT_T *slot);
void *taskRun(void *argument);
[[noreturn]] void taskEndSelf(OS_TASK_SLOT_T *slot);
bool taskIdValid(uint32_t taskId);
void eventUnlock(void *lock);
void semSlotFree(OS_SEM_SLOT_T *slot);
void nameMake(char *out, const char *name, size_t length);
void timersFree();

// Running tasks are not reset: a test ends its own.
PROCESS_STATE_T timersState(timersFree);

} // namespace

int OsInit()
{
    if (pthread_mutex_init(&osState.registryLock, nullptr) != 0)
        return -1;
    for (OS_TASK_SLOT_T &slot : osState.tasks) {
        {
            LOCKED_T events(&slot.eventLock);
            slot.eventBits = 0;
        }
        LOCKED_T registry(&osState.registryLock);
        taskSlotFree(&slot);
    }
    for (OS_SEM_SLOT_T &slot : osState.semaphores) {
        LOCKED_T registry(&osState.registryLock);
        semSlotFree(&slot);
    }
    signalPolicyInstall();
    return 0;
}

void OsSignalHandler(int signalNumber)
{
    if (signalNumber == SIGSEGV)
        raise(SIGABRT);
    else if (signalNumber == SIGHUP || signalNumber == SIGQUIT || signalNumber == SIGTERM)
        _exit(2);
}

int OsTaskCreate(const char *name, OS_TASK_ENTRY entry, intptr_t argument, uint32_t *taskId)
{
    char shortName[NAME_SIZE];
    nameMake(shortName, name, TASK_NAME_LENGTH);
    if (taskSlotClaim(shortName, taskId) != 0)
        return -1;
    OS_TASK_SLOT_T *slot = &osState.tasks[*taskId];
    {
        LOCKED_T events(&slot->eventLock);
        slot->eventBits = 0;
    }
    slot->argument = argument;
    slot->entry = entry;
    LOCKED_T gate(&slot->startGate);
    pthread_t thread = 0;
    int result = pthread_create(&thread, nullptr, taskRun, slot);
    LOCKED_T registry(&osState.registryLock);
    if (result != 0) {
        taskSlotFree(slot);
        return -1;
    }
    slot->thread = thread;
    (void)pthread_setname_np(thread, shortName); // only a help for whoever looks at the process
    return 0;
}

int OsTaskDelete(uint32_t taskId)
{
    if (!taskIdValid(taskId))
        return -1;
    OS_TASK_SLOT_T *slot = &osState.tasks[taskId];
    pthread_t thread = 0;
    bool self = false;
    {
        LOCKED_T registry(&osState.registryLock);
        thread = slot->thread;
        self = thread != 0 && pthread_equal(thread, pthread_self());
        if (!self) {
            if (thread == 0 || slot->joining)
                return -1;
            slot->joining = true;
        }
    }
    if (self)
        taskEndSelf(slot);
    pthread_cancel(thread);
    pthread_join(thread, nullptr);
    LOCKED_T registry(&osState.registryLock);
    taskSlotFree(slot);
    return 0;
}

int OsTaskIdSelf(uint32_t *taskId)
{
    LOCKED_T registry(&osState.registryLock);
    for (uint32_t id = 1; id < TASK_SLOTS; id++) {
        if (osState.tasks[id].inUse && pthread_equal(osState.tasks[id].thread, pthread_self())) {
            *taskId = id;
            return 0;
        }
    }
    return -1;
}

int OsSemCreate(const char *name, int initialState, OS_SEM *sem)
{
    char shortName[NAME_SIZE];
    nameMake(shortName, name, SEM_NAME_LENGTH);
    if (shortName[0] == '\0')
        return -1;
    LOCKED_T registry(&osState.registryLock);
    OS_SEM_SLOT_T *unused = nullptr;
    for (uint32_t i = SEM_SLOTS - 1; i >= 1; i--) {
        OS_SEM_SLOT_T *slot = &osState.semaphores[i];
        if (slot->inUse && memcmp(slot->name, shortName, NAME_SIZE) == 0) {
            *sem = &slot->semaphore;
            return -1;
        }
        if (!slot->inUse)
            unused = slot;
    }
    if (unused == nullptr || sem_init(&unused->semaphore, 0, 0) != 0)
        return -1;
    unused->inUse = true;
    memcpy(unused->name, shortName, NAME_SIZE);
    *sem = &unused->semaphore;
    return initialState == 1 ? OsSemGive(*sem) : 0;
}

int OsSemGive(OS_SEM sem)
{
    return sem != nullptr && sem_post(sem) == 0 ? 0 : -1;
}

int OsSemTake(OS_SEM sem)
{
    if (sem == nullptr)
        return -1;
    while (sem_wait(sem) != 0) {
        if (errno != EINTR) {
            LOG_ERROR("assertion failed: sem_wait: %s\n", strerror(errno));
            abort();
        }
    }
    return 0;
}

int OsSemDelete(OS_SEM sem)
{
    LOCKED_T registry(&osState.registryLock);
    for (uint32_t i = 1; i < SEM_SLOTS; i++) {
        OS_SEM_SLOT_T *slot = &osState.semaphores[i];
        if (slot->inUse && &slot->semaphore == sem) {
            semSlotFree(slot);
            return sem_destroy(sem);
        }
    }
    return -1;
}

int OsSemDeleteByName(const char *name)
{
    char shortName[NAME_SIZE];
    nameMake(shortName, name, SEM_NAME_LENGTH);
    OS_SEM sem = nullptr;
    {
        LOCKED_T registry(&osState.registryLock);
        for (uint32_t i = 1; i < SEM_SLOTS; i++) {
            OS_SEM_SLOT_T *slot = &osState.semaphores[i];
            if (slot->inUse && memcmp(slot->name, shortName, NAME_SIZE) == 0)
                sem = &slot->semaphore;
        }
    }
    return OsSemDelete(sem);
}

int OsEventSend(uint32_t taskId, uint32_t bits)
{
    if (!taskIdValid(taskId))
        return -1;
    OS_TASK_SLOT_T *slot = &osState.tasks[taskId];
    LOCKED_T events(&slot->eventLock);
    slot->eventBits |= bits;
    pthread_cond_signal(&slot->eventCondition);
    return 0;
}

int OsEventWait(uint32_t taskId, uint32_t mask, int timeLimit, uint32_t *received)
{
    (void)timeLimit; // there is none
    *received = 0;
    if (!taskIdValid(taskId))
        return -1;
    OS_TASK_SLOT_T *slot = &osState.tasks[taskId];
    pthread_mutex_lock(&slot->eventLock);
    pthread_cleanup_push(eventUnlock, &slot->eventLock);
    while ((slot->eventBits & mask) == 0)
        pthread_cond_wait(&slot->eventCondition, &slot->eventLock);
    *received = slot->eventBits & mask;
    slot->eventBits &= ~mask;
    pthread_cleanup_pop(1);
    return 0;
}

int TmrListInit()
{
    return pthread_mutex_init(&osState.timerLock, nullptr) == 0 ? 0 : -1;
}

int TmrStart(uint32_t taskId, uint32_t eventBits, uint32_t period)
{
    TMR_NODE_T *node = static_cast<TMR_NODE_T *>(calloc(1, sizeof(TMR_NODE_T)));
    if (node == nullptr) {
        LOG_ERROR("Failed to create timer node fortask:%d and event:%d\n", taskId, eventBits);
        return -1;
    }
    node->taskId = taskId;
    node->eventBits = eventBits;
    node->period = period;
    node->countdown = period;
    {
        LOCKED_T list(&osState.timerLock);
        TMR_NODE_T **tail = &osState.timers;
        while (*tail != nullptr)
            tail = &(*tail)->next;
        *tail = node;
    }
    LOG_DEBUG("Successfully created timer node for task:%d event:%d\n", taskId, eventBits);
    return 0;
}

int TmrStop(uint32_t taskId, uint32_t eventBits)
{
    bool empty = false;
    TMR_NODE_T *found = nullptr;
    {
        LOCKED_T list(&osState.timerLock);
        empty = osState.timers == nullptr;
        TMR_NODE_T **link = &osState.timers;
        while (*link != nullptr && ((*link)->taskId != taskId || (*link)->eventBits != eventBits))
            link = &(*link)->next;
        found = *link;
        if (found != nullptr)
            *link = found->next;
    }
    if (found == nullptr) {
        if (empty)
            LOG_ERROR("Failed to delete! Timer list is empty!\n");
        else
            LOG_ERROR("Could not find timer node for task:%d event:%d\n", taskId, eventBits);
        return -1;
    }
    free(found);
    return 0;
}

void TmrTick()
{
    LOCKED_T list(&osState.timerLock);
    for (TMR_NODE_T *node = osState.timers; node != nullptr; node = node->next) {
        if (node->countdown != 0 && --node->countdown != 0)
            continue;
        (void)OsEventSend(node->taskId, node->eventBits); // a timer of a task that cannot be has nobody to tell
        node->countdown = node->period;
    }
}

namespace {

void signalPolicyInstall()
{
    memset(&osState.action, 0, sizeof(osState.action));
    osState.action.sa_handler = OsSignalHandler;
    sigemptyset(&osState.action.sa_mask);
    for (int signalNumber : {SIGSEGV, SIGQUIT, SIGHUP, SIGTERM})
        (void)sigaction(signalNumber, &osState.action, nullptr); // fails for unknown signals only
}

// Take a free slot for a name, or give the id of the task that has it already, with -1.
int taskSlotClaim(const char *name, uint32_t *taskId)
{
    if (name[0] == '\0')
        return -1;
    LOCKED_T registry(&osState.registryLock);
    uint32_t unused = 0;
    for (uint32_t id = TASK_SLOTS - 1; id >= 1; id--) {
        OS_TASK_SLOT_T *slot = &osState.tasks[id];
        if (slot->inUse && memcmp(slot->name, name, NAME_SIZE) == 0) {
            *taskId = id;
            return -1;
        }
        if (!slot->inUse)
            unused = id;
    }
    if (unused == 0)
        return -1;
    osState.tasks[unused].inUse = true;
    memcpy(osState.tasks[unused].name, name, NAME_SIZE);
    *taskId = unused;
    return 0;
}

// Under the registry lock.
void taskSlotFree(OS_TASK_SLOT_T *slot)
{
    slot->thread = 0;
    slot->inUse = false;
    slot->joining = false;
    memset(slot->name, 0, sizeof(slot->name));
}

// Start of every task's thread: the body waits until the creator has named the thread.
void *taskRun(void *argument)
{
    OS_TASK_SLOT_T *slot = static_cast<OS_TASK_SLOT_T *>(argument);
    {
        LOCKED_T gate(&slot->startGate);
    }
    slot->entry(slot->argument);
    uint32_t taskId = 0;
    if (OsTaskIdSelf(&taskId) == 0)
        OsTaskDelete(taskId);
    return nullptr;
}

// The slot is freed here, unless another task has begun to end this one: it joins, and frees it then.
void taskEndSelf(OS_TASK_SLOT_T *slot)
{
    {
        LOCKED_T registry(&osState.registryLock);
        if (!slot->joining) {
            pthread_detach(pthread_self());
            taskSlotFree(slot);
        }
    }
    pthread_exit(nullptr);
}

bool taskIdValid(uint32_t taskId)
{
    return taskId >= 1 && taskId < TASK_SLOTS;
}

void eventUnlock(void *lock)
{
    pthread_mutex_unlock(static_cast<pthread_mutex_t *>(lock));
}

// Under the registry lock.
void semSlotFree(OS_SEM_SLOT_T *slot)
{
    slot->inUse = false;
    memset(slot->name, 0, sizeof(slot->name));
}

void nameMake(char *out, const char *name, size_t length)
{
    memset(out, 0, NAME_SIZE);
    if (name != nullptr)
        memcpy(out, name, strnlen(name, length));
}

void timersFree()
{
    LOCKED_T list(&osState.timerLock);
    while (osState.timers != nullptr) {
        TMR_NODE_T *node = osState.timers;
        osState.timers = node->next;
        free(node);
    }
}

} // namespace
