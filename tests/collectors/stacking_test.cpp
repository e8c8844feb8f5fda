#include "collectors/system/stacking.h"
#include "restcache/store.h"
#include "support/build.h"

//                                  1         2         3         4         5         6
//                        01234567890123456789012345678901234567890123456789012345678901234567890
static const char switchText[] = "\n"
                                 "    Management  Standby   Preconfig        Plugged-in       Switch\n"
                                 "SW  Switch      Status    Model ID         Model ID         Status\n"
                                 "--- ----------- --------- ---------------- ---------------- -----------\n"
                                 "1   Mgmt Sw               TK830-T16        TK830-T16        OK\n"
                                 "2   Stack Mbr   Oper Stby TK830-S52        TK830-S52        OK\n"
                                 "3   Stack Mbr             TK830-T16                         Not Present\n";

static const char detailText[] = "Switch............................ 1\n"
                                 "Management Status................. Management Switch\n"
                                 "Preconfigured Model Identifier.... TK830-T16\n"
                                 "Switch Status..................... OK\n"
                                 "Detected Code in Flash............ 8.4.3.50\n"
                                 "Serial Number..................... 5B31A57L00042\n"
                                 "Up Time........................... 0 days 1 hrs 2 mins 3 secs\n"
                                 "\n"
                                 "Switch............................ 2\r\n"
                                 "Management Status................. Stack Member\r\n"
                                 "Switch Status..................... Not Present\r\n"
                                 "Detected Code in Flash............ 8.4.3.50.123456789\r\n"
                                 "Serial Number\r\n"
                                 "Up Time........................... 12 days 3 hrs\r\n";

static const char stackPortHead[] = "Unit Interface  Configured Mode\n"
                                    "---- ---------- ---------------\n";

struct Stacking : BUILDER_TEST {
    void SetUp() override
    {
        vsState().system.bootVersion = "B1.0.0.9";
        vsTextSet("show switch", switchText);
        vsTextSet("show switch detail", detailText);
        vsTextSet("show stack-port", std::string(stackPortHead) + "1    0/15       Stack\n2    2/1/7      Stack\n");
    }
    static std::string document()
    {
        return documentOf(getStacking);
    }
    std::string stackPorts(uint32_t unit, int result)
    {
        OWNED_JSON array(cJSON_CreateArray());
        EXPECT_EQ(getStackPortInfo(&handle, unit, array.get()), result);
        return OWNED_TEXT(cJSON_PrintUnformatted(array.get())).get();
    }
};

static const char unitList[] =
    R"([{"unit":1,"model":"TK830-T16","management":true,"standby":false,"active":true,"fwVer":"8.4.3.50",)"
    R"("bootVer":"B1.0.0.9","sn":"5B31A57L00042","upTime":"0 days, 1 hrs, 2 mins, 3 secs","stackPortList":["1/0/15"]},)"
    R"({"unit":2,"model":"TK830-S52","management":false,"standby":true,"active":true,"fwVer":"8.4.3.50.1234567",)"
    R"("bootVer":"B1.0.0.9","sn":"","upTime":"12 days, 3 hrs, 0 mins, 0 secs","stackPortList":["2/1/7"]},)"
    R"({"unit":3,"model":"TK830-T16","management":false,"standby":false,"active":false,"stackPortList":[]}])";

TEST_F(Stacking, SwitchRowsAreTakenOrLeft)
{
    const std::string rule = "--- -----------\n";
    vsTextSet("show switch detail", "");
    vsFaultAdd({"show stack-port"});
    const std::string none = R"("management":false,"standby":false,"active":false,"stackPortList":[]}])";
    expectShown(
        "show switch", document,
        {
            {rule + "0   Mgmt Sw\n9   Mgmt Sw\n-1  Mgmt Sw\n99999999999 Mgmt Sw\n\nx\n", "[]"},
            {"1   Mgmt Sw               TK830-T16        TK830-T16        OK\n", "[]"}, // no rule
            {"", "[]"},
            // a short row has no model and is not active
            {rule + "4", R"([{"unit":4,"model":"",)" + none},
            {rule + "4   Mgmt Sw     Oper Stby  X Y\r\n",
             R"([{"unit":4,"model":"X Y","management":true,"standby":true,"active":false,"stackPortList":[]}])"},
            {rule + "4    Mgmt Sw     Oper Stby\n", R"([{"unit":4,"model":"",)" + none}, // one column beside its place
        });
}

