#include "collectors/port/swcfg_port_model.h"

// The passes that read show commands: port status, port VLAN IDs, counters, load of a port, stack capability. Three
// tables of all ports are read once each; the rows of a unit are counted, and the n-th is its n-th record. Uses the
// show files and column readers of switch/.

#include "collectors/port/port_columns.h"
#include "collectors/port/port_name_index.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columncut.h"
#include "switch/columns.h"
#include "switch/swapi.h"

#include <cstdio>
#include <cstring>

constexpr char BUILDER[] = "fillPhyInfStatusFastEX"; // name in the log lines of its passes

// Numbers at the start of a row.
struct ROW_PLACE_T {
    int count; // how many of them there are
    int unit, slot, port;
};

// Position in a table: its n-th row of a unit belongs to the n-th record of that unit.
struct ROW_COUNTER_T {
    int unit;
    uint32_t row; // within the unit, from 1
};

/*
 * 0         1         2         3         4         5         6
 * 0123456789012345678901234567890123456789012345678901234567890123456789
 * ------- ------------------  ---- ---------- ----------  ------- ------------
 * 1/0/1   Copper              FWD  Auto       1000 Full   Up      Inactive
 */
static bool statusRulePass(SHOW_FILE_T *show, char line[CLI_LINE_SIZE])
{
    constexpr size_t RULE_COLUMN = 16;

    while (showFileLine(show, line, CLI_LINE_SIZE)) {
        if (strlen(line) > RULE_COLUMN && textBegins(line + RULE_COLUMN, "------"))
            return true;
    }
    return false;
}

static ROW_PLACE_T rowPlace(const char *line)
{
    ROW_PLACE_T place = {};
    place.count = sscanf(line, "%d/%d/%d", &place.unit, &place.slot, &place.port);
    return place;
}

// Record of the next row; null when its unit is not there or has had all its rows.
static PORT_RECORD_T *rowRecord(PORT_TABLE_T *table, ROW_COUNTER_T *counter, int unit)
{
    if (unit != counter->unit)
        *counter = {unit, 0};
    counter->row++;
    if (unit < 1 || unit > static_cast<int>(PORT_TABLE_UNITS))
        return nullptr;
    PORT_UNIT_T &of = table->units[unit - 1];
    return of.records != nullptr && counter->row <= of.recordCount ? &of.records[counter->row] : nullptr;
}

// False when the platform does not know the port.
static bool statusRowStore(CLIENT_HANDLE_T *clientHandle, const char *line, const ROW_PLACE_T &place,
                           PORT_RECORD_T *record)
{
    constexpr size_t TYPE_COLUMN = 8;
    constexpr size_t SPEED_COLUMN = 44;
    constexpr size_t SPEED_WIDTH = 10;
    char name[64];
    uint32_t ifNum = 0;

    snprintf(name, sizeof(name), "%d/%d/%d", place.unit, place.slot, place.port);
    if (ifNumByNameGet(clientHandle, name, &ifNum) != OPENCLT_OK) {
        LOG_ERROR_AS(BUILDER, "Wrong incoming port %s\n", name);
        return false;
    }
    record->unit = static_cast<uint32_t>(place.unit);
    record->slot = static_cast<uint32_t>(place.slot);
    record->port = static_cast<uint32_t>(place.port);
    record->ifNum = ifNum;
    columnText(line, TYPE_COLUMN, sizeof(record->portType) - 1, record->portType, sizeof(record->portType));
    columnText(line, SPEED_COLUMN, SPEED_WIDTH, record->linkSpeed, sizeof(record->linkSpeed));
    if (record->linkSpeed[0] == '\0')
        getPortLinkSpeed(clientHandle, ifNum, record->linkSpeed);
    if (strstr(line, "Up ") != nullptr)
        record->linkState = OPENCLT_LINK_UP;
    else
        record->linkState = strstr(line, "Detach ") != nullptr ? OPENCLT_LINK_DETACHED : OPENCLT_LINK_DOWN;
    record->stpMode = strstr(line, "BLK") != nullptr ? 1 : 0;
    return true;
}

// A command that failed shows as a file that does not open.
static int countersOpen(SHOW_FILE_T *show, CLIENT_HANDLE_T *clientHandle)
{
    const SHOW_REQUEST_T request = {"fillPhyInfCounterEX", "show interface counters", PATH_SHOW_COUNTERS};
    int result = showFileRun(show, clientHandle, request);

    return result == RESULT_FAILED ? showFileOpen(show, request) : result;
}

