#include <algorithm>
#include <control.h>
#include <gtest/gtest.h>
#include <model.h>
#include <openclt.h>
#include <support/root.h>
#include <support/wait.h>
#include <unistd.h>

// Faults, literal texts, counting, latency, and what happens when a scenario's file changes or does not load.

namespace {

constexpr char THREE_PORTS[] = R"({"units": {"1": {"model": "TK620-R01", "portCount": 3}}})";

openclt_handle_t handle;

int nameGet(uint32_t ifNum)
{
    char text[32];
    openclt_buffer_t buffer{sizeof text, text};
    return openapiIfNameGet(&handle, ifNum, &buffer);
}

struct SHOWN_T {
    int result;
    bool file;
    std::string text;
};

class Control : public testing::Test {
protected:
    void SetUp() override
    {
        char name[] = "/tmp/vsXXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        folder = name;
        ASSERT_EQ(vsLoadText(THREE_PORTS), "");
    }
    void TearDown() override
    {
        vsClockRun();
        vsUnload();
        EXPECT_EQ(system(("rm -r " + folder).c_str()), 0);
    }
    SHOWN_T show(std::string command)
    {
        std::string path = folder + "/out";
        unlink(path.c_str());
        openclt_buffer_t commandBuffer{static_cast<uint32_t>(command.size() + 1), command.data()};
        openclt_buffer_t fileBuffer{static_cast<uint32_t>(path.size() + 1), path.data()};
        int result = rpcclt_openapiCliShowExecuteToFile(&handle, &commandBuffer, &fileBuffer);
        return {result, access(path.c_str(), F_OK) == 0, fileRead(path)};
    }
    std::string folder;
};

} // namespace

TEST_F(Control, FaultsStrikeByNameKeyAndUse)
{
    struct {
        VS_FAULT_T fault;
        std::vector<int> results; // of ports 1, 2, 1, 2
    } const rows[] = {
        {{"openapiIfNameGet"}, {-1, -1, -1, -1}},
        {{"rpcclt_openapiIfNameGet", "2"}, {0, -1, 0, -1}},
        {{"openapiIfNameGet", "", 3}, {0, 0, -1, 0}},
        {{"openapiIfNameGet", "2", 2, VS_FAIL, OPENCLT_UNAVAILABLE}, {0, 0, 0, OPENCLT_UNAVAILABLE}},
        {{"*", "1"}, {-1, 0, -1, 0}},
        {{"openapiIfName"}, {0, 0, 0, 0}},
    };
    for (const auto &row : rows) {
        vsFaultsClear();
        vsFaultAdd(row.fault);
        std::vector<int> results;
        for (uint32_t ifNum : {1, 2, 1, 2})
            results.push_back(nameGet(ifNum));
        EXPECT_EQ(results, row.results) << row.fault.name << " " << row.fault.key << " " << row.fault.nth;
    }
}

TEST_F(Control, AFaultCanAnswer)
{
    ASSERT_EQ(vsLoadText(R"({"units": {"1": {"model": "TK620-R01", "portCount": 3}}, "faults": [
        {"call": "openapiIfLinkStateGet", "key": 2, "value": 7}, {"call": "openapiIfNameGet", "key": 9, "value": "up\nlink"},
        {"call": "openapiHashIntfUnitSlotPortGet", "value": "9/13/65535"}, {"call": "openapiStatGet", "nth": 2, "value":
        "18446744073709551615"}, {"call": "openapiLldpIntfRemoteDevicePortIdGet", "value": [5, "a name longer than its room is"]}]})"),
              "");
    char text[32] = "";
    openclt_buffer_t name{sizeof text, text};
    uint32_t state = 0;
    uint64_t counters[2];
    openclt_usp_t usp = {};
    EXPECT_EQ(openapiIfLinkStateGet(&handle, 2, &state), 0);
    EXPECT_EQ(state, 7U);
    EXPECT_EQ(openapiIfNameGet(&handle, 9, &name), 0); // although there is no such interface
    EXPECT_STREQ(text, "up\nlink");
    EXPECT_EQ(rpcclt_openapiHashIntfUnitSlotPortGet(&handle, 1, &usp), 0);
    EXPECT_EQ(std::tuple(usp.unit, usp.slot, usp.port), std::tuple(9, 13, 65535));
    for (uint64_t &counter : counters)
        EXPECT_EQ(rpcclt_openapiStatGet(&handle, 58, 1, &counter), 0);
    EXPECT_EQ(std::tuple(counters[0], counters[1]), std::tuple(0U, UINT64_MAX));
    name.size = 16;
    EXPECT_EQ(rpcclt_openapiLldpIntfRemoteDevicePortIdGet(&handle, 1, 1, &state, &name), 0);
    EXPECT_EQ(std::tuple(state, name.size, std::string(text)), std::tuple(5U, 16U, "a name longer t"));
}

