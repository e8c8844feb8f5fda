#include "collectors/port/interfaces_status.h"
#include "support/build.h"

struct InterfacesStatus : BUILDER_TEST {
    void SetUp() override
    {
        state.units.resize(2);
        state.units[0].model = "TK830-T16";
        state.units[0].management = true;
        state.units[1].unit = 2;
        state.units[1].model = "TK830-T03";
        state.units[1].slots.resize(2);
        state.units[1].slots[0].model = "QMD-K3";
        state.units[1].slots[1].slot = 2;
        state.system.dot1x = true;
        portAdd(1, 1, 0, 1).linkUp = true;
        portAdd(2, 1, 0, 2).attached = false;
        VS_PORT_T &optical = portAdd(100, 2, 1, 1);
        optical.linkUp = true;
        optical.speed = 10;
        optical.switchMode = 3;
        optical.dot1xStatus = 2;
        optical.optic.present = true;
        optical.optic.compliance = "  10GBase-SR long \n";
        portAdd(101, 2, 2, 1);
        state.lags.resize(2);
        state.lags[0].ifNum = 200;
        state.lags[0].linkUp = true;
        state.lags[0].members = {100};
        state.lags[0].phantoms = {5000};
        state.lags[1].ifNum = 201;
        state.lags[1].number = 2;
    }
    static std::string document()
    {
        return documentOf(interfacesStatusBuild);
    }
};

static const char full[] =
    R"({"unit":[{"id":1,"slot":[{"id":0,"model":"TK830-T16","port":[)"
    R"({"id":1,"portNum":1,"portName":"1/0/1","linkState":0,"stpFwdState":"Forwding","freeze":false,)"
    R"("linkSpeed":"1000 Full","autoTrunk":0,"dot1xStatus":1,"portType":"Copper"},)"
    R"({"id":2,"portNum":2,"portName":"1/0/2","linkState":2,"stpFwdState":"Disable","freeze":true,)"
    R"("linkSpeed":"","autoTrunk":0,"dot1xStatus":1,"portType":""}]}]},)"
    R"({"id":2,"slot":[{"id":1,"model":"QMD-K3","port":[)"
    R"({"id":1,"portNum":100,"portName":"2/1/1","linkState":0,"stpFwdState":"Forwding","freeze":true,)"
    R"("linkSpeed":"10G Full","autoTrunk":1,"dot1xStatus":2,"portType":"10GBase-SR long"}]},)"
    R"({"id":2,"model":"TK830-T03","port":[)"
    R"({"id":1,"portNum":101,"portName":"2/2/1","linkState":1,"stpFwdState":"Disable","freeze":false,)"
    R"("linkSpeed":"","autoTrunk":0,"dot1xStatus":1,"portType":""}]}]}],)"
    R"("lag":[{"name":"lag 1","linkState":0,"stpFwdState":"Forwding","freeze":false},)"
    R"({"name":"lag 2","linkState":1,"stpFwdState":"Disable","freeze":false}]})";

TEST_F(InterfacesStatus, ShowsUnitsSlotsPortsAndLags)
{
    vsCallsReset();
    EXPECT_EQ(document(), full);
    EXPECT_EQ(logText(), "");
    // whatever holds for all ports is read once
    for (const char *call : {"rpcclt_openapiDot1xSystemAuthControlModeGet", "rpcclt_openapiBoxsSfpComplianceSizeGet",
                             "rpcclt_openapiLagMaxMemberCountGet"})
        EXPECT_EQ(vsCallCount(call), 1u) << call;
}

