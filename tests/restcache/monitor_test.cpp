#include "restcache/monitor.h"

#include "control.h"
#include "fakes.h"
#include "model.h"
#include "runtime/clock.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

using RULE_T = std::function<bool(unsigned)>;
static const RULE_T always = [](unsigned) {
    return true;
};
static const RULE_T odd = [](unsigned c) {
    return c % 2 == 1;
};
static RULE_T sixth(unsigned phase)
{
    return [phase](unsigned c) {
        return c == 1 || c % 6 == phase;
    };
}

// Which cycles rebuild which document, in the order of a cycle.
static const std::vector<std::pair<const char *, RULE_T>> schedule = {
    {"portStats_outbound_ex", always},
    {"portStats_inbound_ex", always},
    {"radius_port_config", sixth(2)},
    {"neighbor_ex",
     [](unsigned c) {
         return c == 1 || c % 2 == 0;
     }},
    {"special_interface_route", sixth(3)},
    {"sw_lag_cfg_ex", always},
    {"device_time",
     [](unsigned c) {
         return c == 1 || c == 59 || c == 119;
     }},
    {"system_info",
     [](unsigned c) {
         return c == 1 || c == 58 || c == 118;
     }},
    {"device_health", always},
    {"stacking", odd},
    {"multicast_mode_ex", sixth(5)},
    {"profile/list_ex", sixth(4)},
    {"sw_manual_trunk_cfg", odd},
    {"interfaces_status", always},
    {"port_vendor_detect",
     [](unsigned) {
         return false;
     }}, // no port is up
    {"fiberOptics",
     [](unsigned) {
         return false;
     }}, // nobody asks
    {"sw_ptp_cfg", sixth(2)},
    {"sw_auto_trunk_cfg", odd},
    {"sw_portmirroring", sixth(1)},
    {"sw_auto_lag_cfg", odd},
    {"multicast_groups_ex", odd},
    {"multicast_block_address", sixth(5)},
    {"scheduleList", sixth(3)},
    {"swcfg_poe", always},
    {"swcfg_poe_info", always},
    {"radius_config", sixth(1)},
    {"logging", sixth(5)},
    {"bufferedLog", always},
};

struct Monitor : testing::Test {
    TEST_ROOT_T root;
    void SetUp() override
    {
        std::vector<const char *> names;
        fake = FAKE_T();
        for (const auto &item : schedule)
            names.push_back(item.first);
        fakesRegister(names);
        vsUnload();
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }
    void TearDown() override
    {
        vsUnload();
    }

    static std::vector<std::string> cycle()
    {
        fake.built.clear();
        GetAllRestApiData();
        return fake.built;
    }
    static bool builds(const char *name)
    {
        std::vector<std::string> built = cycle();
        return std::count(built.begin(), built.end(), name) > 0;
    }
};

TEST_F(Monitor, EachCycleRebuildsWhatIsDueInOrder)
{
    for (unsigned c = 1; c <= 121; c++) {
        std::vector<std::string> due;
        for (const auto &item : schedule) {
            if (item.second(c))
                due.push_back(item.first);
        }
        EXPECT_EQ(cycle(), due) << "cycle " << c;
        EXPECT_EQ(refreshCycleNumber(), c);
    }
}

TEST_F(Monitor, DirectItemsStoreUnderTheirKeysAndAreSignalledOnce)
{
    const std::string tail = R"(:[1],"resp":{"respCode":0,"respMsg":"Success","status":"success"}})";
    cycle();
    EXPECT_EQ(compact(cacheRead("portStats_outbound_ex")), R"({"OutPortStatisticsEx")" + tail);
    EXPECT_EQ(compact(cacheRead("portStats_inbound_ex")), R"({"InPortStatisticsEx")" + tail);
    EXPECT_EQ(compact(cacheRead("swcfg_poe_info")), R"({"poeInfo")" + tail);
    EXPECT_EQ(restDbChanged, 0);

    std::vector<const char *> direct = {"portStats_outbound_ex", "portStats_inbound_ex", "swcfg_poe_info"};
    fakesRegister(direct);
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
    struct {
        std::string text;
        bool due;
    } requests[] = {
        {std::to_string(now), true},
        {std::to_string(now - 60), true},
        {std::to_string(now - 61), false},
        {std::to_string(now + 1), false},
        {"", false},
        {"soon", false},
        {" \n" + std::to_string(now) + "x", true},
        {"-99999999999999999999999", false},
    };
    for (const auto &request : requests) {
        fileWrite(PathGet(PATH_FIBER_REQUEST), request.text);
        EXPECT_EQ(builds("fiberOptics"), request.due) << request.text;
        EXPECT_EQ(fileRead(PathGet(PATH_FIBER_REQUEST)), request.text); // never taken away
    }
}

TEST_F(Monitor, VendorsAreDetectedInThreeCyclesAfterAPortCameUp)
{
    ASSERT_EQ(vsLoadText("{}"), "");
    auto portAdd = [](uint32_t ifNum, bool up) {
        VS_PORT_T port;
        port.ifNum = ifNum;
        port.port = vsState().ports.size() + 1;
        port.linkUp = up;
        vsState().ports.push_back(port);
    };
    vsState().ports.clear();
    vsState().units.assign(1, VS_UNIT_T());
    for (uint32_t ifNum : {1, 2, 999, 1000})
        portAdd(ifNum, ifNum != 2);
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

TEST_F(Monitor, StartWritesItsMarkWaitsForTheProfilesThenBuildsTheStartDocuments)
{
    std::vector<const char *> names = {"profile", "imageInfo", "swcfg_ports_settings", "port_hardware_info"};
    std::vector<std::string> order = {"profile",
                                      "imageInfo",
                                      "system_info",
                                      "special_interface_route",
                                      "swcfg_ports_settings",
                                      "port_hardware_info",
                                      "fiberOptics"};
    for (const auto &item : schedule) {
        names.push_back(item.first);
        if (item.second(1))
            order.push_back(item.first);
    }
    fakesRegister(names);
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
    EXPECT_EQ(fake.built, order);
}

TEST_F(Monitor, EndsWithoutAClientAndWritesNothing)
{
    vsFaultAdd({"openapiClientRegister"});
    AgentRestMonitor(0);
    vsFaultsClear();
    EXPECT_NE(logText().find("(ERROR) AgentRestMonitor: Init clientHandle error\n"), std::string::npos) << logText();
    EXPECT_EQ(changeList(), "");
    EXPECT_TRUE(fake.built.empty());
}
