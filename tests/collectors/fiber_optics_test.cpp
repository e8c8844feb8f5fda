#include "collectors/port/fiber_optics.h"
#include "support/build.h"

static const char valuesCommand[] = "show fiber-ports optics all";
static const char infoCommand[] = "show fiber-ports optics-info all";

static const char values[] =
    "Port     Module         Temp  Voltage  Current   Output   Input     TX     LOS  Fault\n"
    "-------- -------------  ----  -------  -------   -------  -------   -----  ---  -------------\n"
    "1/0/20   10GBase-SR     38.2  3.310      6.5      -2.300  -3.100    No     No   No Fault\n"
    "1/0/2   [ifName 1/0/2: no diagnostics]\n"
    "1/0/3    10GBase-LR     N/A   3.3                -2.3N/A  -3.1      Yes    Yes  Local\r\n";
static const std::string head = "Port     Vendor Name\n-------- ----------------\n";

struct FiberOptics : BUILDER_TEST {
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText(R"({"units": {"1": {"model": "TK620-R01", "portCount": 4}}})"), "");
        vsTextSet(valuesCommand, values);
    }
    // "port temperature voltage current outputPower inputPower txFault los faultStatus", one a line.
    static std::string shownValues()
    {
        OWNED_JSON document(cJSON_Parse(buildText(fiberOpticsGet).text.c_str()));
        std::string text;
        const cJSON *optic;
        cJSON_ArrayForEach(optic, document.get())
        {
            text += cJSON_GetStringValue(cJSON_GetObjectItem(optic, "portName"));
            for (const char *key :
                 {"temperature", "voltage", "current", "outputPower", "inputPower", "txFault", "los", "faultStatus"})
                text += std::string("|") + cJSON_GetStringValue(cJSON_GetObjectItem(optic, key));
            text += "\n";
        }
        return text;
    }
};

// The first line that contains the port's name is taken: 1/0/2 finds 1/0/20's.
TEST_F(FiberOptics, ValuesAreThoseOfTheFirstLineWithTheName)
{
    const std::string none = "|N/A|N/A|N/A|N/A|N/A|No|No|No Fault\n", third = "1/0/3||3.3|||-3.1|Yes|Yes|Local\n";
    vsTextSet(infoCommand, head + "1/0/2\n1/0/3\n1/0/4\n1/0/9\n");
    EXPECT_EQ(shownValues(), "1/0/2|38.2|3.310|6.5|-2.300|-3.100|No|No|No Fault\n" + third + "1/0/4" + none);
    EXPECT_EQ(logText(), "(ERROR) fiberOpticsGet: Failed to get the port id for port 1/0/9\n");
    vsTextSet(valuesCommand, changed(values, {"1/0/20 ", "1/0/1  "}));
    EXPECT_EQ(shownValues(), "1/0/2" + none + third + "1/0/4" + none);
}

TEST_F(FiberOptics, FailureGivesItsResultAndTheEmptyArray)
{
    const std::string named = "(ERROR) platformRun: Show cmd failed: ";
    const std::string failed = "\n(ERROR) fiberOpticsGet: Failed to run openapiCliShowExecuteToFile\n";
    const char *notFound = "(INFO) fiberOpticsGet: FiberOptics not found\n";
    const std::tuple<VS_FAULT_T, std::string, int, std::string> cases[] = {
        {{valuesCommand}, head, 10000, named + valuesCommand + failed},
        {{infoCommand}, head, 10000, named + infoCommand + failed},
        {{infoCommand, "", 0, VS_NO_FILE}, head, 10015, notFound},
        {{valuesCommand, "", 0, VS_EMPTY}, head, 10015, notFound},
        {{"-"}, "Port  Vendor\n------- \n1/0/1\n", 10015, notFound},
        {{"-"}, head, 0, ""}, // ends at its rule
    };
    for (const auto &[fault, text, result, log] : cases) {
        logClear();
        vsTextSet(infoCommand, text);
        vsFaultAdd(fault);
        BUILT_T built = buildText(fiberOpticsGet);
        EXPECT_EQ(built.result, result) << fault.name;
        EXPECT_EQ(built.text, "[]") << fault.name;
        EXPECT_EQ(logText(), log) << fault.name;
        vsFaultsClear();
    }
    // without memory for one of the outputs, each read into two blocks, there is not even that array
    for (int n = 0; n < 4; n++) {
        logClear();
        allocFailAt(n, ALLOC_OWN);
        BUILT_T built = buildText(fiberOpticsGet);
        EXPECT_TRUE(allocFailStop()) << n;
        EXPECT_EQ(built.result, 10000) << n;
        EXPECT_EQ(built.text, "") << n;
        EXPECT_EQ(logText(), "(ERROR) fiberOpticsGet: Memory allocation failure\n") << n;
    }
}
