#include "collectors/port/fiber_optics.h"
#include "support/build.h"

static const char valuesCommand[] = "show fiber-ports optics all";
static const char infoCommand[] = "show fiber-ports optics-info all";

//             1         2         3         4         5         6         7         8         9
//   123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123
static const char values[] =
    "Port     Module         Temp  Voltage  Current   Output   Input     TX     LOS  Fault\n"
    "-------- -------------  ----  -------  -------   -------  -------   -----  ---  -------------\n"
    "1/0/20   10GBase-SR     38.2  3.310      6.5      -2.300  -3.100    No     No   No Fault\n"
    "1/0/2   [ifName 1/0/2: no diagnostics]\n"
    "1/0/3    10GBase-LR     N/A   3.3                -2.3N/A  -3.1      Yes    Yes  Local\r\n";
static const char infoHead[] = "Port     Vendor Name\n-------- ----------------\n";
static const char infoRow[] = " ACME \"Optics\"    82     33     300    S1               P 1              10300   A    "
                              "10GBase-SR       Yes          10G\n";

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

TEST_F(FiberOptics, JoinsIdentityAndValues)
{
    vsTextSet(infoCommand, infoHead + std::string("1/0/20  ") + infoRow + "1/0/3   " + infoRow + "1/0/4 ");
    vsState().ports[3].port = 20; // interface 4
    EXPECT_EQ(compact(buildText(fiberOpticsGet).text),
              R"([{"portName":"1/0/20","port":4,"temperature":"38.2","voltage":"3.310","current":"6.5",)"
              R"("outputPower":"-2.300","inputPower":"-3.100","txFault":"No","los":"No","faultStatus":"No Fault",)"
              R"("vendorName":"ACME \"Optics\"","linkLength_50_um":"82","linkLength_62.5_um":"33","linkLength":"300",)"
              R"("serialNumber":"S1","partNumber":"P 1","nominalBitRate":"10300","rev":"A","compliance":"10GBase-SR",)"
              R"("supported":"Yes","possibleSpeedDetected":"10G"},)"
              R"({"portName":"1/0/3","port":3,"temperature":"","voltage":"3.3","current":"","outputPower":"",)"
              R"("inputPower":"-3.1","txFault":"Yes","los":"Yes","faultStatus":"Local",)"
              R"("vendorName":"ACME \"Optics\"","linkLength_50_um":"82","linkLength_62.5_um":"33","linkLength":"300",)"
              R"("serialNumber":"S1","partNumber":"P 1","nominalBitRate":"10300","rev":"A","compliance":"10GBase-SR",)"
              R"("supported":"Yes","possibleSpeedDetected":"10G"}])");
    EXPECT_EQ(logText(), "(ERROR) fiberOpticsGet: Failed to get the port id for port 1/0/4\n");
    EXPECT_EQ(fileRead(PathGet(PATH_SHOW_OPTICS)), values);
    EXPECT_TRUE(fileExists(PathGet(PATH_SHOW_OPTICS_INFO)));
}

// The first line that contains the port's name is taken: 1/0/2 finds 1/0/20's.
TEST_F(FiberOptics, ValuesAreThoseOfTheFirstLineWithTheName)
{
    const std::string none = "|N/A|N/A|N/A|N/A|N/A|No|No|No Fault\n";
    vsTextSet(infoCommand, infoHead + std::string("1/0/2\n1/0/4\nlag 1\n"));
    EXPECT_EQ(shownValues(), "1/0/2|38.2|3.310|6.5|-2.300|-3.100|No|No|No Fault\n1/0/4" + none);
    std::string reordered = values;
    reordered.replace(reordered.find("1/0/20 "), 7, "1/0/1  ");
    vsTextSet(valuesCommand, reordered);
    EXPECT_EQ(shownValues(), "1/0/2" + none + "1/0/4" + none);
}

TEST_F(FiberOptics, FailureGivesItsResultAndTheEmptyArray)
{
    const std::string info = infoHead;
    const char *failed = "(ERROR) fiberOpticsGet: Failed to run openapiCliShowExecuteToFile\n";
    const char *notFound = "(INFO) fiberOpticsGet: FiberOptics not found\n";
    struct {
        VS_FAULT_T fault;
        std::string text;
        int result;
        const char *log;
    } cases[] = {
        {{valuesCommand}, info, 10000, failed},
        {{infoCommand}, info, 10000, failed},
        {{infoCommand, "", 0, VS_NO_FILE}, info, 10015, notFound},
        {{valuesCommand, "", 0, VS_EMPTY}, info, 10015, notFound},
        {{"-"}, "Port  Vendor\n------- \n1/0/1\n", 10015, notFound},
        {{"-"}, info, 0, ""}, // ends at its rule
    };
    for (const auto &one : cases) {
        logClear();
        vsTextSet(infoCommand, one.text);
        vsFaultAdd(one.fault);
        BUILT_T built = buildText(fiberOpticsGet);
        EXPECT_EQ(built.result, one.result) << one.fault.name;
        EXPECT_EQ(built.text, "[]") << one.fault.name;
        EXPECT_EQ(logText(), one.log) << one.fault.name;
        vsFaultsClear();
    }
    vsTextSet(infoCommand, info + "1/0/1" + infoRow);
    expectNoDocumentWithoutMemory(fiberOpticsGet, 10000);
}
