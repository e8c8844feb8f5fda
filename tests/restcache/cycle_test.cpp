#include "restcache/cycle.h"

#include "control.h"
#include "fakes.h"
#include "model.h"
#include "restcache/monitor.h"
#include "runtime/clock.h"
#include "stores/sql.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>

using namespace std::string_literals;

using NAMES_T = std::vector<std::string>;

// Each way to be due, and places at the start that are not in the order of the rows.
static constexpr DOCUMENT_T table[] = {
    direct("init_complete", "init_complete", BUILDER(initCompleteWrite), IN_NO_CYCLE).atStart(START_MARK),
    document("start", "s", BUILDER(fakeText), IN_NO_CYCLE).atStart(3),
    direct("direct", "d", BUILDER(fakeText), EVERY_CYCLE),
    document("even", "e", BUILDER(fakeText), everyCycles(2, 0)),
    document("sixth", "x", BUILDER(fakeText), everyCycles(6, 4)).atStart(2),
    direct("odd", "o", BUILDER(fakeWrites), everyCycles(2, 1)),
    document("links", "l", BUILDER(fakeText), WITH_LINK_WATCH),
    document("vendors", "v", BUILDER(fakeText), PORT_CAME_UP),
    document("optics", "f", BUILDER(fakeText), ON_REQUEST).atStart(4),
    document("asked", "a", BUILDER(fakeText), IN_NO_CYCLE),
    document("last", "z", BUILDER(fakeText), EVERY_CYCLE),
};
static const NAMES_T start = {"sixth", "start", "optics"};

struct Cycle : testing::Test {
    TEST_ROOT_T root;
    void SetUp() override
    {
        fake = FAKE_T();
        documentTableSet(table, std::size(table));
        vsUnload();
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }
    void TearDown() override
    {
        vsUnload();
    }

    // A switch with these ports, all of them up.
    static void portsMake(const std::vector<uint32_t> &ifNums)
    {
        ASSERT_EQ(vsLoadText("{}"), "");
        vsState().units.assign(1, VS_UNIT_T());
        vsState().ports.clear();
        for (uint32_t ifNum : ifNums) {
            VS_PORT_T port;
            port.ifNum = ifNum;
            port.port = vsState().ports.size() + 1;
            port.linkUp = true;
            vsState().ports.push_back(port);
        }
    }

    static NAMES_T cycle()
    {
        fake.built.clear();
        GetAllRestApiData();
        return fake.built;
    }
    static bool builds(const char *name)
    {
        NAMES_T built = cycle();
        return std::count(built.begin(), built.end(), name) > 0;
    }
};

TEST_F(Cycle, EachCycleRebuildsExactlyWhatIsDueInTheTablesOrder)
{
    for (unsigned c = 1; c <= 13; c++) {
        NAMES_T due = {"direct"};
        if (c == 1 || c % 2 == 0)
            due.push_back("even");
        if (c == 1 || c % 6 == 4)
            due.push_back("sixth");
        if (c % 2 == 1)
            due.push_back("odd");
        due.push_back("links");
        due.push_back("last");
        EXPECT_EQ(cycle(), due) << c;
        EXPECT_EQ(refreshCycleNumber(), c);
    }
}

TEST_F(Cycle, DirectChangesOfACycleAreSignalledOnce)
{
    documentTableSet(&table[2], 1);
    cycle();
    EXPECT_EQ(restDbChanged, 0);
    for (bool changed : {false, true}) {
        LISTENER_T listener;
        fake.text = changed ? "[2]" : "[1]";
        cycle();
        EXPECT_EQ(listener.signalled(), changed);
    }
}

TEST_F(Cycle, FiberOpticsAreRebuiltWithinAMinuteOfTheRequest)
{
    const long now = static_cast<long>(ClockSeconds());
    const std::string text = std::to_string(now), oldest = std::to_string(now - 60);
    for (const std::string &request : {text, oldest, " \n" + text + "x", std::to_string(now - 61),
                                       std::to_string(now + 1), ""s, "soon"s, "-99999999999999999999999"s}) {
        fileWrite(PathGet(PATH_FIBER_REQUEST), request);
        bool due = request == oldest || request.find(text) != std::string::npos;
        EXPECT_EQ(builds("optics"), due) << request;
        EXPECT_EQ(fileRead(PathGet(PATH_FIBER_REQUEST)), request); // never taken away
    }
}