TEST_F(Stacking, DetailsBelongToTheUnitAboveThem)
{
    const std::string label = "Switch............................ ";
    const std::string serial = "Serial Number..................... ";
    UNIT_INFO_RECORD_T records[STACK_UNITS] = {};
    vsTextSet("show switch detail", serial + "first\n" + label + "9\n" + serial + "nobody\n" + label + "8\n" + serial +
                                        std::string(990, 's') + "\nManagement Status................. Stack\n" + label +
                                        "0\n" + serial + "nobody\n");
    unitInfoGet(&handle, records);
    EXPECT_STREQ(records[0].serialNumber, "first"); // before any unit line it is unit 1's, whose record stays empty
    EXPECT_EQ(records[0].unit, 0u);
    EXPECT_EQ(records[7].unit, 8u);
    EXPECT_EQ(std::string(records[7].serialNumber), std::string(255, 's'));
    EXPECT_EQ(records[7].isManagement, 0);
}

// Unit 3 has no section of details, so it lacks the version keys; the others lack them without the command.
TEST_F(Stacking, MissingDetailsLeaveTheVersionsOut)
{
    const std::vector<std::string> bare = {
        R"("fwVer":"8.4.3.50","bootVer":"B1.0.0.9","sn":"5B31A57L00042","upTime":"0 days, 1 hrs, 2 mins, 3 secs",)", "",
        R"("fwVer":"8.4.3.50.1234567","bootVer":"B1.0.0.9","sn":"","upTime":"12 days, 3 hrs, 0 mins, 0 secs",)", ""};
    expectFailures(document, unitList,
                   {{{"none"}, {}},
                    {{"show switch detail"}, bare},
                    {{"show switch detail", "", 0, VS_NO_FILE}, bare},
                    {{"show switch detail", "", 0, VS_EMPTY}, bare}});
    EXPECT_FALSE(filesLeft());
    expectNoDocumentWithoutMemory(getStacking, 10002);
}

TEST_F(Stacking, StackPortRows)
{
    const std::string head = stackPortHead;
    expectShown(
        "show stack-port", [this] { return stackPorts(1, 0); },
        {
            {head + "1    1/0/15     Stack\n1    0/16       Stack\n2    0/17       Stack\n", R"(["1/0/15","1/0/16"])"},
            {head + "1    3/0/15     Stack\n", R"(["3/0/15"])"},
            {head + "1    12/13/1415 Stack\n", R"(["12/13/141"])"},
            {head + "1    Stack\n1    15\n1\n\n1    0/2\r\n", R"(["1/0/2"])"},
            {head + "11   0/2\n", "[]"},
            {head, "[]"},
            {"1    0/2       Stack\n", "[]"}, // no rule
        });
    EXPECT_EQ(logText(), "");
}

TEST_F(Stacking, StackPortFailures)
{
    struct {
        const char *text;
        VS_FAULT_KIND kind;
        int result;
        std::string log;
    } cases[] = {
        {"x", VS_FAIL, 10000,
         "(ERROR) cliShowExecuteToFile: Execute show cmd faile, result:-1\n"
         "(ERROR) getStackPortInfo: Failed to get stack port CLI output\n"},
        {"x", VS_NO_FILE, 10016,
         "(ERROR) getStackPortInfo: can not open file:" + root.dir + "/mnt/application/kelo/tmp/show_stack_port\n"},
        {"\nNo stack ports are configured.\n", VS_CRLF, 0, "(INFO) getStackPortInfo: No stack ports are configured\n"},
        {"No stack ports are configured.\n\n", VS_CRLF, 0, ""}, // only the last line is looked at
        {"x", VS_EMPTY, 0, ""},
    };
    for (const auto &one : cases) {
        logClear();
        vsTextSet("show stack-port", one.text);
        vsFaultAdd({"show stack-port", "", 0, one.kind});
        EXPECT_EQ(stackPorts(1, one.result), "[]") << one.text;
        EXPECT_EQ(logText(), one.log);
        vsFaultsClear();
        EXPECT_FALSE(filesLeft());
    }
}

TEST_F(Stacking, StepWritesItsRecordAndKeepsItOnFailure)
{
    ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    logLevelSet('7');
    EXPECT_EQ(get_stacking_info(&handle), 0);
    const std::string stored = cacheRead("stacking");
    EXPECT_EQ(compact(stored), std::string(R"({"stacking":)") + unitList +
                                   R"(,"resp":{"respCode":0,"respMsg":"Success","status":"success"}})");
    logLevelSet('6');
    for (VS_FAULT_KIND kind : {VS_FAIL, VS_NO_FILE}) {
        logClear();
        vsFaultAdd({"show switch", "", 0, kind});
        EXPECT_EQ(get_stacking_info(&handle), 10016);
        EXPECT_TRUE(has(logText(), "(ERROR) getStacking: can not open file:" + std::string(PathGet(PATH_SHOW_SWITCH)) +
                                       "\n(ERROR) get_stacking_info: get_stacking_info: Failed to get stacking info, "
                                       "result=10016\n"))
            << logText();
        vsFaultsClear();
    }
    EXPECT_EQ(cacheRead("stacking"), stored);
    EXPECT_EQ(changeList(), "stacking\n");
}
