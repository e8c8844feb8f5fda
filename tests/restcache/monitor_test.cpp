#include "restcache/monitor.h"

#include "control.h"
#include "fakes.h"
#include "model.h"
#include "restcache/writeback.h"
#include "runtime/clock.h"
#include "stores/sql.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>

using namespace std::string_literals;

using NAMES_T = std::vector<std::string>;

// Which cycles rebuild which documents: the first one, and those that leave the phase when divided by the period.
// Those of a row stand in their order within a cycle.
static const struct {
    unsigned period, phase;
    NAMES_T names;
} schedule[] = {
    {1,
     0,
     {"portStats_outbound_ex", "portStats_inbound_ex", "sw_lag_cfg_ex", "device_health", "interfaces_status",
      "swcfg_poe", "swcfg_poe_info", "bufferedLog"}},
    {2, 0, {"neighbor_ex"}},
    {2, 1, {"stacking", "sw_manual_trunk_cfg", "sw_auto_trunk_cfg", "sw_auto_lag_cfg", "multicast_groups_ex"}},
    {6, 1, {"sw_portmirroring", "radius_config"}},
    {6, 2, {"radius_port_config", "sw_ptp_cfg"}},
    {6, 3, {"special_interface_route", "scheduleList"}},
    {6, 4, {"profile/list_ex"}},
    {6, 5, {"multicast_mode_ex", "multicast_block_address", "logging"}},
    {60, 58, {"system_info"}},
    {60, 59, {"device_time"}},
};

