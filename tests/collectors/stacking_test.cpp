#include "collectors/system/stacking.h"
#include "support/build.h"

static const std::string rule = "--- ----------- --------- ---------------- ---------------- -----------\n";
static const std::string switches = rule + "2   Stack Mbr   Oper Stby TK830-S52        TK830-S52        OK\n";

static const char detailText[] = "Switch............................ 2\r\n"
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
        vsTextSet("show switch", switches);
        vsTextSet("show switch detail", detailText);
        vsTextSet("show stack-port", std::string(stackPortHead) + "2    2/1/7      Stack\n");
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
    R"([{"unit":2,"model":"TK830-S52","management":false,"standby":true,"active":true,"fwVer":"8.4.3.50.1234567",)"
    R"("bootVer":"B1.0.0.9","sn":"","upTime":"12 days, 3 hrs, 0 mins, 0 secs","stackPortList":["2/1/7"]}])";

TEST_F(Stacking, SwitchRowsAreTakenOrLeft)
{
    vsTextSet("show switch detail", "");
    vsFaultAdd({"show stack-port"});
    const std::string none = R"("management":false,"standby":false,"active":false,"stackPortList":[]}])";
    expectShown(
        "show switch", document,
        {
            {rule + "0   Mgmt Sw\n9   Mgmt Sw\n-1  Mgmt Sw\n99999999999 Mgmt Sw\n\nx\n", "[]"},
            {"1   Mgmt Sw               TK830-T16        TK830-T16        OK\n", "[]"}, // no rule
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

TEST_F(Stacking, MissingDetailsLeaveTheVersionsOut)
{
    expectFailures(document, unitList,
                   {{{"none"}, {}},
                    {{"show switch detail"},
                     {R"("fwVer":"8.4.3.50.1234567","bootVer":"B1.0.0.9","sn":"",)", "",
                      R"("upTime":"12 days, 3 hrs, 0 mins, 0 secs",)", ""}}});
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
            {"1    0/2       Stack\n", "[]"}, // no rule
        });
    EXPECT_EQ(logText(), "");
}

TEST_F(Stacking, StackPortFailures)
{
    const std::tuple<const char *, VS_FAULT_KIND, int, std::string> cases[] = {
        {"x", VS_FAIL, 10000,
         "(ERROR) platformRun: Show cmd failed: show stack-port\n"
         "(ERROR) cliShowExecuteToFile: Execute show cmd faile, result:-1\n"
         "(ERROR) getStackPortInfo: Failed to get stack port CLI output\n"},
        {"x", VS_NO_FILE, 10016,
         "(ERROR) getStackPortInfo: can not open file:" + root.dir + "/mnt/application/kelo/tmp/show_stack_port\n"},
        {"\nNo stack ports are configured.\n", VS_CRLF, 0, "(INFO) getStackPortInfo: No stack ports are configured\n"},
        {"No stack ports are configured.\n\n", VS_CRLF, 0, ""}, // only the last line is looked at
        {"x", VS_EMPTY, 0, ""},
    };
    for (const auto &[text, kind, result, log] : cases) {
        logClear();
        vsTextSet("show stack-port", text);
        vsFaultAdd({"show stack-port", "", 0, kind});
        EXPECT_EQ(stackPorts(1, result), "[]") << text;
        EXPECT_EQ(logText(), log);
        vsFaultsClear();
    }
}

TEST_F(Stacking, StepFailsWithoutTheSwitchTable)
{
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
}
