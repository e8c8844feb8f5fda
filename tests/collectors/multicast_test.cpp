#include "collectors/feature/multicast.h"
#include "collectors/feature/multicast_groups_ex.h"
#include "restcache/store.h"
#include "support/build.h"

struct Multicast : BUILDER_TEST {
    void SetUp() override
    {
        state.units.resize(2);
        state.units[1].unit = 2;
        portAdd(3, 1, 0, 3);
        portAdd(7, 2, 0, 3);
        portAdd(8, 2, 3, 5);
        for (VS_PORT_T &port : state.ports)
            port.mrouter = true;
        for (uint32_t number : {1, 2, 3})
            state.lags.emplace_back().ifNum = 800 + number;
        state.lags[2].mrouter = true;
        state.acls = {{4, "OTHER", {"224.0.0.0"}, {3}}, {5, "NET-BLOCK", {"239.0.0.0", "232.0.0.0"}, {8, 802, 3}}};
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }
    static void groupAdd(uint32_t ifNum, uint32_t version, const std::vector<VS_SUBSCRIBER_T> &subscribers)
    {
        uint32_t number = static_cast<uint32_t>(vsState().groups.size());
        vsState().groups.push_back({ifNum, 1, 0xEF010101 + number, version, "", 200 + number, subscribers, {}});
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
        {{"openapiIfFirstGet", "0"}, blocked, both},
        {{"openapiIfNextGet", "802"}, blocked + comma + routers, lag2},
    };
    for (const auto &[fault, ports, lags] : cases) {
        vsFaultAdd(fault);
        EXPECT_EQ(documentOf(getMulticastModeEx), R"({"physicalPort":[)" + ports + R"(],"lagPort":[)" + lags + "]}");
        vsFaultsClear();
    }
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
                   {{{"rpcclt_openapiAclGet"}, {}}, {{show}, none}, {{show, "", 0, VS_NO_FILE}, none}});
    expectShown(show, document,
                {{odd, R"(["1.2.3.4/8","\"\\\u0001/8"])"},
                 {longer, R"(["123456789012345678/8","1234567890123456789/","12345678901234567890"])"}});
}

TEST_F(Multicast, GroupsGiveARowForEachSubscriber)
{
    const std::string lagRow = R"({"unit":1,"port":"lag2","vlanId":1,"subscriberAddress":"","subscriberMacAddress":"",)"
                               R"("multicastAddress":"239.1.1.1","multicastMacAddress":"01:00:5E:01:01:01",)"
                               R"("type":"IGMP-V3 queriers","timeout":null})";
    groupAdd(802, 2, {});
    state.groups[0].type = "IGMP-V3 queriers"; // no terminator in its field
    groupAdd(896, 2, {});                      // beyond the table of interfaces
    groupAdd(5, 2, {});                        // no interface of the switch
    EXPECT_EQ(groupRows(), lagRow);
    state.groups.clear();
    groupAdd(3, 2, std::vector<VS_SUBSCRIBER_T>(40));
    std::string rows = groupRows();
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '{'), 32);
}
