// Tasks, semaphores, events and timers at their limits, and the signal policy in a process of its own.
#include "runtime/osutils.h"

#include "support/alloc.h"
#include "support/child.h"
#include "support/root.h"
#include "support/wait.h"

#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

static void waitForBit(intptr_t bit)
{
    uint32_t id = 0;
    uint32_t received = 0;
    if (OsTaskIdSelf(&id) == 0)
        (void)OsEventWait(id, static_cast<uint32_t>(bit), 1, &received);
}

class Os : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(OsInit(), 0);
        ASSERT_EQ(TmrListInit(), 0);
    }
    void TearDown() override
    {
        for (uint32_t id = 1; id <= 3; id++)
            OsTaskDelete(id);
        signal(SIGSEGV, SIG_DFL);
    }
    uint32_t pending(uint32_t id, uint32_t mask)
    {
        uint32_t received = 0;
        EXPECT_EQ(OsEventSend(id, 0x80000000u), 0); // so that the wait never waits
        EXPECT_EQ(OsEventWait(id, mask | 0x80000000u, 0, &received), 0);
        return received & 0x7fffffffu;
    }
    TEST_ROOT_T root;
};

TEST_F(Os, ThreeTasksWithNamesOfSevenCharacters)
{
    uint32_t id = 77;
    EXPECT_EQ(OsTaskIdSelf(&id), -1);
    EXPECT_EQ(OsTaskCreate("", waitForBit, 1, &id), -1);
    EXPECT_EQ(OsTaskCreate("longname", waitForBit, 1, &id), 0);
    EXPECT_EQ(OsTaskCreate("b", waitForBit, 1, &id), 0);
    EXPECT_EQ(OsTaskCreate("longnamX", waitForBit, 1, &id), -1);
    EXPECT_EQ(id, 1u);
    EXPECT_EQ(OsTaskCreate("c", waitForBit, 1, &id), 0);
    EXPECT_EQ(id, 3u);
    EXPECT_EQ(OsTaskCreate("d", waitForBit, 1, &id), -1);

    // an entry that returns frees its slot, for the next task
    EXPECT_EQ(OsEventSend(2, 1), 0);
    EXPECT_TRUE(waitUntil([&id]() { return OsTaskCreate("d", waitForBit, 1, &id) == 0; }));
    EXPECT_EQ(id, 2u);
}

TEST_F(Os, DeletingAWaitingTaskLeavesItsSlotUsable)
{
    uint32_t id = 0;
    for (int round = 0; round < 50; round++) {
        ASSERT_EQ(OsTaskCreate("wait", waitForBit, 1, &id), 0);
        ASSERT_EQ(id, 1u);
        ASSERT_EQ(OsEventSend(1, 4), 0); // left pending by the wait, gone with the next task
        ASSERT_EQ(OsTaskDelete(1), 0);
    }
    ASSERT_EQ(OsTaskCreate("wait", waitForBit, 1, &id), 0);
    EXPECT_EQ(pending(1, 4), 0u);
    EXPECT_EQ(OsTaskDelete(0xffffffffu), -1);
}

TEST_F(Os, EventsMergeAndStayUntilTheirMaskIsWaitedFor)
{
    uint32_t received = 9;
    for (uint32_t wrong : {0u, 4u}) {
        EXPECT_EQ(OsEventSend(wrong, 1), -1) << wrong;
        EXPECT_EQ(OsEventWait(wrong, 1, 0, &received), -1) << wrong;
    }
    EXPECT_EQ(OsEventSend(3, 1), 0);
    EXPECT_EQ(OsEventSend(3, 1), 0);
    EXPECT_EQ(OsEventSend(3, 4), 0);
    EXPECT_EQ(OsEventWait(3, 3, 0, &received), 0);
    EXPECT_EQ(received, 1u);
    EXPECT_EQ(pending(3, 7), 4u);
    EXPECT_EQ(pending(3, 7), 0u);
}

