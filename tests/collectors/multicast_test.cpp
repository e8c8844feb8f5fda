#include "collectors/feature/multicast.h"
#include "collectors/feature/multicast_groups.h"
#include "restcache/store.h"
#include "support/build.h"
#include "support/root.h"

#include "control.h"
#include "model.h"

#include <filesystem>
#include <gtest/gtest.h>

class Multicast : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText("{}"), "");
        VS_STATE_T &state = vsState();
        state = VS_STATE_T();
        for (uint32_t number : {1, 2}) {
            VS_UNIT_T unit;
            unit.unit = number;
            state.units.push_back(unit);
        }
        portAdd(3, 1, 0, 3);
        portAdd(7, 2, 0, 3);
        portAdd(8, 2, 3, 5);
        for (uint32_t number : {1, 2, 3}) {
            VS_LAG_T lag;
            lag.ifNum = 800 + number;
            lag.mrouter = number == 3;
            state.lags.push_back(lag);
        }
        state.acls = {{4, "OTHER", {"224.0.0.0"}, {3}}, {5, "NET-BLOCK", {"239.0.0.0", "232.0.0.0"}, {8, 802, 3}}};
        groupAdd(3, 2, {{0x0A000001, "02:00:00:00:00:01"}, {0x0A000002, "02:00:00:00:00:0F"}});
        groupAdd(802, 3, {});
        groupAdd(8, 1, {{0xC0A80102, "02:00:00:00:00:02"}});
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }
    void TearDown() override
    {
        vsUnload();
    }
    static void portAdd(uint32_t ifNum, uint32_t unit, uint32_t slot, uint32_t number)
    {
        VS_PORT_T port;
        port.ifNum = ifNum;
        port.unit = unit;
        port.slot = slot;
        port.port = number;
        port.mrouter = true;
        vsState().ports.push_back(port);
    }
    static void groupAdd(uint32_t ifNum, uint32_t version, const std::vector<VS_SUBSCRIBER_T> &subscribers)
    {
        uint32_t number = static_cast<uint32_t>(vsState().groups.size());
        vsState().groups.push_back({ifNum, 1, 0xEF010101 + number, version, 200 + number, subscribers, {}});
    }
    // Rows of the only groups record; "?" when it is not the only one.
    static std::string groupRows()
    {
        CLIENT_HANDLE_T handle = {};
        EXPECT_EQ(mgeWriteChunks(&handle), 0);
        std::string text = cacheRead("multicast_groups_ex/0");
        size_t head = strlen(R"({"multicastGroups":{"rows":[)");
        size_t end = text.find(R"(],"chunkIndex":0,"isLastChunk":true},"resp":{)");
        return end == std::string::npos ? "?" : text.substr(head, end - head);
    }
    TEST_ROOT_T root;
};

// Blocked interfaces as listed, then router ports by their number in the stack.
TEST_F(Multicast, ModeOfPortsAndLags)
{
    const std::string blocked = R"({"portNum":8,"multicastMode":2},{"portNum":3,"multicastMode":2})";
    const std::string port3 = R"({"portNum":3,"multicastMode":1})", lag3 = port3;
    const std::string port7 = R"({"portNum":55,"multicastMode":1})", port8 = R"({"portNum":73,"multicastMode":1})";
    const std::string lag2 = R"({"portNum":2,"multicastMode":2})", both = lag2 + "," + lag3, comma = ",";
    const std::string routers = port3 + "," + port7 + "," + port8;
    struct {
        VS_FAULT_T fault;
        std::string ports, lags;
    } cases[] = {
        {{"no such call"}, blocked + comma + routers, both},
        {{"rpcclt_openapiAclGet", "NET-BLOCK"}, routers, lag3},
        {{"rpcclt_openapiAclAssignedIntfDirListGet", "5"}, routers, lag3},
        {{"rpcclt_openapiSnoopIntfMrouterStatusGet", "7"}, blocked + comma + port3 + comma + port8, both},
        {{"rpcclt_openapiHashIntfUnitSlotPortGet", "3"}, blocked + comma + port7 + comma + port8, both},
        {{"openapiIfFirstGet", "0"}, blocked, both},
        {{"openapiIfNextGet", "802"}, blocked + comma + routers, lag2},
    };
    for (const auto &one : cases) {
        vsFaultAdd(one.fault);
        EXPECT_EQ(buildText(getMulticastModeEx).text,
                  "{\"physicalPort\":[" + one.ports + "],\"lagPort\":[" + one.lags + "]}")
            << one.fault.name << " " << one.fault.key;
        vsFaultsClear();
    }
    logClear();
    vsFaultAdd({"openapiIfFirstGet", "2"});
    EXPECT_EQ(buildText(getMulticastModeEx).result, 10000);
    EXPECT_EQ(logText(), "(ERROR) buildMulticastModeJson: Bad return code trying to get first LAG interface. "
                         "(result = -1)\n");
}

