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