TEST_F(Os, SemaphoresAreKnownByFourCharacters)
{
    OS_SEM first = nullptr;
    OS_SEM other = nullptr;
    ASSERT_EQ(OsSemCreate("SEQ1abc", 1, &first), 0);
    EXPECT_EQ(OsSemCreate("SEQ1xyz", 0, &other), -1);
    EXPECT_EQ(other, first);
    EXPECT_EQ(OsSemTake(first), 0); // available at once
    EXPECT_EQ(OsSemGive(first), 0);
    EXPECT_EQ(OsSemTake(first), 0);
    for (const char *name : {"b", "c", "d", "e"})
        EXPECT_EQ(OsSemCreate(name, 0, &other), 0) << name;
    EXPECT_EQ(OsSemCreate("f", 0, &other), -1);
    EXPECT_EQ(OsSemDelete(first), 0);
    EXPECT_EQ(OsSemDelete(first), -1);
    EXPECT_EQ(OsSemDeleteByName("c"), 0);
    EXPECT_EQ(OsSemDeleteByName("c"), -1);
    EXPECT_EQ(OsSemCreate("f", 0, &other), 0);
}

TEST_F(Os, AnInterruptedTakeGoesOnWaiting)
{
    static OS_SEM sem;
    static std::atomic<int> taken;
    taken = 0;
    ASSERT_EQ(OsSemCreate("int", 0, &sem), 0);
    struct sigaction action = {};
    action.sa_handler = [](int) {
    };
    sigaction(SIGUSR1, &action, nullptr);
    std::thread thread([]() { taken = OsSemTake(sem) == 0 ? 1 : 2; });
    for (int i = 0; i < 100; i++) {
        pthread_kill(thread.native_handle(), SIGUSR1);
        usleep(100);
    }
    EXPECT_EQ(taken, 0);
    EXPECT_EQ(OsSemGive(sem), 0);
    thread.join();
    EXPECT_EQ(taken, 1);
    signal(SIGUSR1, SIG_DFL);
}

TEST_F(Os, TimersFireEveryPeriodTicks)
{
    ASSERT_EQ(TmrStart(1, 1, 0), 0);
    ASSERT_EQ(TmrStart(1, 2, 3), 0);
    ASSERT_EQ(TmrStart(2, 4, 2), 0);
    ASSERT_EQ(TmrStart(9, 8, 1), 0); // a task that cannot be
    const uint32_t expected[][2] = {{1, 0}, {1, 4}, {3, 0}, {1, 4}, {1, 0}, {3, 4}};
    for (const auto &tick : expected) {
        TmrTick();
        EXPECT_EQ(pending(1, 0xff), tick[0]);
        EXPECT_EQ(pending(2, 0xff), tick[1]);
    }
    // armed twice, two nodes: the one left still fires
    ASSERT_EQ(TmrStart(1, 1, 0), 0);
    EXPECT_EQ(TmrStop(1, 1), 0);
    TmrTick();
    EXPECT_EQ(pending(1, 0xff), 1u);
    EXPECT_EQ(TmrStop(1, 1), 0);
    TmrTick();
    EXPECT_EQ(pending(1, 0xff), 0u);
}

TEST_F(Os, TimerFailuresAreLogged)
{
    EXPECT_EQ(TmrStop(1, 2), -1);
    allocFailAt(0, ALLOC_OWN);
    EXPECT_EQ(TmrStart(1, 2, 30), -1);
    EXPECT_TRUE(allocFailStop());
    logLevelSet('7');
    EXPECT_EQ(TmrStart(1, 2, 30), 0);
    EXPECT_EQ(TmrStop(1, 3), -1);
    EXPECT_EQ(TmrStop(1, 2), 0);
    EXPECT_EQ(logText(), "(ERROR) TmrStop: Failed to delete! Timer list is empty!\n"
                         "(ERROR) TmrStart: Failed to create timer node fortask:1 and event:2\n"
                         "(DEBUG) TmrStart: Successfully created timer node for task:1 event:2\n"
                         "(ERROR) TmrStop: Could not find timer node for task:1 event:3\n");
}

TEST(OsSignals, EndTheProcessAsThePolicySays)
{
    const std::pair<int, std::string> rows[] = {
        {SIGTERM, "exit 2"}, {SIGHUP, "exit 2"}, {SIGQUIT, "exit 2"}, {SIGSEGV, "signal " + std::to_string(SIGABRT)}};
    for (const auto &row : rows) {
        EXPECT_EQ(childRun([&row]() {
                      if (OsInit() != 0)
                          return 1;
                      OsSignalHandler(SIGUSR1);
                      kill(getpid(), row.first);
                      return waitUntil([]() { return false; }) ? 3 : 4;
                  }),
                  row.second)
            << row.first;
    }
}
