#include "collectors/port/fiber_optics.h"

// Two tables of fixed columns: one row of identity an optic, which decides what is listed, and one row of live values,
// found by the port's name. The columns are cut as the command lines of other programs cut them (switch/columncut.h).

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columncut.h"
#include "switch/columns.h"
#include "switch/swapi.h"

#include <cctype>
#include <cstring>

// A key and the columns of its value, counted from 1. `absent` is shown for an optic without live values.
struct OPTIC_COLUMN_T {
    const char *key;
    uint32_t from, length;
    const char *absent;
};

//          1         2         3         4         5         6         7         8         9
// 123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123
// Port     Module         Temp  Voltage  Current   Output   Input     TX     LOS  Fault
// -------- -------------  ----  -------  -------   -------  -------   -----  ---  -------------
// 1/0/49   10GBase-SR     38.2  3.310    6.5       -2.300   -3.100    No     No   No Fault
// 1/0/50  [ifName 1/0/50: no diagnostics]
static const OPTIC_COLUMN_T valueColumns[] = {
    {"temperature", 25, 4, "N/A"}, {"voltage", 31, 7, "N/A"},           {"current", 40, 7, "N/A"},
    {"outputPower", 50, 7, "N/A"}, {"inputPower", 59, 7, "N/A"},        {"txFault", 69, 5, "No"},
    {"los", 76, 3, "No"},          {"faultStatus", 81, 13, "No Fault"},
};
constexpr uint32_t NO_VALUES_FROM = 9, NO_VALUES_LENGTH = 14;
static const char noValues[] = "[ifName";

//          1         2         3         4         5         6         7         8         9        10        11
// 123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123456789012345678901234567
// Port     Vendor Name      50um   62.5um [m]    Serial Number    Part Number      Rate    Rev  Compliance       Suppor
// -------- ---------------- ------ ------ ------ ---------------- ---------------- ------- ---- ---------------- ------
// 1/0/49   OEM              82     33     300    S1               P1               10300   A    10GBase-SR       Yes
static const OPTIC_COLUMN_T identityColumns[] = {
    {"vendorName", 10, 16, nullptr},
    {"linkLength_50_um", 27, 6, nullptr},
    {"linkLength_62.5_um", 34, 6, nullptr},
    {"linkLength", 41, 6, nullptr},
    {"serialNumber", 48, 16, nullptr},
    {"partNumber", 65, 16, nullptr},
    {"nominalBitRate", 82, 7, nullptr},
    {"rev", 90, 4, nullptr},
    {"compliance", 95, 16, nullptr},
    {"supported", 112, 12, nullptr},
    {"possibleSpeedDetected", 125, 9, nullptr},
};
static const char rule[] = "--------";

// 10000 when the command fails, -7 without memory. An output that is not there has no lines.
static int outputLoad(CLIENT_HANDLE_T *clientHandle, const char *command, PATH_ID path, CUT_FILE_T *file)
{
    SHOW_FILE_T show;

    SHOW_REQUEST_T request = {"fiberOpticsGet", command, path};
    request.after = SHOW_AFTER_KEEP;
    request.openLine = SHOW_OPEN_SILENT;
    request.run = SHOW_RUN_PLATFORM;
    int result = showFileRun(&show, clientHandle, request);
    if (result == RESULT_FAILED)
        return result;
    result = cutFileLoad(file, show.stream);
    for (uint32_t line = cutFirstLineWith(file, rule) + 1; line > 1 && line <= cutLineCount(file); line++) {
        char name[CUT_SIZE];
        cutFirstWord(file, line, name);
        if (isdigit(static_cast<unsigned char>(name[0])) != 0)
            showRowTaken();
    }
    return result;
}

