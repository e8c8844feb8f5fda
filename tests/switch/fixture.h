// fixture.h - a small switch in a fresh root: two units, three ports, two LAGs, two VLANs.
#pragma once

#include "support/root.h"
#include "switch/session.h"

#include <control.h>
#include <gtest/gtest.h>
#include <model.h>

struct SWITCH_TEST : testing::Test {
    SWITCH_TEST();
    ~SWITCH_TEST() override;
    TEST_ROOT_T root;
    CLIENT_HANDLE_T handle = {};
};

inline SWITCH_TEST::SWITCH_TEST()
{
    EXPECT_EQ(vsLoadText("{}"), "");
    VS_STATE_T &state = vsState();
    state = VS_STATE_T();
    state.units.resize(2);
    state.units[0].unit = 1;
    state.units[0].model = "TK830-T16";
    state.units[0].management = true;
    state.units[1].unit = 2;
    state.units[1].model = "TK830-T07";
    state.ports.resize(3);
    for (uint32_t i = 0; i < 3; i++) {
        state.ports[i].ifNum = i + 1;
        state.ports[i].port = i + 1;
        state.ports[i].linkUp = true;
    }
    state.lags.resize(2);
    state.lags[0].ifNum = 101;
    state.lags[0].name = "ch1";
    state.lags[0].members = {1, 3};
    state.lags[1].ifNum = 102;
    state.lags[1].number = 2;
    state.lags[1].name = "ch2";
    state.vlans.resize(2);
    state.vlans[0].name = "default";
    state.vlans[1].id = 10;
    state.vlans[1].name = "Audio";
    logClear();
}

inline SWITCH_TEST::~SWITCH_TEST()
{
    vsUnload();
}

inline void failCall(const char *name, int result, uint32_t nth = 0)
{
    VS_FAULT_T fault;
    fault.name = name;
    fault.result = result;
    fault.nth = nth;
    vsFaultAdd(fault);
}

inline void spoilCommand(const char *command, VS_FAULT_KIND kind)
{
    VS_FAULT_T fault;
    fault.name = command;
    fault.kind = kind;
    vsFaultAdd(fault);
}

inline std::string withCrlf(const std::string &text)
{
    std::string out;
    for (char character : text)
        out += character == '\n' ? std::string("\r\n") : std::string(1, character);
    return out;
}