TEST_F(Multicast, DeniedAddressesOfTheBlockList)
{
    const char show[] = "show ip access-list NET-BLOCK", found[] = R"(["239.0.0.0/8","232.0.0.0/8"])";
    const std::string begin = "Destination IP Address.... ", next = "\n" + begin, digits = "12345678901234567890";
    const std::string odd = begin + next + "1.2.3.4 5.6.7.8\n " + begin + "5.0.0.0" + next + "\"\\\001" + next;
    const std::string longer = begin + digits.substr(0, 18) + next + digits.substr(0, 19) + next + digits + "1";
    struct {
        VS_FAULT_T fault;
        std::string text; // "": as the switch prints it
        const char *document;
    } cases[] = {
        {{"no such call"}, "", found},
        {{"rpcclt_openapiAclGet"}, "", found},
        {{"rpcclt_openapiAclGet", "", 0, VS_FAIL, OPENCLT_NOT_PRESENT}, "", "[]"},
        {{show}, "", "[]"},
        {{show, "", 0, VS_NO_FILE}, "", "[]"},
        {{show, "", 0, VS_CRLF}, "", found},
        {{"no such call"}, odd, R"(["1.2.3.4/8","\"\\\u0001/8"])"},
        {{"no such call"}, longer, R"(["123456789012345678/8","1234567890123456789/","12345678901234567890"])"},
    };
    for (const auto &one : cases) {
        vsFaultAdd(one.fault);
        if (!one.text.empty())
            vsTextSet(show, one.text);
        EXPECT_EQ(buildText(getDenyList).text, one.document) << one.fault.name << one.text;
        EXPECT_TRUE(std::filesystem::is_empty(root.dir + "/mnt/application/kelo/tmp"));
        vsFaultsClear();
    }
}

static const std::string groupHead = R"({"unit":1,"port":"3","vlanId":1,"subscriberAddress":)";
static const std::string groupTail = R"("multicastAddress":"239.1.1.1","multicastMacAddress":"01:00:5E:01:01:01",)"
                                     R"("type":"IGMPv2","timeout":200})";
static const std::string groups[] = {
    groupHead + R"("10.0.0.1","subscriberMacAddress":"02:00:00:00:00:01",)" + groupTail,
    groupHead + R"("10.0.0.2","subscriberMacAddress":"02:00:00:00:00:0F",)" + groupTail,
    R"({"unit":1,"port":"lag2","vlanId":1,"subscriberAddress":"","subscriberMacAddress":"",)"
    R"("multicastAddress":"239.1.1.2","multicastMacAddress":"01:00:5E:01:01:02","type":"IGMPv3","timeout":null})",
    R"({"unit":2,"port":"3/5","vlanId":1,"subscriberAddress":"192.168.1.2",)"
    R"("subscriberMacAddress":"02:00:00:00:00:02","multicastAddress":"239.1.1.3",)"
    R"("multicastMacAddress":"01:00:5E:01:01:03","type":"IGMPv1","timeout":202})",
};

TEST_F(Multicast, GroupsGiveARowForEachSubscriber)
{
    const std::string lead = groups[0] + "," + groups[1];
    groupAdd(896, 2, {}); // beyond the table of interfaces
    groupAdd(5, 2, {});   // no interface of the switch
    struct {
        VS_FAULT_T fault;
        std::string rows;
    } cases[] = {
        {{"no such call"}, lead + "," + groups[2] + "," + groups[3]},
        {{"openapiIfFirstGet", "2"}, lead + "," + groups[3]},
        {{"openapiIfFirstGet", "0"}, groups[2]},
        {{"rpcclt_openapiHashIntfUnitSlotPortGet", "8"}, lead + "," + groups[2]},
        {{"rpcclt_openapiSnoopingGroupNextGet", "239.1.1.1"}, lead},
    };
    for (const auto &one : cases) {
        vsFaultAdd(one.fault);
        EXPECT_EQ(groupRows(), one.rows) << one.fault.name << " " << one.fault.key;
        vsFaultsClear();
    }
    vsState().groups.clear();
    groupAdd(3, 2, std::vector<VS_SUBSCRIBER_T>(40));
    std::string rows = groupRows();
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '{'), 32);
}

// A container that cannot be created is 10002; whatever is lost later leaves no text, with result 0 and a line. The
// groups lose the one row.
TEST_F(Multicast, MissingMemory)
{
    struct {
        BUILDER_TEXT_T builder;
        int containers; // allocations up to the last container
        const char *line;
    } cases[] = {{getMulticastModeEx, 5, "(ERROR) buildMulticastModeJson: getMulticastMode response str error\n"},
                 {getDenyList, 1, "(ERROR) getDenyList: getDenyList response str error\n"}};
    bool reached = true;
    for (const auto &one : cases) {
        for (int n = 0; reached || n == 0; n++) {
            logClear();
            allocFailAt(n, ALLOC_CJSON);
            BUILT_T built = buildText(one.builder);
            reached = allocFailStop();
            EXPECT_EQ(built.result, n < one.containers ? 10002 : 0) << n;
            EXPECT_EQ(built.text.empty(), reached) << n;
            EXPECT_EQ(logText(), reached && n >= one.containers ? one.line : "") << n;
        }
    }
    for (int n = 0; reached || n == 0; n++) {
        allocFailAt(n, ALLOC_CJSON);
        std::string rows = groupRows();
        reached = allocFailStop();
        EXPECT_EQ(std::count(rows.begin(), rows.end(), '}'), reached ? 3 : 4) << n;
        EXPECT_NE(compact("[" + rows + "]"), "(not JSON)") << rows;
    }
    CLIENT_HANDLE_T handle = {};
    logClear();
    allocFailAt(0, ALLOC_OWN);
    EXPECT_EQ(mgeWriteChunks(&handle), 10000);
    allocFailAt(1, ALLOC_OWN);
    EXPECT_EQ(groupRows(), "");
    EXPECT_EQ(logText(), "(ERROR) mgeWriteChunks: multicast_groups_ex: no memory for the rows\n"
                         "(ERROR) mgeCollectGroups: multicast_groups_ex: no memory for the interfaces\n");
}
