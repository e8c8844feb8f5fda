#include "collectors/port/swcfg_ports_status.h"

// Settings of all interfaces from whole tables of show commands, each command with the parser of its lines. Lines name
// their interface; names are looked up in a sorted index. The rows themselves are made in port_rows.cpp. Uses the show
// files and column readers of switch/.

#include "collectors/port/port_columns.h"
#include "collectors/port/port_name_index.h"
#include "collectors/port/port_rows.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"

#include <cstdio>
#include <cstring>

constexpr uint32_t FURTHER_ENTRIES = 256; // LAGs looked for behind the ports

// The settings table, and an index of it by name.
struct STATUS_TABLES_T {
    PORT_LIST_T *list;
    OWNED_ARRAY<PORT_SETTINGS_T> settings;
    PORT_NAME_INDEX_T<PORT_SETTINGS_T> byName;
    PORT_SETTINGS_T *selected; // interface of the paragraph being read, null for none
};

using LINE_PARSER = void (*)(const char *line, STATUS_TABLES_T *status);

struct SETTINGS_COMMAND_T {
    const char *command;
    PATH_ID file;
    LINE_PARSER parse;
};

static void settingsDefault(STATUS_TABLES_T *status)
{
    for (uint32_t i = 0; i < status->list->entries; i++) {
        PORT_SETTINGS_T *settings = &status->settings[i];
        settings->adminState = 1;
        settings->pvid = 1;
        settings->stpFwdState = "Disable";
        settings->autoNegotiation = "Disable";
        portNameIndexAdd(&status->byName, status->list->table[i].name, settings);
    }
    portNameIndexSort(&status->byName);
}

//           1         2
// 012345678901234567890123456
// Interface  Description
// ---------  ----------------
// 1/0/1      FOH console
// lag 1      Rack B            (a LAG's name has a blank, so its row is taken by columns)
static void descriptionLine(const char *line, STATUS_TABLES_T *status)
{
    constexpr size_t DESCRIPTION_COLUMN = 11;
    char name[12] = "", description[PORT_LINE_SIZE] = "";

    if (textBegins(line, "lag")) {
        portNameColumn(line, name);
        columnRest(line, DESCRIPTION_COLUMN, description, sizeof(description));
        strTrimRight(description);
    } else if (sscanf(line, "%11s %127[^\r\n]", name, description) < 1) {
        return;
    }
    PORT_SETTINGS_T *settings = portNameIndexFind(status->byName, name);
    if (settings == nullptr)
        return;
    showRowTaken();
    textCopy(settings->description, sizeof(settings->description), description);
}

// Settings of the interface that the first nine columns name; null for a short line, for a name that begins as the
// titles and rules do, and for an unknown one.
static PORT_SETTINGS_T *rowSettings(const STATUS_TABLES_T *status, const char *line, size_t shortest,
                                    const char *titles)
{
    char name[PORT_NAME_SIZE];

    if (strlen(line) < shortest)
        return nullptr;
    portNameColumn(line, name);
    if (name[0] == '\0' || strchr(titles, name[0]) != nullptr)
        return nullptr;
    PORT_SETTINGS_T *settings = portNameIndexFind(status->byName, name);
    if (settings != nullptr)
        showRowTaken();
    return settings;
}

//           1         2         3         4
// 0123456789012345678901234567890123456789012345678
//                  Admin     Physical   Physical
// Intf      Type   Mode      Mode       Status
// --------- ------ --------- ---------- ----------
// 1/0/45    PC Mbr Enable    Auto       1000 Full
//
// LAGs are listed too, but keep their default.
static void portAllLine(const char *line, STATUS_TABLES_T *status)
{
    constexpr size_t SHORTEST = 23, ADMIN_COLUMN = 17, ADMIN_WIDTH = 9;
    char mode[ADMIN_WIDTH + 1];

    if (textBegins(line, "lag"))
        return;
    PORT_SETTINGS_T *settings = rowSettings(status, line, SHORTEST, "-I");
    if (settings == nullptr)
        return;
    (void)columnText(line, ADMIN_COLUMN, ADMIN_WIDTH, mode, sizeof(mode));
    if (strcmp(mode, "Enable") == 0)
        settings->adminState = 1;
    else if (strcmp(mode, "Disable") == 0)
        settings->adminState = 0;
}