TEST_F(Cycle, VendorsAreDetectedInThreeCyclesAfterAPortCameUp)
{
    portsMake({1, 2, 999, 1000});
    vsState().ports[1].linkUp = false;
    std::string seen;
    auto cycles = [&seen](int count) {
        seen.clear();
        for (int i = 0; i < count; i++)
            seen += builds("vendors") ? 'V' : '-';
        return seen;
    };
    auto link = [](size_t index, bool up) {
        vsState().ports[index].linkUp = up;
    };
    EXPECT_EQ(cycles(5), "VVV--"); // ports that were up at the first look
    link(0, false);
    EXPECT_EQ(cycles(2), "--");
    link(0, true);
    EXPECT_EQ(cycles(1), "V");
    link(2, false);
    EXPECT_EQ(cycles(1), "V");
    link(2, true); // while the other one's count runs
    EXPECT_EQ(cycles(5), "VVV--");
    link(3, false); // beyond the numbers that are watched
    EXPECT_EQ(cycles(1), "-");
    link(3, true);
    EXPECT_EQ(cycles(1), "-");
    link(0, false);
    EXPECT_EQ(cycles(1), "-");
    vsFaultAdd({"openapiIfLinkStateGet", "1"}); // state unknown: as if it had not been looked at
    link(0, true);
    EXPECT_EQ(cycles(2), "--");
    vsFaultsClear();
    EXPECT_EQ(cycles(4), "VVV-");
    vsFaultAdd({"openapiIfFirstGet"});
    link(0, false);
    EXPECT_EQ(cycles(1), "-");
}

// What the cache loses is built again in the next cycle, also beyond those that detect vendors anyway.
TEST_F(Cycle, ACacheBegunAnewIsFilledWithinACycle)
{
    const std::string anew = "begun anew, everything is built again";
    portsMake({1});
    auto refresh = [] {
        fake.built.clear();
        logClear();
        monitorRefresh();
        return fake.built;
    };
    for (int cycles = 0; cycles < 5; cycles++)
        refresh();
    const std::filesystem::path path = PathGet(PATH_REST_DB), old = path.string() + ".old";
    const struct {
        const char *how;
        bool anew;
        std::function<void()> lose;
    } losses[] = {
        {"removed", true,
         [&] {
             std::filesystem::remove(path);
         }},
        {"replaced", true,
         [&] {
             std::filesystem::copy_file(path, old);
             std::filesystem::rename(old, path);
         }},
        {"damaged", true,
         [&] {
             fileWrite(path, std::string(8192, 'x'));
         }},
        {"its mark removed by another program", false,
         [] {
             sqlRun(PATH_REST_DB, "DELETE FROM restapi_db WHERE api_name = 'init_complete'");
         }},
    };
    for (const auto &loss : losses) {
        loss.lose();
        NAMES_T built = refresh();
        EXPECT_EQ(logText().find(anew) != std::string::npos, loss.anew) << loss.how;
        EXPECT_EQ(cacheRead("init_complete").empty(), !loss.anew) << loss.how;
        EXPECT_EQ(std::count(built.begin(), built.end(), "vendors"), loss.anew) << loss.how;
        EXPECT_EQ(NAMES_T(built.begin(), built.begin() + start.size()) == start, loss.anew) << loss.how;
        for (int cycles = 0; cycles < 3; cycles++)
            refresh();
        EXPECT_EQ(logText().find(anew), std::string::npos) << loss.how;
    }
}

// A full disk at the start. A document whose build fails is not tried again.
TEST_F(Cycle, AStartDocumentIsWrittenUntilItIsStored)
{
    auto first = [] {
        fake.built.clear();
        monitorRefresh();
        return fake.built[0];
    };
    {
        FULL_DISK_T disk(1000);
        startDocumentsWrite();
        EXPECT_EQ(first(), "sixth");
    }
    fake.result = 10000;
    EXPECT_EQ(first(), "sixth");
    EXPECT_EQ(first(), "direct");
}

TEST_F(Cycle, StartWritesItsMarkWaitsForTheProfilesThenBuildsTheStartDocuments)
{
    const NAMES_T all = {"sixth", "start", "optics", "direct", "even", "sixth", "odd", "links", "last"};
    fake.holdAt = "last"; // of cycle 1
    ASSERT_EQ(vsLoadText("{}"), "");
    vsState().ports.clear();

    std::thread(AgentRestMonitor, 0).detach(); // stays where it is held; it never ends by itself
    while (cacheRead("init_complete").empty() || sleptSeconds() < 3)
        std::this_thread::yield();
    EXPECT_EQ(cacheRead("init_complete"),
              R"({"init_complete": {},"resp": {"respCode": 0,"respMsg": "Success","status": "success"}})");
    EXPECT_EQ(changeList(), "init_complete\n");
    fileWrite(PathGet(PATH_VLANINFO_DB), "");
    while (!fakeHeld)
        std::this_thread::yield();
    EXPECT_EQ(fake.built, all);
}
