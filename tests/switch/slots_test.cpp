#include "switch/slots.h"

#include "fixture.h"
#include "runtime/paths.h"
#include "runtime/result.h"

using namespace std::string_literals;

namespace {
struct Slots : SWITCH_TEST {
    // Non-empty entries after "show slot" printed these rows under a rule: "unit/slot=model", joined by blanks.
    std::string modelsOf(const std::string &rows)
    {
        SLOT_MODELS_T table = {};
        vsTextSet("show slot", "\n       Admin\nSlot   State\n------ -----\n" + rows);
        EXPECT_EQ(slotModelTableGet(&handle, &table), 0);
        EXPECT_FALSE(fileExists(PathGet(PATH_SHOW_SLOT)));
        std::string models;
        for (uint32_t unit = 0; unit < SLOT_UNITS; unit++) {
            for (uint32_t slot = 0; slot < SLOT_COUNT; slot++) {
                const char *model = slotModelAt(&table, unit, slot);
                if (model[0] != '\0')
                    models +=
                        (models.empty() ? "" : " ") + std::to_string(unit) + "/" + std::to_string(slot) + "=" + model;
            }
        }
        return models;
    }
    std::string capabilityOf(uint32_t ifNum)
    {
        uint32_t capability = 77;
        int result = ifCapabilitiesGet(&handle, ifNum, &capability);
        return std::to_string(result) + " " + std::to_string(capability);
    }
    // Port 1 becomes a port of a unit of this model.
    void portPlace(const char *model, uint32_t slot, uint32_t port, uint32_t sfpType = 0)
    {
        vsState().units[0].model = model;
        vsState().ports[0].slot = slot;
        vsState().ports[0].port = port;
        vsState().ports[0].optic.present = true;
        vsState().ports[0].optic.type = sfpType;
    }
};

const char nineFields[] = "1/0    Full    Enable  Enable  TK830-T03            TK830-T03            No        No\n"
                          "1/1    Full    Enable  Enable  QMD-K7               QMD-K5/8xSFP         Yes       Yes\n"
                          "2/12   Full    Disable Disable QMD-K6               QMD-K6               Yes       No\n";
} // namespace