//           1         2         3         4
// 0123456789012345678901234567890123456789012345678
// Intf       Type                Neg       Operational
// ---------  ------------------  --------  -----------
// 1/0/1      Copper              Enabled   1000 Full
static void advertiseLine(const char *line, STATUS_TABLES_T *status)
{
    constexpr size_t SHORTEST = 20, NAME_WIDTH = 9;
    PORT_SETTINGS_T *settings = rowSettings(status, line, SHORTEST, "-I");

    if (settings == nullptr)
        return;
    if (strstr(line + NAME_WIDTH, "Enabled") != nullptr)
        settings->autoNegotiation = "Enable";
    else if (strstr(line + NAME_WIDTH, "Disabled") != nullptr)
        settings->autoNegotiation = "Disable";
}

//           1         2         3
// 012345678901234567890123456789012345678901
//            Bcast    Bcast       Bcast
// Intf       Mode     Level       Action
// ---------  -------  ----------  ----------
// 1/0/1      Disable  5%          None
static void stormControlLine(const char *line, STATUS_TABLES_T *status)
{
    constexpr size_t SHORTEST = 14;
    char name[12], word[16];

    if (strlen(line) < SHORTEST || sscanf(line, "%11s %15s", name, word) != 2 || strchr("-BI", name[0]) != nullptr)
        return;
    showRowTaken();
    PORT_SETTINGS_T *settings = portNameIndexFind(status->byName, name);
    if (settings != nullptr && (strcmp(word, "Enable") == 0 || strcmp(word, "Disable") == 0))
        settings->stormControl = word[0] == 'E';
}

static void vlanPortLine(const char *line, STATUS_TABLES_T *status)
{
    char name[PORT_NAME_SIZE];
    uint32_t pvid = 0;

    if (!vlanPortRow(line, name, &pvid))
        return;
    showRowTaken();
    PORT_SETTINGS_T *settings = portNameIndexFind(status->byName, name);
    if (settings != nullptr)
        settings->pvid = pvid;
}

//           1         2         3         4
// 0123456789012345678901234567890123456789012345678901
// Interface: 1/0/1
// Port Mode..................................... Enabled
// BPDU Filter Mode.............................. Disabled
// TCN Guard..................................... False
//
// One paragraph for each interface. Those of an unknown one are passed over.
static void spanningInterfaceLine(const char *line, STATUS_TABLES_T *status)
{
    constexpr size_t NAME_COLUMN = 10;
    char name[PORT_LINE_SIZE], word[16];

    if (textBegins(line, "Interface:")) {
        showRowTaken();
        (void)columnText(line, NAME_COLUMN, sizeof(name), name, sizeof(name));
        status->selected = portNameIndexFind(status->byName, name);
        return;
    }
    const char *dot = strrchr(line, '.');
    if (status->selected == nullptr || dot == nullptr || sscanf(dot + 1, "%15s", word) != 1)
        return;
    if (textBegins(line, "Port Mode"))
        status->selected->stp = strcmp(word, "Enabled") == 0;
    else if (textBegins(line, "TCN Guard"))
        status->selected->stpTcnGuard = strcmp(word, "True") == 0 || strcmp(word, "TRUE") == 0;
    else if (textBegins(line, "BPDU Filter Mode"))
        status->selected->stpBpduFilter = strcmp(word, "Enabled") == 0;
}