struct Monitor : testing::Test {
    TEST_ROOT_T root;
    void SetUp() override
    {
        std::vector<const char *> names;
        fake = FAKE_T();
        for (unsigned i = 0; writebackName(i) != nullptr; i++)
            names.push_back(writebackName(i));
        for (unsigned i = 0; cycleItemName(i) != nullptr; i++)
            names.push_back(cycleItemName(i));
        fakesRegister(names);
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

TEST_F(Monitor, TheFirstCycleBuildsEverythingInTheScheduledOrder)
{
    EXPECT_EQ(cycle(), NAMES_T({"portStats_outbound_ex",
                                "portStats_inbound_ex",
                                "radius_port_config",
                                "neighbor_ex",
                                "special_interface_route",
                                "sw_lag_cfg_ex",
                                "device_time",
                                "system_info",
                                "device_health",
                                "stacking",
                                "multicast_mode_ex",
                                "profile/list_ex",
                                "sw_manual_trunk_cfg",
                                "interfaces_status",
                                "sw_ptp_cfg",
                                "sw_auto_trunk_cfg",
                                "sw_portmirroring",
                                "sw_auto_lag_cfg",
                                "multicast_groups_ex",
                                "multicast_block_address",
                                "scheduleList",
                                "swcfg_poe",
                                "swcfg_poe_info",
                                "radius_config",
                                "logging",
                                "bufferedLog"}));
}

TEST_F(Monitor, EachCycleRebuildsExactlyWhatIsDue)
{
    for (unsigned c = 1; c <= 121; c++) {
        NAMES_T built = cycle();
        size_t due = 0;
        for (const auto &row : schedule) {
            NAMES_T found;
            std::copy_if(built.begin(), built.end(), std::back_inserter(found), [&row](const std::string &name) {
                return std::count(row.names.begin(), row.names.end(), name) > 0;
            });
            EXPECT_EQ(found, c == 1 || c % row.period == row.phase ? row.names : NAMES_T()) << "cycle " << c;
            due += found.size();
        }
        EXPECT_EQ(built.size(), due) << "cycle " << c;
        EXPECT_EQ(refreshCycleNumber(), c);
    }
}

TEST_F(Monitor, ChangesOfACycleAreSignalledOnce)
{
    fakesRegister({"portStats_outbound_ex", "portStats_inbound_ex", "swcfg_poe_info"});
    cycle();
    EXPECT_EQ(restDbChanged, 0);
    for (bool changed : {false, true}) {
        LISTENER_T listener;
        fake.text = changed ? "[2]" : "[1]";
        cycle();
        EXPECT_EQ(listener.signalled(), changed);
    }
}

TEST_F(Monitor, FailingAndMissingDirectItemsAreLoggedAndTheCycleGoesOn)
{
    cycle();
    fake.result = 10000;
    logClear();
    cycle();
    std::string log = logText();
    for (const char *line :
         {"(ERROR) get_port_outbound_statistics_ex: get_port_outbound_statistics_ex: Failed, result=10000\n",
          "(ERROR) get_port_inbound_statistics_ex: get_port_inbound_statistics_ex: Failed, result=10000\n",
          "(ERROR) get_poe_info: get_poe_info: Failed to get POE info, result=10000\n"})
        EXPECT_NE(log.find(line), std::string::npos) << line << log;
    EXPECT_EQ(fake.built.back(), "bufferedLog");

    builderTableSet(nullptr, 0);
    logClear();
    cycle();
    log = logText();
    for (const char *item :
         {"portStats_outbound_ex: pioBuildList", "portStats_inbound_ex: pioBuildList", "stacking: get_stacking_info",
          "multicast_groups_ex: mgeWriteChunks", "swcfg_poe_info: gePoeInfoJson", "bufferedLog: get_buffered_log"})
        EXPECT_NE(log.find(std::string("(ERROR) GetAllRestApiData: ") + item + " not linked\n"), std::string::npos)
            << item << log;
}

TEST_F(Monitor, FiberOpticsAreRebuiltWithinAMinuteOfTheRequest)
{
    const long now = static_cast<long>(ClockSeconds());
    const std::string text = std::to_string(now), oldest = std::to_string(now - 60);
    for (const std::string &request : {text, oldest, " \n" + text + "x", std::to_string(now - 61),
                                       std::to_string(now + 1), ""s, "soon"s, "-99999999999999999999999"s}) {
        fileWrite(PathGet(PATH_FIBER_REQUEST), request);
        bool due = request == oldest || request.find(text) != std::string::npos;
        EXPECT_EQ(builds("fiberOptics"), due) << request;
        EXPECT_EQ(fileRead(PathGet(PATH_FIBER_REQUEST)), request); // never taken away
    }
}

TEST_F(Monitor, VendorsAreDetectedInThreeCyclesAfterAPortCameUp)
{
    portsMake({1, 2, 999, 1000});
    vsState().ports[1].linkUp = false;
    std::string seen;
    auto cycles = [&seen](int count) {
        seen.clear();
        for (int i = 0; i < count; i++)
            seen += builds("port_vendor_detect") ? 'V' : '-';
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
TEST_F(Monitor, ACacheBegunAnewIsFilledWithinACycle)
{
    const NAMES_T start = {"profile",
                           "imageInfo",
                           "system_info",
                           "special_interface_route",
                           "swcfg_ports_settings",
                           "port_hardware_info",
                           "fiberOptics"};
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
        EXPECT_EQ(std::count(built.begin(), built.end(), "port_vendor_detect"), loss.anew) << loss.how;
        EXPECT_EQ(NAMES_T(built.begin(), built.begin() + start.size()) == start, loss.anew) << loss.how;
        for (int cycles = 0; cycles < 3; cycles++)
            refresh();
        EXPECT_EQ(logText().find(anew), std::string::npos) << loss.how;
    }
}

// A full disk at the start. A document whose build fails is not tried again.
TEST_F(Monitor, AStartDocumentIsWrittenUntilItIsStored)
{
    auto first = [] {
        fake.built.clear();
        monitorRefresh();
        return fake.built[0];
    };
    {
        FULL_DISK_T disk(1000);
        startDocumentsWrite();
        EXPECT_EQ(first(), "profile");
    }
    fake.result = 10000;
    EXPECT_EQ(first(), "profile");
    EXPECT_EQ(first(), "portStats_outbound_ex");
}

TEST_F(Monitor, StartWritesItsMarkWaitsForTheProfilesThenBuildsTheStartDocuments)
{
    const NAMES_T first = {"profile",
                           "imageInfo",
                           "system_info",
                           "special_interface_route",
                           "swcfg_ports_settings",
                           "port_hardware_info",
                           "fiberOptics",
                           "portStats_outbound_ex",
                           "portStats_inbound_ex"};
    fake.holdAt = "bufferedLog"; // the last document of cycle 1
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
    EXPECT_EQ(NAMES_T(fake.built.begin(), fake.built.begin() + first.size()), first);
}