TEST_F(Control, AFaultActsInItsTimeOnly)
{
    ASSERT_EQ(vsLoadText(R"({"units": {"1": {"model": "TK620-R01"}},
        "faults": [{"call": "openapiIfNameGet", "result": -5, "from": 10, "until": 20}]})"),
              "");
    for (auto [now, result] : {std::pair(9.0, 0), {10.0, -5}, {19.9, -5}, {20.0, 0}}) {
        vsClockSet(now);
        EXPECT_EQ(nameGet(1), result) << now;
    }
}

TEST_F(Control, ShowCommandsCanBeSpoiled)
{
    const std::string text = "one\ntwo\nthree\n";
    vsTextSet("show it", text);
    struct {
        VS_FAULT_T fault;
        int result;
        bool file;
        std::string text;
    } const rows[] = {
        {{"show that"}, 0, true, text},
        {{"show it"}, -1, false, ""},
        {{"openapiCliShowExecuteToFile", "show it", 0, VS_FAIL, -3}, -3, false, ""},
        {{"show it", "", 0, VS_NO_FILE}, 0, false, ""},
        {{"show it", "", 0, VS_EMPTY}, 0, true, ""},
        {{"show it", "", 0, VS_CUT, -1, 5}, 0, true, "one\nt"},
        {{"show it", "", 0, VS_CUT, -1, 500}, 0, true, text},
        {{"show it", "", 0, VS_CUT_PART, -1, 500}, 0, true, "one\ntwo"},
        {{"show it", "", 0, VS_CRLF}, 0, true, "one\r\ntwo\r\nthree\r\n"},
        {{"show it", "", 2, VS_EMPTY}, 0, true, text},
    };
    for (const auto &row : rows) {
        vsFaultsClear();
        vsFaultAdd(row.fault);
        SHOWN_T shown = show("show it");
        SCOPED_TRACE(row.fault.name + " " + std::to_string(row.fault.kind));
        EXPECT_EQ(shown.result, row.result);
        EXPECT_EQ(shown.file, row.file);
        EXPECT_EQ(shown.text, row.text);
    }
    vsFaultsClear();
    vsFaultAdd({"show it", "", 0, VS_GARBAGE});
    std::string garbage = show("show it").text;
    EXPECT_EQ(garbage.size(), text.size());
    EXPECT_NE(garbage, text);
    EXPECT_EQ(show("show it").text, garbage);
}

TEST_F(Control, LiteralTextsGoBeforeTheRendered)
{
    fileWrite(folder + "/v.txt", "from a file\r\n");
    fileWrite(folder + "/s.json",
              R"({"texts": {"show vlan": {"file": "v.txt"}, "show a": "x", "show b": ["1", "2"]}})");
    EXPECT_NE(show("show vlan").text.find("VLAN"), std::string::npos);
    ASSERT_EQ(vsLoadFile(folder + "/s.json"), "");
    EXPECT_EQ(show("show vlan").text, "from a file\r\n");
    EXPECT_EQ(show("show a").text, "x");
    EXPECT_EQ(show("show b").text, "1\n2\n");
}

// Files are looked at every tenth of a second; calls go on until the state has the name.
static bool becomes(const std::string &name)
{
    return waitUntil([&name]() {
        nameGet(1);
        return vsState().system.name == name;
    });
}

TEST_F(Control, AChangedFileIsReadAgainAndABadOneKeepsTheLastGoodState)
{
    std::string path = folder + "/s.json";
    fileWrite(folder + "/t.txt", "a");
    fileWrite(path, R"({"system": {"name": "one"}, "texts": {"show t": {"file": "t.txt"}}})");
    ASSERT_EQ(vsLoadFile(path), "");
    testing::internal::CaptureStderr();
    fileWrite(path, "{\n\"sistem\": {}}");
    usleep(150'000);
    for (int i = 0; i < 30; i++) {
        nameGet(1);
        usleep(10'000);
    }
    std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(vsState().system.name, "one");
    EXPECT_EQ(said.substr(0, said.find(": not a key")), "vswitch: " + path + ":2: sistem");
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
    testing::internal::CaptureStderr();
    fileWrite(path, R"({"system": {"name": "two"}, "texts": {"show t": {"file": "t.txt"}}})");
    EXPECT_TRUE(becomes("two"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "vswitch: " + path + ": right again, and read\n");
    fileWrite(folder + "/t.txt", "another");
    EXPECT_TRUE(waitUntil([this]() { return show("show t").text == "another"; }));
}