/*
 * One of the two tables of "show interface counters", received and then sent; both end with a rate. A row that is not a
 * port's ends the table.
 *
 * 0         1                                      9         10        11
 * 01234567890123456789  ...                        6789012345678901234567890
 * --------- ------------------ ... --------------- --------------------
 * 1/0/1                1234567 ...              17                 12.5
 */
static void ratesRead(PORT_TABLE_T *table, SHOW_FILE_T *show, char (PORT_RECORD_T::*rate)[PORT_RATE_SIZE])
{
    constexpr size_t RATE_COLUMN = 96;
    ROW_COUNTER_T counter = {};
    char line[CLI_LINE_SIZE];

    if (!showFileSkipTo(show, "------", line, sizeof(line)))
        return;
    while (showFileLine(show, line, sizeof(line))) {
        ROW_PLACE_T place = rowPlace(line);
        if (place.count < 2)
            return;
        showRowTaken();
        PORT_RECORD_T *record = rowRecord(table, &counter, place.count == 3 ? place.unit : 1);
        if (record != nullptr)
            columnText(line, RATE_COLUMN, PORT_RATE_SIZE - 1, record->*rate, PORT_RATE_SIZE);
    }
}

// Packets received and sent; a counter that cannot be read counts nothing.
static uint64_t trafficGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    constexpr uint32_t PACKETS_RECEIVED = 51;
    constexpr uint32_t PACKETS_SENT = 53;
    uint64_t received = 0;
    uint64_t sent = 0;

    if (rpcclt_openapiStatGet(clientHandle, PACKETS_RECEIVED, ifNum, &received) != OPENCLT_OK)
        received = 0;
    int result = rpcclt_openapiStatGet(clientHandle, PACKETS_SENT, ifNum, &sent);
    if (result != OPENCLT_OK) {
        LOG_ERROR_AS("fillPhyInfCounterEX", "port:%d - Counter get failed (rc = %d)\n", ifNum, result);
        sent = 0;
    }
    return received + sent;
}

/*
 * 0         1         2         3         4
 * 012345678901234567890123456789012345678901234567890
 * Percent Utilization Received................... 12
 * Received Rate(Mbps)............................ 3.4
 */
static bool loadLineParse(const char *line, PORT_LOAD_T *load)
{
    constexpr size_t VALUE_COLUMN = 48;

    if (textBegins(line, "Percent Utilization Received"))
        load->receivedPercent = static_cast<uint32_t>(columnStrtol(line, VALUE_COLUMN));
    else if (textBegins(line, "Percent Utilization Transmitted"))
        load->transmittedPercent = static_cast<uint32_t>(columnStrtol(line, VALUE_COLUMN));
    else if (textBegins(line, "Received Rate(Mbps)"))
        columnRest(line, VALUE_COLUMN, load->receivedRate, sizeof(load->receivedRate));
    else if (textBegins(line, "Transmitted Rate(Mbps)"))
        columnRest(line, VALUE_COLUMN, load->transmittedRate, sizeof(load->transmittedRate));
    else
        return false;
    return true;
}

bool portStatusRead(PORT_TABLE_T *table)
{
    SHOW_FILE_T show;
    SHOW_REQUEST_T request = {BUILDER, "show port status all", PATH_SHOW_PORT_STATUS};
    char line[CLI_LINE_SIZE];

    request.openLine = SHOW_OPEN_SILENT; // one line for either failure
    if (showFileRun(&show, table->clientHandle, request) != RESULT_OK) {
        LOG_ERROR_AS(BUILDER, "can not open %s\n", show.path);
        return false;
    }
    if (!statusRulePass(&show, line))
        return true;
    ROW_COUNTER_T counter = {};
    while (showFileLine(&show, line, sizeof(line))) {
        ROW_PLACE_T place = rowPlace(line);
        if (place.count != 3)
            break;
        showRowTaken();
        PORT_RECORD_T *record = rowRecord(table, &counter, place.unit);
        if (record != nullptr && !statusRowStore(table->clientHandle, line, place, record))
            break;
    }
    return true;
}

