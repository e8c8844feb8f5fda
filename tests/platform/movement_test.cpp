#include <control.h>
#include <gtest/gtest.h>
#include <model.h>

// What moves with time is a function of the scenario and the seconds since its epoch, and of nothing else.

namespace {

struct WINDOW_CASE_T {
    VS_WINDOW_T window;
    double now;
    bool open;
};

const WINDOW_CASE_T WINDOWS[] = {
    {{0, 0, 0}, 0, true},     {{10, 0, 0}, 9.9, false},   {{10, 0, 0}, 10, true},   {{10, 5, 0}, 14.9, true},
    {{10, 5, 0}, 15, false},  {{10, 5, 20}, 29.9, false}, {{10, 5, 20}, 30, true},  {{10, 5, 20}, 34.9, true},
    {{10, 5, 20}, 35, false}, {{10, 5, 5}, 1e9, true},    {{0, 5, 20}, 2e10, true},
};

} // namespace

TEST(Movement, WindowsOpenAndCloseOnTheirEdges)
{
    for (const WINDOW_CASE_T &row : WINDOWS)
        EXPECT_EQ(vsWindowOpen(row.window, row.now), row.open)
            << row.window.from << "+" << row.window.lasts << "/" << row.window.every << " at " << row.now;
}

TEST(Movement, CountersGrowWithUpTimeOnlyAndNeverFallBack)
{
    VS_INTERFACE_T flapping;
    flapping.ifNum = 3;
    flapping.linkUp = true;
    flapping.inRate = 8000000;
    flapping.inErrors = 3600;
    flapping.down = {100, 40, 200};
    VS_INTERFACE_T steady = flapping;
    steady.down = VS_WINDOW_T();
    uint64_t last = 0;
    for (double now = 0; now < 1000; now += 0.5) {
        uint64_t octets = vsCounter(flapping, 1, now);
        ASSERT_GE(octets, last) << now;
        ASSERT_LE(octets, vsCounter(steady, 1, now));
        last = octets;
    }
    EXPECT_EQ(vsCounter(flapping, 1, 140), vsCounter(flapping, 1, 100));
    EXPECT_EQ(vsCounter(flapping, 1, 150) - vsCounter(flapping, 1, 140), 10u * 1000000);
    EXPECT_EQ(vsCounter(steady, 1, 500) - vsCounter(flapping, 1, 500), 80u * 1000000);
    EXPECT_EQ(vsCounter(steady, 52, 100) - vsCounter(steady, 52, 0), 100u);
    for (double now : {0.0, 77.5, 1e8})
        EXPECT_EQ(vsCounter(steady, 51, now),
                  vsCounter(steady, 13, now) + vsCounter(steady, 14, now) + vsCounter(steady, 15, now));
}

TEST(Movement, RateStaysNearItsSettingAndIsNothingWhileDown)
{
    VS_INTERFACE_T interface;
    interface.linkUp = true;
    interface.outRate = 1000000;
    interface.down = {50, 10, 0};
    EXPECT_EQ(vsRate(interface, false, 55), 0u);
    EXPECT_EQ(vsCounter(interface, 59, 55), 0u);
    uint64_t least = UINT64_MAX, most = 0;
    for (double now = 100; now < 300; now++) {
        least = std::min(least, vsRate(interface, false, now));
        most = std::max(most, vsRate(interface, false, now));
    }
    EXPECT_GE(least, 900000u);
    EXPECT_LE(most, 1100000u);
    EXPECT_GT(most, least + 50000);
    interface.adminUp = false;
    EXPECT_EQ(vsCounter(interface, 20, 300), 0u);
}

TEST(Movement, ALagIsUpWhileOneMemberIs)
{
    ASSERT_EQ(
        vsLoadText(R"({"units": {"1": {"model": "TK620-R01"}, "2": {"model": "TK620-R01", "present": {"from": 50}}},
        "ports": {"1/0/1": {"linkUp": true, "down": {"from": 10, "lasts": 20}}, "2/0/1": {"linkUp": true}},
        "lags": {"1": {"members": ["1/0/1", "2/0/1"]}, "2": {}}})"),
        "");
    const VS_STATE_T &state = vsState();
    struct {
        double now;
        bool up;
    } const rows[] = {{0, true}, {10, false}, {29, false}, {30, true}, {60, true}};
    for (auto row : rows)
        EXPECT_EQ(vsLagUp(state, state.lags[0], row.now), row.up) << row.now;
    EXPECT_FALSE(vsLagUp(state, state.lags[1], 0));
    EXPECT_FALSE(vsLinkUp(state, *vsPortAt(state, 2, 0, 1), 49));
    EXPECT_TRUE(vsLinkUp(state, *vsPortAt(state, 2, 0, 1), 50));
}

TEST(Movement, WhatWasLearnedOnAUnitGoesWithIt)
{
    ASSERT_EQ(
        vsLoadText(R"({"units": {"1": {"model": "TK620-R01"}, "2": {"model": "TK620-R01", "present": {"from": 50}}},
            "lags": {"1": {}}})"),
        "");
    const uint32_t lag = vsState().lags[0].ifNum;
    EXPECT_TRUE(vsLearned(vsState(), 1, {}, 10));
    EXPECT_TRUE(vsLearned(vsState(), lag, {}, 10));
    EXPECT_FALSE(vsLearned(vsState(), 13, {}, 10));
    EXPECT_TRUE(vsLearned(vsState(), 13, {}, 50));
    EXPECT_FALSE(vsLearned(vsState(), 13, {60, 0, 0}, 50));
}

TEST(Movement, FrozenTimeGivesTheSameTextsTwice)
{
    std::string path = DEVMGR_SOURCE_DIR "/platform/virtual/scenarios/studio-52.json";
    std::vector<std::string> texts[2];
    for (auto &run : texts) {
        ASSERT_EQ(vsLoadFile(path), "");
        vsClockSet(4711);
        for (const std::string &command : vsCommandNames())
            run.push_back(vsShowText(command));
    }
    vsClockRun();
    EXPECT_FALSE(texts[0].empty());
    EXPECT_EQ(texts[0], texts[1]);
}
