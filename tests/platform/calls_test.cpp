// Client calls of the virtual switch: the room that texts and lists need, names, and faults by key.
#include <control.h>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <openclt.h>

namespace {

openclt_handle_t client;

struct TEXT_T {
    char bytes[64] = "";
    openclt_buffer_t buffer = {sizeof bytes, bytes};
    explicit TEXT_T(const char *text = "")
    {
        strncpy(bytes, text, sizeof bytes - 1);
    }
};

const char SCENARIO[] = R"({
"epoch": "2026-03-01 08:15:02", "system": {"utcOffset": -210}, "vlans": {"20": {"name": "Audio"}},
"units": {"1": {"model": "TK830-T16", "portCount": 2}, "2": {"model": "TK830-T16", "portCount": 1}},
"ports": {"1/0/2": {"optic": {"type": 2, "compliance": "10GBase-SR"}}},
"lags": {"1": {"members": ["1/0/1", "1/0/2"], "phantoms": [700]}}})";

class ClientCalls : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText(SCENARIO), "");
        vsClockSet(10);
    }
    void TearDown() override
    {
        vsUnload();
        vsClockRun();
    }
};

TEST_F(ClientCalls, TextsFitWithTerminatorOrLeaveTheBufferAlone)
{
    using namespace std::placeholders;
    const std::pair<std::function<int(openclt_buffer_t *)>, std::string> rows[] = {
        {std::bind(openapiIfNameGet, &client, 3, _1), "2/0/1"},
        {std::bind(openapiIfNameGet, &client, 4, _1), "lag 1"},
        {std::bind(rpcclt_openapiIfDescrGet, &client, 1, _1), ""},
        {std::bind(rpcclt_openapiVlanNameGet, &client, 20, _1), "Audio"},
        {std::bind(rpcclt_openapiBoxsSfpComplianceGet, &client, 2, _1), "10GBase-SR"},
        {std::bind(rpcclt_openapiSystemRegMachineModelGet, &client, _1), "TK830-T16"},
        {std::bind(rpcclt_openapiClockGet, &client, _1), "2026:03:01 04:45:12"},
        {std::bind(rpcclt_openapiTimeZoneGet, &client, _1), "UTC-3:30"},
    };
    for (const auto &[call, expected] : rows) {
        const uint32_t needed = static_cast<uint32_t>(expected.size() + 1);
        for (uint32_t capacity = 0; capacity <= needed + 1; capacity++) {
            char bytes[64];
            memset(bytes, '#', sizeof bytes);
            openclt_buffer_t buffer = {capacity, bytes};
            const bool fits = call(&buffer) == OPENCLT_OK;
            ASSERT_EQ(fits, capacity >= needed) << expected << " into " << capacity;
            EXPECT_EQ(buffer.size, fits ? needed : capacity) << expected;
            const std::string written = fits ? std::string(expected.c_str(), needed) : "";
            EXPECT_EQ(std::string(bytes, needed + 2), (written + std::string(64, '#')).substr(0, needed + 2));
        }
        openclt_buffer_t none = {64, nullptr};
        EXPECT_EQ(call(&none), OPENCLT_PARAM) << expected;
    }
}

TEST_F(ClientCalls, LagMembersNeedRoomAndEndWithThoseThatDoNotExist)
{
    uint32_t members[4] = {};
    for (uint32_t room = 0; room <= 4; room++) {
        openclt_buffer_t buffer = {sizeof members, reinterpret_cast<char *>(members)};
        uint32_t count = room;
        const int result = rpcclt_openapiLagMembersGet(&client, 4, &count, &buffer, sizeof members);
        EXPECT_EQ(result == OPENCLT_OK, room >= 3) << room;
        EXPECT_EQ(count, room >= 3 ? 3 : room);
    }
    EXPECT_EQ(members[2], 700u);
    EXPECT_EQ(members[3], 0u);
}

TEST_F(ClientCalls, NamesAreFoundOnlyWhole)
{
    for (const auto &[name, expected] : std::vector<std::pair<const char *, uint32_t>>{
             {"1/0/2", 2}, {"2/0/1", 3}, {"lag 1", 4}, {"1/0/2 ", 0}, {"1/0/02", 0}, {"1/0", 0}, {"lag 2", 0}}) {
        uint32_t ifNum = 0;
        TEXT_T text(name);
        EXPECT_EQ(rpcclt_openapiIfNumGet(&client, &text.buffer, &ifNum) == OPENCLT_OK, expected != 0) << name;
        EXPECT_EQ(ifNum, expected) << name;
    }
}

} // namespace