// Without memory every PVID is asked for later.
void portVlanIdsRead(PORT_TABLE_T *table)
{
    SHOW_FILE_T show;
    SHOW_REQUEST_T request = {BUILDER, "show vlan port all", PATH_SHOW_VLAN_PORT_PHY};
    PORT_NAME_INDEX_T<PORT_RECORD_T> index;
    char line[PORT_LINE_SIZE];
    char name[PORT_NAME_SIZE];
    uint32_t room = 0, pvid = 0;

    request.openLine = SHOW_OPEN_SILENT;
    if (showFileRun(&show, table->clientHandle, request) != RESULT_OK)
        return;
    portRecordsVisit(table, [&room](PORT_RECORD_T *) { room++; });
    if (!portNameIndexStart(&index, room))
        return;
    portRecordsVisit(table, [&index](PORT_RECORD_T *record) {
        char text[INDEXED_NAME_SIZE];
        snprintf(text, sizeof(text), "%d/%d/%d", record->unit, record->slot, record->port);
        portNameIndexAdd(&index, text, record);
    });
    portNameIndexSort(&index);
    while (showFileLineCut(&show, line, sizeof(line))) {
        if (!vlanPortRow(line, name, &pvid))
            continue;
        showRowTaken();
        PORT_RECORD_T *record = portNameIndexFind(index, name);
        if (record != nullptr)
            record->pvid = pvid;
    }
}

void fillPhyInfCounterEX(PORT_TABLE_T *table)
{
    CLIENT_HANDLE_T *clientHandle = table->clientHandle;
    SHOW_FILE_T show;

    if (countersOpen(&show, clientHandle) != RESULT_OK)
        return;
    ratesRead(table, &show, &PORT_RECORD_T::bandwidthDownload);
    ratesRead(table, &show, &PORT_RECORD_T::bandwidthUpload);
    portRecordsVisit(table, [clientHandle](PORT_RECORD_T *record) {
        PORT_LOAD_T load;
        (void)portStatsGetFromCli(clientHandle, record->ifNum, &load); // logged, and all zero
        record->receivedPercent = load.receivedPercent;
        record->transmittedPercent = load.transmittedPercent;
        record->trafficUsage = trafficGet(clientHandle, record->ifNum);
    });
}

int portStatsGetFromCli(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, PORT_LOAD_T *load)
{
    constexpr size_t LINE_SIZE = 255;
    SHOW_FILE_T show;
    char name[INDEXED_NAME_SIZE];
    char command[32];
    char line[LINE_SIZE];

    *load = {};
    if (ifDisplayNameGet(clientHandle, ifNum, name) != RESULT_OK) {
        LOG_ERROR("Failed to get interface name for port %d\n", ifNum);
        return RESULT_OK;
    }
    snprintf(command, sizeof(command), "show interface %s", name);
    SHOW_REQUEST_T request = {__func__, command, PATH_SHOW_INTERFACE};
    request.name = SHOW_NAME_RANDOM;
    request.openLine = SHOW_OPEN_SILENT;
    request.run = SHOW_RUN_PLATFORM;
    int result = showFileRun(&show, clientHandle, request);
    if (show.platformResult != OPENCLT_OK) {
        LOG_ERROR("Bad return code trying to execute CLI show command. (result = %d) (command = %s)\r\n",
                  show.platformResult, command);
        return show.platformResult;
    }
    if (result != RESULT_OK) {
        LOG_ERROR("Could not open file:%s\r\n", show.path);
        return result;
    }
    while (showFileLine(&show, line, sizeof(line))) {
        if (loadLineParse(line, load))
            showRowTaken();
    }
    return RESULT_OK;
}

/*
 * The sixth line of the output is the port's row:
 *
 *           1         2         3         4         5         6         7         8         9
 * 123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123456
 * 1/0/1            Enable    Auto       1000 Full  Up     Enable  Enable  long   Yes      Disable
 */
void stackCapableGet(CLIENT_HANDLE_T *clientHandle, const PORT_RECORD_T &record, char text[STACK_CAPABLE_SIZE])
{
    constexpr uint32_t ROW_LINE = 6;
    constexpr size_t COLUMN = 80;
    SHOW_FILE_T show;
    CUT_FILE_T file;
    char command[64];
    char cut[CUT_SIZE] = "";

    snprintf(command, sizeof(command), "show port %d/%d/%d", record.unit, record.slot, record.port);
    SHOW_REQUEST_T request = {BUILDER, command, PATH_SHOW_STACK_CAPABLE};
    request.openLine = SHOW_OPEN_SILENT;
    if (showFileRun(&show, clientHandle, request) == RESULT_OK && cutFileLoad(&file, show.stream) == RESULT_OK)
        cutColumns(&file, ROW_LINE, COLUMN, STACK_CAPABLE_SIZE - 1, cut);
    if (cut[0] != '\0')
        showRowTaken();
    textCopy(text, STACK_CAPABLE_SIZE, strTrimRight(cut));
}