// The first line that contains the port's name, so a port's values can be those of a port whose name begins alike and
// comes first; 0 when there is none.
static uint32_t valueLineFind(const CUT_FILE_T &values, const char *name)
{
    char text[48];
    int unit = 0, slot = 0, port = 0;

    if (sscanf(name, "%d/%d/%d", &unit, &slot, &port) == 3)
        snprintf(text, sizeof(text), "%d/%d/%d", unit, slot, port);
    else
        snprintf(text, sizeof(text), "%d/%d", unit, slot);
    return cutFirstLineWith(&values, text);
}

static bool valuesShown(const CUT_FILE_T &values, uint32_t line)
{
    char text[CUT_SIZE];

    cutColumns(&values, line, NO_VALUES_FROM, NO_VALUES_LENGTH, text);
    return line != 0 && !textBegins(text, noValues);
}

static void columnAdd(const CUT_FILE_T &file, uint32_t line, const OPTIC_COLUMN_T &column, cJSON *optic)
{
    char text[CUT_SIZE];

    cutColumns(&file, line, column.from, column.length, text);
    jsonAddText(optic, column.key, strTrimLeft(strTrimRight(text)));
}

static void opticAdd(CLIENT_HANDLE_T *clientHandle, const CUT_FILE_T &values, const CUT_FILE_T &info, uint32_t row,
                     cJSON *optics)
{
    char name[CUT_SIZE];
    uint32_t ifNum = 0;

    cutFirstWord(&info, row, name);
    if (ifNumByNameGet(clientHandle, name, &ifNum) != OPENCLT_OK) {
        LOG_ERROR_AS("fiberOpticsGet", "Failed to get the port id for port %s\n", name);
        return;
    }
    uint32_t valueLine = valueLineFind(values, name);
    bool hasValues = valuesShown(values, valueLine);

    cJSON *optic = jsonAppendObject(optics);
    jsonAddText(optic, "portName", name);
    jsonAddNumber(optic, "port", ifNum);
    for (const OPTIC_COLUMN_T &column : valueColumns) {
        if (hasValues)
            columnAdd(values, valueLine, column, optic);
        else
            jsonAddText(optic, column.key, column.absent);
    }
    for (const OPTIC_COLUMN_T &column : identityColumns)
        columnAdd(info, row, column, optic);
}

static int opticsAdd(CLIENT_HANDLE_T *clientHandle, cJSON *optics)
{
    CUT_FILE_T values, info;

    int valuesResult = outputLoad(clientHandle, "show fiber-ports optics all", PATH_SHOW_OPTICS, &values);
    int infoResult = outputLoad(clientHandle, "show fiber-ports optics-info all", PATH_SHOW_OPTICS_INFO, &info);
    if (valuesResult == RESULT_FAILED || infoResult == RESULT_FAILED) {
        LOG_ERROR_AS("fiberOpticsGet", "Failed to run openapiCliShowExecuteToFile\n");
        return RESULT_FAILED;
    }
    if (valuesResult != RESULT_OK || infoResult != RESULT_OK)
        return RESULT_NO_MEMORY;
    uint32_t last = cutLineCount(&info);
    uint32_t ruleLine = cutFirstLineWith(&info, rule);
    if (ruleLine == 0 || cutFirstLineWith(&values, rule) == 0) {
        LOG_INFO_AS("fiberOpticsGet", "FiberOptics not found\n");
        return RESULT_EMPTY;
    }
    for (uint32_t row = ruleLine + 1; row <= last; row++)
        opticAdd(clientHandle, values, info, row, optics);
    return RESULT_OK;
}

int fiberOpticsGet(CLIENT_HANDLE_T *clientHandle, char **out)
{
    *out = nullptr;
    OWNED_JSON optics(cJSON_CreateArray());
    int result = optics == nullptr ? RESULT_NO_MEMORY : opticsAdd(clientHandle, optics.get());
    if (result == RESULT_NO_MEMORY) { // not "no optics", which is a document
        LOG_ERROR("Memory allocation failure\n");
        return RESULT_FAILED;
    }
    *out = jsonPrint(optics.get(), JSON_FORMATTED);
    return *out == nullptr ? RESULT_FAILED : result;
}
