#include "collectors/feature/multicast.h"
#include "collectors/feature/multicast_groups.h"
#include "restcache/store.h"
#include "support/build.h"

struct Multicast : BUILDER_TEST {
    void SetUp() override
    {
        state.units.resize(2);
        state.units[0].unit = 1;
        state.units[1].unit = 2;
        portAdd(3, 1, 0, 3);
        portAdd(7, 2, 0, 3);
        portAdd(8, 2, 3, 5);
        for (VS_PORT_T &port : state.ports)
            port.mrouter = true;
        state.lags.resize(3);
        for (uint32_t number : {1, 2, 3})
            state.lags[number - 1].ifNum = 800 + number;
        state.lags[2].mrouter = true;
        state.acls = {{4, "OTHER", {"224.0.0.0"}, {3}}, {5, "NET-BLOCK", {"239.0.0.0", "232.0.0.0"}, {8, 802, 3}}};
        groupAdd(3, 2, {{0x0A000001, "02:00:00:00:00:01"}, {0x0A000002, "02:00:00:00:00:0F"}});
        groupAdd(802, 3, {});
        groupAdd(8, 1, {{0xC0A80102, "02:00:00:00:00:02"}});
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }
    static void groupAdd(uint32_t ifNum, uint32_t version, const std::vector<VS_SUBSCRIBER_T> &subscribers)
    {
        uint32_t number = static_cast<uint32_t>(vsState().groups.size());
        vsState().groups.push_back({ifNum, 1, 0xEF010101 + number, version, 200 + number, subscribers, {}});
    }
    // Rows of the only groups record; "?" when it is not the only one.
    static std::string groupRows()
    {
        CLIENT_HANDLE_T client = {};
        EXPECT_EQ(mgeWriteChunks(&client), 0);
        std::string text = cacheRead("multicast_groups_ex/0");
        size_t head = strlen(R"({"multicastGroups":{"rows":[)");
        size_t end = text.find(R"(],"chunkIndex":0,"isLastChunk":true},"resp":{)");
        return end == std::string::npos ? "?" : text.substr(head, end - head);
    }
};

// Blocked interfaces as listed, then router ports by their number in the stack.
TEST_F(Multicast, ModeOfPortsAndLags)
{
    const std::string blocked = R"({"portNum":8,"multicastMode":2},{"portNum":3,"multicastMode":2})";
    const std::string port3 = R"({"portNum":3,"multicastMode":1})", lag3 = port3;
    const std::string port7 = R"({"portNum":55,"multicastMode":1})", port8 = R"({"portNum":73,"multicastMode":1})";
    const std::string lag2 = R"({"portNum":2,"multicastMode":2})", both = lag2 + "," + lag3, comma = ",";
    const std::string routers = port3 + "," + port7 + "," + port8;
    const std::tuple<VS_FAULT_T, std::string, std::string> cases[] = {
        {{"no such call"}, blocked + comma + routers, both},
        {{"rpcclt_openapiAclGet", "NET-BLOCK"}, routers, lag3},
        {{"rpcclt_openapiAclAssignedIntfDirListGet", "5"}, routers, lag3},
        {{"rpcclt_openapiSnoopIntfMrouterStatusGet", "7"}, blocked + comma + port3 + comma + port8, both},
        {{"rpcclt_openapiHashIntfUnitSlotPortGet", "3"}, blocked + comma + port7 + comma + port8, both},
        {{"openapiIfFirstGet", "0"}, blocked, both},
        {{"openapiIfNextGet", "802"}, blocked + comma + routers, lag2},
    };
    for (const auto &[fault, ports, lags] : cases) {
        vsFaultAdd(fault);
        EXPECT_EQ(documentOf(getMulticastModeEx), R"({"physicalPort":[)" + ports + R"(],"lagPort":[)" + lags + "]}");
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
    const auto document = [] {
        return documentOf(getDenyList);
    };
    const std::vector<std::string> none = {found, "[]"};
    expectFailures(document, found,
                   {{{"rpcclt_openapiAclGet"}, {}},
                    {{"rpcclt_openapiAclGet", "", 0, VS_FAIL, OPENCLT_NOT_PRESENT}, none},
                    {{show}, none},
                    {{show, "", 0, VS_NO_FILE}, none},
                    {{show, "", 0, VS_CRLF}, {}}});
    expectShown(show, document,
                {{odd, R"(["1.2.3.4/8","\"\\\u0001/8"])"},
                 {longer, R"(["123456789012345678/8","1234567890123456789/","12345678901234567890"])"}});
    EXPECT_FALSE(filesLeft());
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
    const std::string all = lead + "," + groups[2] + "," + groups[3], second = "," + groups[2];
    expectFailures(groupRows, all,
                   {{{"none"}, {}},
                    {{"openapiIfFirstGet", "2"}, {second, ""}},
                    {{"openapiIfFirstGet", "0"}, {all, groups[2]}},
                    {{"rpcclt_openapiHashIntfUnitSlotPortGet", "8"}, {"," + groups[3], ""}},
                    {{"rpcclt_openapiSnoopingGroupNextGet", "239.1.1.1"}, {all, lead}}});
    vsState().groups.clear();
    groupAdd(3, 2, std::vector<VS_SUBSCRIBER_T>(40));
    std::string rows = groupRows();
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '{'), 32);
}

TEST_F(Multicast, MissingMemory)
{
    const std::tuple<BUILDER_TEXT_T, int, const char *> cases[] = {
        {getMulticastModeEx, 5, "(ERROR) buildMulticastModeJson: getMulticastMode response str error\n"},
        {getDenyList, 1, "(ERROR) getDenyList: getDenyList response str error\n"}};
    for (const auto &[builder, containers, line] : cases) {
        for (int n : {containers - 1, containers}) {
            logClear();
            allocFailAt(n, ALLOC_CJSON);
            BUILT_T built = buildText(builder);
            EXPECT_EQ(built.result, n < containers ? 10002 : 0) << n;
            EXPECT_EQ(built.text, "") << n;
            EXPECT_EQ(logText(), n < containers ? "" : line) << n;
        }
    }
    logClear();
    allocFailAt(0, ALLOC_OWN);
    EXPECT_EQ(mgeWriteChunks(&handle), 10000);
    allocFailAt(1, ALLOC_OWN);
    EXPECT_EQ(groupRows(), "");
    EXPECT_EQ(logText(), "(ERROR) mgeWriteChunks: multicast_groups_ex: no memory for the rows\n"
                         "(ERROR) mgeCollectGroups: multicast_groups_ex: no memory for the interfaces\n");
}
