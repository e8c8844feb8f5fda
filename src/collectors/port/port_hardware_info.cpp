#include "collectors/port/port_hardware_info.h"

// Stack capability comes from one show command, kept by interface number while the rows are made; the module type is
// asked of each port, and of the card in its slot.

#include "runtime/json.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"
#include "switch/models.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <cstring>

constexpr uint32_t STACK_TABLE_SIZE = 769; // by interface number
constexpr size_t STACK_TEXT_SIZE = 9;
constexpr size_t STACK_COLUMN = 79, STACK_WIDTH = 8;
constexpr size_t CARD_MODEL_SIZE = 32;

// Media types of the platform from here on are all shown as one.
constexpr uint32_t SFP_TYPE_QSFP = 3;
enum MODULE_TYPE : uint32_t { MODULE_NONE = 0, MODULE_SFP = 1, MODULE_QSFP = 4 };

static char stackCapable[STACK_TABLE_SIZE][STACK_TEXT_SIZE];

static bool onSfpCard(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    openclt_usp_t usp;
    uint32_t cardType = 0;
    char model[CARD_MODEL_SIZE + 1] = "";

    if (ifUnitSlotPortGet(clientHandle, ifNum, &usp) != RESULT_OK ||
        rpcclt_openapiCardTypeGet(clientHandle, usp.unit, usp.slot, &cardType) != OPENCLT_OK || cardType == 0)
        return false;
    openclt_buffer_t buffer = {CARD_MODEL_SIZE, model};
    if (rpcclt_openapiCardSupportedCardModelIdGet(clientHandle, cardType, &buffer) != OPENCLT_OK)
        return false;
    strTrimRight(model);
    return modelIsSfpCard(model);
}

// Asked directly: a port without a module is no fault, so no line is logged for it. The media type is looked at before
// the card.
static uint32_t moduleTypeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t sfpType = 0;

    if (rpcclt_openapiBoxsSfpTypeGet(clientHandle, ifNum, &sfpType) != OPENCLT_OK)
        return MODULE_NONE;
    if (sfpType >= SFP_TYPE_QSFP)
        return MODULE_QSFP;
    return onSfpCard(clientHandle, ifNum) ? static_cast<uint32_t>(MODULE_SFP) : sfpType;
}

//           1         2         3         4         5         6         7         8         9
// 0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123456
//                  Admin     Physical   Physical   Link   Link    LACP    Actor  Capable  Flow
// Intf      Type   Mode      Mode       Status     Status Trap    Mode    Time   Port     Mode
// --------- ------ --------- ---------- ---------- ------ ------- ------- ------ -------- --------
// 1/0/1            Enable    Auto       10G Full   Up     Enable  Enable  long   Yes      Disable
//
// A row ends behind the column or is none; its line end counts.
static void stackCapableLineStore(CLIENT_HANDLE_T *clientHandle, const char *line)
{
    char name[40], text[STACK_TEXT_SIZE];
    unsigned first, second, third;
    uint32_t ifNum = 0;

    if (strlen(line) < STACK_COLUMN + STACK_WIDTH)
        return;
    int numbers = sscanf(line, "%u/%u/%u", &first, &second, &third);
    if (numbers == 3)
        snprintf(name, sizeof(name), "%u/%u/%u", first, second, third);
    else if (numbers == 2)
        snprintf(name, sizeof(name), "%u/%u", first, second);
    else
        return;
    showRowTaken();
    if (ifNumByNameGet(clientHandle, name, &ifNum) != OPENCLT_OK || ifNum >= STACK_TABLE_SIZE)
        return;
    if (columnText(line, STACK_COLUMN, STACK_WIDTH, text, sizeof(text)) > 0)
        textCopy(stackCapable[ifNum], STACK_TEXT_SIZE, text);
}

int portHardwareInfoBuild(CLIENT_HANDLE_T *clientHandle, char **out)
{
    if (out == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *out = nullptr;
    for (char *text : stackCapable)
        textCopy(text, STACK_TEXT_SIZE, "No");
    stackCapableTableFill(clientHandle);

    OWNED_JSON document(cJSON_CreateObject());
    cJSON *rows = jsonAddArray(document.get(), "rows");
    for (IF_WALK_T port = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port)) {
        cJSON *row = jsonAppendObject(rows);
        jsonAddNumber(row, "portNum", port.ifNum);
        jsonAddNumber(row, "moduleType", moduleTypeGet(clientHandle, port.ifNum));
        jsonAddText(row, "stackCapable", port.ifNum < STACK_TABLE_SIZE ? stackCapable[port.ifNum] : "No");
    }
    *out = jsonPrint(document.get(), JSON_COMPACT);
    return *out == nullptr ? RESULT_NO_MEMORY : RESULT_OK;
}

void stackCapableTableFill(CLIENT_HANDLE_T *clientHandle)
{
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];

    if (showFileRun(&show, clientHandle, {__func__, "show port all", PATH_SHOW_PORT_ALL_HW}) != RESULT_OK ||
        !showFileSkipTo(&show, "------", line, sizeof(line)))
        return;
    while (showFileLine(&show, line, sizeof(line)))
        stackCapableLineStore(clientHandle, line);
}