TEST_F(Slots, EachLayoutGivesItsModels)
{
    struct {
        const char *what;
        std::string rows, models;
    } cases[] = {
        {"nine fields", nineFields, "1/0=TK830-T03 1/1=QMD-K5 2/12=QMD-K6"},
        {"eight fields",
         "1/1    Full    Enable  Enable  8xSFP/QMD-K5       Yes   No   \n"
         "1/2    Full    Enable  Enable  QMD-K6             Yes   No\n"
         "1/3    Full    Enable  Enable  a/b/c              Yes   No\n",
         "1/1=QMD-K5 1/2=QMD-K6 1/3=b/c"},
        {"an eighth field that goes on is no ninth",
         "1/1    Full    Enable  Enable  8xSFP/QMD-K5 Yes "
         "no-power-down-at-all\n",
         "1/1=Yes"},
        {"text in column 31 to 50",
         "1/1    Full    Enable          QMD-K5/8xSFP\n"
         "1/2    Full    Enable          12345678901234567890/x\n" // the stroke stands behind the field
         "1/3    Full    Enable         /QMD-K5\n"
         "1/4    Full    Enable          QMD-K6\n",
         "1/1=QMD-K5"},
        {"over-long texts", "1/1    Full    Enable  Enable  x/" + "M"s.append(60, 'm') + " Yes No\n",
         "1/1=M" + std::string(30, 'm')},
        {"over-long words run into the next field",
         "1/1    Full    Enable  Enable  QMD-K5               " + std::string(40, 'M') + " Yes\n",
         "1/1=" + std::string(31, 'M')},
        {"short rows", "1/1\n1/2 Full\n1/3    Full    Enable  Enable\n", ""},
        {"outside the table",
         "9/1    Full    Enable  Enable  QMD-K5               QMD-K5               Yes       Yes\n"
         "1/13   Full    Enable  Enable  QMD-K5               QMD-K5               Yes       Yes\n"
         "-1/1   Full    Enable  Enable  8xSFP/QMD-K5       Yes   No\n"
         "1/-1   Full    Enable  Enable  8xSFP/QMD-K5       Yes   No\n"
         "99/1   Full    Enable          QMD-K5/8xSFP\n"
         "8/12   Full    Enable  Enable  QMD-K5               QMD-K6               Yes       Yes\n",
         "8/12=QMD-K6"},
        {"the first other line ends the table", nineFields + "\n1/2    Full    Enable  Enable  8xSFP/QMD-K5 Yes No\n"s,
         "1/0=TK830-T03 1/1=QMD-K5 2/12=QMD-K6"},
        {"a longer line goes on as a row that ends the table",
         "1/1    Full    Enable  Enable  8xSFP/QMD-K5 Yes No" + std::string(1000, ' ') + "trailer\n" + nineFields,
         "1/1=QMD-K5"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(modelsOf(row.rows), row.models) << row.what;
        EXPECT_EQ(modelsOf(withCrlf(row.rows)), row.models) << row.what << ", CR LF";
    }
}

TEST_F(Slots, FailuresAreToldApart)
{
    SLOT_MODELS_T table = {};
    spoilCommand("show slot", VS_FAIL);
    EXPECT_EQ(slotModelTableGet(&handle, &table), RESULT_FAILED);
    vsFaultsClear();
    spoilCommand("show slot", VS_NO_FILE);
    logClear();
    EXPECT_EQ(slotModelTableGet(&handle, &table), RESULT_OPEN_FAILED);
    EXPECT_EQ(logText(), "(ERROR) slotModelGet: can not open file:"s + PathGet(PATH_SHOW_SLOT) + "\n");
    EXPECT_STREQ(slotModelAt(&table, 9, 0), "");
    EXPECT_STREQ(slotModelAt(&table, 0, 13), "");
}

TEST_F(Slots, CapabilityComesFromTheUnitOrItsModule)
{
    vsTextSet("show slot", "------\n1/1    Full    Enable  Enable  QMD-K6               QMD-K6               Yes   No\n"
                           "1/2    Full    Enable  Enable  NEW-CARD             NEW-CARD             Yes   No\n");
    struct {
        const char *what, *model;
        uint32_t slot, port, sfpType;
        const char *capability;
    } cases[] = {
        {"fixed unit", "TK830-T16", 0, 49, 0, "0 6"},
        {"port beyond the model", "TK830-T16", 0, 53, 0, "10000 77"},
        {"unknown model", "TK100", 0, 1, 0, "10000 77"},
        {"module", "TK830-T03", 1, 4, 0, "0 8"},
        {"port beyond the module: the unit's", "TK830-T03", 1, 5, 0, "0 4"},
        {"unknown module: the unit's", "TK830-T03", 2, 1, 0, "0 4"},
        {"slot outside the table: the unit's", "TK830-T03", 13, 1, 0, "0 4"},
        {"SFP type 0", "TK700-S13", 1, 1, 0, "0 6"},
        {"SFP type 1", "TK700-S13", 1, 1, 1, "0 3"},
        {"SFP type 3", "TK700-S13", 1, 1, 3, "0 9"},
        {"SFP type 7 leaves it", "TK700-S13", 1, 1, 7, "0 77"},
    };
    for (const auto &row : cases) {
        portPlace(row.model, row.slot, row.port, row.sfpType);
        EXPECT_EQ(capabilityOf(1), row.capability) << row.what;
    }
    EXPECT_EQ(vsCallCount("show slot"), 1U);
}

TEST_F(Slots, SlotTableThatFailedOnceStaysEmpty)
{
    portPlace("TK830-T03", 1, 1);
    spoilCommand("show slot", VS_FAIL);
    EXPECT_EQ(capabilityOf(1), "0 4");
    vsFaultsClear();
    vsTextSet("show slot", "------\n"s + nineFields);
    EXPECT_EQ(capabilityOf(1), "0 4");
    EXPECT_EQ(vsCallCount("show slot"), 1U);
}