TEST_F(InterfacesStatus, FailedReadGivesItsDefault)
{
    const char *const frozen = R"("freeze":true,"linkSpeed":"10G)", *const free = R"("freeze":false,"linkSpeed":"10G)";
    const struct {
        VS_FAULT_T fault;
        const char *had, *has;
    } cases[] = {
        {{"openapiIfNameGet", "1"}, R"("1/0/1")", R"("if-1")"},
        {{"openapiIfNameGet", "201"}, R"("lag 2")", R"("if-201")"},
        {{"openapiIfLinkStateGet", "1"},
         R"("linkState":0,"stpFwdState":"Forwding","freeze":false,"linkSpeed":"1000 Full","autoTrunk":0,)"
         R"("dot1xStatus":1,"portType":"Copper")",
         R"("linkState":1,"stpFwdState":"Disable","freeze":false,"linkSpeed":"","autoTrunk":0,)"
         R"("dot1xStatus":1,"portType":"")"},
        {{"openapiIfLinkStateGet", "200"},
         R"("lag 1","linkState":0,"stpFwdState":"Forwding")",
         R"("lag 1","linkState":1,"stpFwdState":"Disable")"},
        {{"rpcclt_openapiDot1SIntfPortFwdStateGet", "1"}, R"("Forwding")", R"("Unknown")"},
        {{"openapiIfSpeedGet", "1"}, R"("1000 Full")", R"("")"},
        {{"rpcclt_openapiDot1qSwPortModeGet", "100"}, R"("autoTrunk":1)", R"("autoTrunk":0)"},
        {{"rpcclt_openapiAuthMgrPortStatusGet", "100"}, R"("dot1xStatus":2)", R"("dot1xStatus":3)"},
        {{"rpcclt_openapiBoxsSfpComplianceGet", "100"}, R"("10GBase-SR long")", R"("Copper")"},
        {{"rpcclt_openapiBoxsSfpComplianceSizeGet", ""}, "", ""},    // the largest size is asked for
        {{"rpcclt_openapiUnitMgrPreconfigModelIdGet", "1"}, "", ""}, // the machine's model is unit 1's
        {{"rpcclt_openapiCardSupportedCardModelIdGet", ""}, R"("QMD-K3")", R"("TK830-T03")"},
        {{"rpcclt_openapiLagMaxMemberCountGet", ""}, frozen, free},
        {{"rpcclt_openapiLagMembersGet", "200"}, frozen, free},
    };
    for (const auto &one : cases) {
        vsFaultAdd(one.fault);
        EXPECT_EQ(document(), changed(full, {one.had, one.has})) << one.fault.name << " " << one.fault.key;
        vsFaultsClear();
    }
}

TEST_F(InterfacesStatus, WalksEndOrPassOverWhereThePlatformFails)
{
    const std::string text = full;
    const size_t lags = text.find(R"("lag":[{)");
    const struct {
        VS_FAULT_T fault;
        std::string document;
    } cases[] = {
        {{"openapiIfFirstGet", "0"}, R"({"unit":[],)" + text.substr(lags)},
        {{"openapiIfFirstGet", "2"}, text.substr(0, lags) + R"("lag":[]})"}, // the members are known all the same
        {{"rpcclt_openapiHashIntfUnitSlotPortGet", "101"},
         text.substr(0, text.find(R"(,{"id":2,"model")")) + "]}]," + text.substr(lags)},
        {{"*"}, R"({"unit":[],"lag":[]})"},
    };
    for (const auto &one : cases) {
        vsFaultAdd(one.fault);
        EXPECT_EQ(document(), one.document) << one.fault.name << " " << one.fault.key;
        vsFaultsClear();
    }
    portAdd(150, 9, 0, 1); // nor has a document a place for these
    portAdd(151, 2, 13, 1);
    EXPECT_EQ(document(), full);
}

TEST_F(InterfacesStatus, TextsFollowWhatThePlatformSays)
{
    VS_PORT_T &copper = vsState().ports[0], &optical = vsState().ports[2];
    for (const auto &[code, speed] : {std::pair(0, ""), {6, "100 Full"}, {16, "155"}, {19, "LAG"}, {20, ""}}) {
        copper.speed = static_cast<uint32_t>(code);
        EXPECT_EQ(document(), changed(full, {"1000 Full", speed})) << code;
    }
    copper.speed = 7;
    for (const auto &[compliance, type] :
         {std::pair("\t 1000Base-LX/LH with more", "1000Base-LX/LH "), {" \t ", "Copper"}, {"", "Copper"}}) {
        optical.optic.compliance = compliance;
        EXPECT_EQ(document(), changed(full, {"10GBase-SR long", type})) << compliance;
    }
    vsState().system.dot1x = false; // no port is asked then
    vsCallsReset();
    EXPECT_EQ(document().find(R"("dot1xStatus":1)"), std::string::npos);
    EXPECT_EQ(vsCallCount("rpcclt_openapiAuthMgrPortStatusGet"), 0u);
}

// Without memory there is no document. Only the buffer of LAG members may be missed: no member is frozen then.
TEST_F(InterfacesStatus, NoMemoryGivesNoDocument)
{
    EXPECT_EQ(interfacesStatusBuild(nullptr, nullptr), 10003);
    expectNoDocumentWithoutMemory(interfacesStatusBuild, -7);
    allocFailAt(0, ALLOC_OWN);
    std::string text = document();
    EXPECT_TRUE(allocFailStop());
    EXPECT_EQ(text, changed(full, {R"("freeze":true,"linkSpeed":"10G)", R"("freeze":false,"linkSpeed":"10G)"}));
}