//           1         2         3         4         5
// 012345678901234567890123456789012345678901234567890123456
//           STP             STP                 Port
// Interface Mode     Type   State               Role
// --------- -------- -----  ------------------  -----------
// 1/0/48    Enabled         Discarding          Alternate
static void spanningSummaryLine(const char *line, STATUS_TABLES_T *status)
{
    constexpr size_t SHORTEST = 18, MODE_COLUMN = 10, MODE_WIDTH = 8, STATE_COLUMN = 26;
    static const char *const states[][2] = {
        {"Forwarding", "Forwding"}, {"Discarding", "Discarding"}, {"Disabled", "Disable"},
        {"Learning", "Learning"},   {"Listening", "Discarding"},  {"Blocking", "Discarding"},
    };
    char mode[MODE_WIDTH + 1];
    PORT_SETTINGS_T *settings = rowSettings(status, line, SHORTEST, "-IS");

    if (settings == nullptr)
        return;
    (void)columnText(line, MODE_COLUMN, MODE_WIDTH, mode, sizeof(mode));
    if (strcmp(mode, "Enabled") == 0)
        settings->stp = true;
    else if (strcmp(mode, "Disabled") == 0)
        settings->stp = false;
    if (strlen(line) <= STATE_COLUMN)
        return;
    for (const auto &[word, text] : states) {
        if (strstr(line + STATE_COLUMN, word) != nullptr) {
            settings->stpFwdState = text;
            return;
        }
    }
}

static const SETTINGS_COMMAND_T commands[] = {
    {"show interfaces description all", PATH_SHOW_DESCRIPTIONS, descriptionLine},
    {"show port all", PATH_SHOW_PORT_ALL, portAllLine},
    {"show port advertise", PATH_SHOW_ADVERTISE, advertiseLine},
    {"show storm-control all", PATH_SHOW_STORM_CONTROL, stormControlLine},
    {"show vlan port all", PATH_SHOW_VLAN_PORT, vlanPortLine},
    {"show spanning-tree interface all", PATH_SHOW_STP_INTERFACE, spanningInterfaceLine},
    {"show spanning-tree mst port summary 0 all", PATH_SHOW_STP_SUMMARY, spanningSummaryLine},
};

// A command that fails, or leaves no file, leaves its settings as they are.
static void commandsRead(STATUS_TABLES_T *status)
{
    char line[PORT_LINE_SIZE];

    for (const SETTINGS_COMMAND_T &one : commands) {
        SHOW_FILE_T show;
        SHOW_REQUEST_T request = {"getPortStatusListFast", one.command, one.file};
        request.openLine = SHOW_OPEN_SILENT;
        if (showFileRun(&show, status->list->clientHandle, request) != RESULT_OK)
            continue;
        status->selected = nullptr;
        while (showFileLineCut(&show, line, sizeof(line)))
            one.parse(line, status);
    }
}

static int statusPrepare(PORT_LIST_T *list, void *context)
{
    auto *status = static_cast<STATUS_TABLES_T *>(context);

    status->list = list;
    status->settings = ownedArray<PORT_SETTINGS_T>(list->entries);
    if (status->settings == nullptr || !portNameIndexStart(&status->byName, list->entries))
        return RESULT_NO_MEMORY;
    settingsDefault(status);
    commandsRead(status);
    list->profiles.cache = vlanInfoSortedLoad(&list->profiles.reads);
    return RESULT_OK;
}

// What the tables do not tell: the edge mode, and the negotiation of a detached port, which is not listed.
static void statusSettingsRead(const PORT_LIST_T *list, const PORT_ROW_T *row, void *context, PORT_SETTINGS_T *settings)
{
    uint32_t edge = 0, autoNeg = 1;

    *settings = static_cast<STATUS_TABLES_T *>(context)->settings[row->index];
    settings->stpEdge =
        rpcclt_openapiDot1SIntfEdgePortModeGet(list->clientHandle, row->ifNum, &edge) == OPENCLT_OK && edge != 0;
    if (row->lag || row->linkState != OPENCLT_LINK_DETACHED)
        return;
    if (openapiIfAutoNegGet(list->clientHandle, row->ifNum, &autoNeg) != OPENCLT_OK)
        autoNeg = 1;
    settings->autoNegotiation = portAutoNegText(autoNeg);
}

int getPortStatusListFast(CLIENT_HANDLE_T *clientHandle, char **out)
{
    STATUS_TABLES_T status = {};

    if (out == nullptr)
        return RESULT_INVALID_ARGUMENT;
    PORT_SOURCE_T source = {__func__};
    source.furtherRoom = FURTHER_ENTRIES;
    source.indexPage = 1;
    source.context = &status;
    source.prepare = statusPrepare;
    source.settingsRead = statusSettingsRead;
    return portRowsPrint(clientHandle, source, out);
}
