// Start-up in a process of its own: the order of its lines, what a failing task does to it, and the idle state.
#include "runtime/startup.h"

#include "runtime/clock.h"
#include "runtime/paths.h"
#include "support/child.h"
#include "support/root.h"
#include "support/wait.h"

#include <csignal>
#include <gtest/gtest.h>

static const std::string FAILURE = "(ERROR) main: Failed to initialize orbit agent daemon \n";
static const std::string SUCCESS = "(INFO) DmInit: Successfully initialized orbit agent daemon\n";

static std::string created(const char *name)
{
    return std::string("(INFO) DmInit: Successfully created thread <") + name + ">\n";
}

static void goodTask(intptr_t)
{
    (void)OsTaskInitDone(0);
}
static void badTask(intptr_t)
{
    (void)OsTaskInitDone(1);
}
static void waitingTask(intptr_t)
{
    uint32_t id = 0;
    uint32_t received = 0;
    (void)OsTaskIdSelf(&id);
    (void)OsTaskInitDone(0);
    (void)OsEventWait(id, 1, 0, &received);
}
// Arms a timer as the monitor does, and leaves a file behind once three events have come.
static void timedTask(intptr_t)
{
    uint32_t id = 0;
    uint32_t received = 0;
    (void)OsTaskIdSelf(&id);
    (void)OsTaskInitDone(0);
    if (TmrStart(id, 2, 2) != 0)
        return;
    for (int i = 0; i < 3; i++)
        (void)OsEventWait(id, 2, 0, &received);
    fileWrite(PathGet(PATH_REST_DELTA), "three");
}

TEST(Startup, AFailingTaskEndsTheProcessWithOne)
{
    const struct {
        const char *what;
        DM_TASK_T table[6];
        std::string log;
    } cases[] = {
        {"reports failure",
         {{"A", waitingTask, 0}, {"BAD", badTask, 0}, {"C", waitingTask, 0}, {}},
         created("A") + "(ERROR) DmInit: Task Init Failed for <BAD> \n" + FAILURE},
        {"name taken",
         {{"A", waitingTask, 0}, {"A", waitingTask, 0}, {}},
         created("A") + "(ERROR) DmInit: Task Init Failed for <A> \n" + FAILURE},
        {"no slot left",
         {{"A", waitingTask, 0}, {"B", waitingTask, 0}, {"C", waitingTask, 0}, {"D", waitingTask, 0}, {}},
         created("A") + created("B") + created("C") + "(ERROR) DmInit: Task Init Failed for <D> \n" + FAILURE},
    };
    for (const auto &row : cases) {
        TEST_ROOT_T root;
        EXPECT_EQ(childRun([&row]() { return DmMain(row.table); }), "exit 1") << row.what;
        EXPECT_EQ(logText(), row.log) << row.what;
    }
}

// Run a table until the condition holds, then end the process by SIGTERM.
static std::string runUntil(const DM_TASK_T *table, bool (*condition)())
{
    pid_t daemon = childStart([table]() {
        ClockSourceSet(nullptr);
        ClockTickSet(2);
        return DmMain(table);
    });
    EXPECT_TRUE(waitUntil(condition));
    kill(daemon, SIGTERM);
    return childEnd(childWait(daemon));
}

TEST(Startup, TimerTaskFirstThenATaskThatGetsItsEvents)
{
    TEST_ROOT_T root;
    const DM_TASK_T table[] = {{"TMR", TmrTask, 0}, {"AMT", timedTask, 0}, {"END", goodTask, 0}, {}};
    auto allDone = []() { // the events may come before the last task is reported
        return fileRead(PathGet(PATH_REST_DELTA)) == "three" && logText().find(SUCCESS) != std::string::npos;
    };
    EXPECT_EQ(runUntil(table, allDone), "exit 2");
    EXPECT_EQ(logText(), created("TMR") + created("AMT") + created("END") + SUCCESS);
}
