#include "collectors/port/interfaces_status.h"
#include "support/build.h"

// Port 1/0/1 up; an optical port of a card of unit 2, member of LAG 200; LAG 201 without members.
struct InterfacesStatus : BUILDER_TEST {
    void SetUp() override
    {
        state.units.resize(2);
        state.units[0].model = "TK830-T16";
        state.units[0].management = true;
        state.units[1].unit = 2;
        state.units[1].model = "TK830-T03";
        state.units[1].slots.resize(1);
        state.units[1].slots[0].model = "QMD-K3";
        state.system.dot1x = true;
        portAdd(1, 1, 0, 1).linkUp = true;
        VS_PORT_T &optical = portAdd(100, 2, 1, 1);
        optical.linkUp = true;
        optical.speed = 10;
        optical.switchMode = 3;
        optical.dot1xStatus = 2;
        optical.optic.present = true;
        optical.optic.compliance = "  10GBase-SR long \n";
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

static const char units[] =
    R"({"unit":[{"id":1,"slot":[{"id":0,"model":"TK830-T16","port":[)"
    R"({"id":1,"portNum":1,"portName":"1/0/1","linkState":0,"stpFwdState":"Forwding","freeze":false,)"
    R"("linkSpeed":"1000 Full","autoTrunk":0,"dot1xStatus":1,"portType":"Copper"}]}]},)"
    R"({"id":2,"slot":[{"id":1,"model":"QMD-K3","port":[)"
    R"({"id":1,"portNum":100,"portName":"2/1/1","linkState":0,"stpFwdState":"Forwding","freeze":true,)"
    R"("linkSpeed":"10G Full","autoTrunk":1,"dot1xStatus":2,"portType":"10GBase-SR long"}]}]}],)";
static const char lags[] = R"("lag":[{"name":"lag 1","linkState":0,"stpFwdState":"Forwding","freeze":false},)"
                           R"({"name":"lag 2","linkState":1,"stpFwdState":"Disable","freeze":false}]})";
static const std::string full = std::string(units) + lags;

TEST_F(InterfacesStatus, FailedReadGivesItsDefault)
{
    const std::vector<std::string> unfrozen = {R"("freeze":true,"linkSpeed":"10G)",
                                               R"("freeze":false,"linkSpeed":"10G)"};
    expectFailures(
        document, full,
        {
            {{"openapiIfNameGet", "1"}, {R"("1/0/1")", R"("if-1")"}},
            {{"openapiIfNameGet", "201"}, {R"("lag 2")", R"("if-201")"}},
            {{"openapiIfLinkStateGet", "1"},
             {R"(State":0)", R"(State":1)", "Forwding", "Disable", "1000 Full", "", "Copper", ""}},
            {{"openapiIfLinkStateGet", "200"},
             {R"(lag 1","linkState":0,"stpFwdState":"Forwding")", R"(lag 1","linkState":1,"stpFwdState":"Disable")"}},
            {{"rpcclt_openapiDot1SIntfPortFwdStateGet", "1"}, {"Forwding", "Unknown"}},
            {{"openapiIfSpeedGet", "1"}, {"1000 Full", ""}},
            {{"rpcclt_openapiDot1qSwPortModeGet", "100"}, {R"("autoTrunk":1)", R"("autoTrunk":0)"}},
            {{"rpcclt_openapiAuthMgrPortStatusGet", "100"}, {R"("dot1xStatus":2)", R"("dot1xStatus":3)"}},
            {{"rpcclt_openapiBoxsSfpComplianceGet", "100"}, {"10GBase-SR long", "Copper"}},
            {{"rpcclt_openapiBoxsSfpComplianceSizeGet"}, {}},        // the largest size is asked for
            {{"rpcclt_openapiUnitMgrPreconfigModelIdGet", "1"}, {}}, // the machine's model is unit 1's
            {{"rpcclt_openapiCardSupportedCardModelIdGet"}, {"QMD-K3", "TK830-T03"}},
            {{"rpcclt_openapiLagMaxMemberCountGet"}, unfrozen},
            {{"rpcclt_openapiLagMembersGet", "200"}, unfrozen},
            // walks end, or pass over
            {{"openapiIfFirstGet", "0"}, {units, R"({"unit":[],)"}},
            {{"openapiIfFirstGet", "2"}, {lags, R"("lag":[]})"}}, // the members are known all the same
            {{"*"}, {full, R"({"unit":[],"lag":[]})"}},
        });
    portAdd(150, 9, 0, 1); // a document has no place for these
    portAdd(151, 2, 13, 1);
    EXPECT_EQ(document(), full);
}

TEST_F(InterfacesStatus, TextsFollowWhatThePlatformSays)
{
    VS_PORT_T &copper = vsState().ports[0], &optical = vsState().ports[1];
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
}
