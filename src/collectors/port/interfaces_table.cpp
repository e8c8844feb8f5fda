#include "collectors/port/interfaces_table.h"

// The readers of the three tables, and the one routine that runs their commands. All three files are opened, brought
// past their rule line and deleted the same way; the FEC and the hardware-profile table also share the walk that joins
// their rows to the status table by name, and differ only in how a row is taken apart. Uses the show files and column
// readers of switch/.

#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"

#include <cstdio>
#include <cstring>

// Rows with a name that the joined tables share: the name, and the text to be stored.
struct NAMED_ROW_T {
    char name[CLI_LINE_SIZE];
    char text[CLI_LINE_SIZE];
};
using NAMED_ROW_PARSE = bool (*)(const char *line, NAMED_ROW_T *row);

// One of the two tables joined to the status table.
struct JOINED_TABLE_T {
    const char *caller;
    PATH_ID file;
    NAMED_ROW_PARSE parse;
    void (*store)(INTERFACE_ENTRY_T *entry, const char *text);
};

// Open an output file and go past its rule line; a text without one has no rows.
static int tableOpen(SHOW_FILE_T *show, const char *caller, PATH_ID file)
{
    char line[CLI_LINE_SIZE];

    int result = showFileOpen(show, {caller, "", file});
    if (result == RESULT_OK)
        (void)showFileSkipTo(show, "------", line, sizeof(line)); // at the end of the file there is nothing to read
    return result;
}

// How many numbers of "unit/slot/port" the line begins with: 0 to 3.
static int portNumbers(const char *line)
{
    int unit, slot, port;
    int numbers = sscanf(line, "%d/%d/%d", &unit, &slot, &port);

    return numbers < 0 ? 0 : numbers; // an empty line reads as the end of the text
}

static bool statusRowIs(const char *line)
{
    int number;

    return portNumbers(line) >= 2 || sscanf(line, "lag%d", &number) == 1 || sscanf(line, "ch%d", &number) == 1;
}

// The next column behind a gap, without trailing white space.
static bool columnTrimmed(const char **cursor, size_t gap, size_t width, char *out, size_t size)
{
    if (gap > 0 && !columnTake(cursor, gap, nullptr, 0))
        return false;
    if (!columnTake(cursor, width, out, size))
        return false;
    strTrimRight(out);
    return true;
}

//           1         2         3         4         5         6         7
// 0123456789012345678901234567890123456789012345678901234567890123456789012345678901
// Port       Name                    State   Mode        Status      Media Type  ...
// ---------  ----------------------  ------  ----------  ----------  ----------  ...
// 1/0/1      Stage left              Up      Auto        1000 Full   Copper      ...
// lag1                               Down
//
// The last column may be short, and its line end then counts as part of it; a line that ends before it is no row.
static bool statusRowParse(const char *line, INTERFACE_ENTRY_T *entry)
{
    const char *cursor = line;
    INTERFACE_ENTRY_T row = {};

    if (!columnTrimmed(&cursor, 0, 9, row.name, sizeof(row.name)) || !columnTake(&cursor, 2, nullptr, 0) ||
        !columnTake(&cursor, 22, nullptr, 0) || !columnTrimmed(&cursor, 2, 6, row.linkState, sizeof(row.linkState)) ||
        !columnTrimmed(&cursor, 2, 10, row.physicalMode, sizeof(row.physicalMode)) ||
        !columnTrimmed(&cursor, 2, 10, row.physicalStatus, sizeof(row.physicalStatus)) ||
        !columnTrimmed(&cursor, 2, 10, row.mediaType, sizeof(row.mediaType)))
        return false;
    *entry = row;
    return true;
}

// Rows stand in the order of the status table, which may list more: each name is looked for behind the last one found.
// A name that is not there leaves nothing to look in, and the parse ends.
static int joinedRead(const JOINED_TABLE_T &joined, INTERFACE_ENTRY_T *table, uint32_t count)
{
    SHOW_FILE_T show;
    NAMED_ROW_T row;
    char line[CLI_LINE_SIZE];
    uint32_t cursor = 0;

    int result = tableOpen(&show, joined.caller, joined.file);
    if (result != RESULT_OK)
        return result;

    while (cursor < count && showFileLine(&show, line, sizeof(line))) {
        int numbers = portNumbers(line);
        if (numbers == 0)
            break;
        if (numbers == 1 || !joined.parse(line, &row))
            continue;
        showRowTaken();
        while (cursor < count && strcmp(table[cursor].name, row.name) != 0)
            cursor++;
        if (cursor < count)
            joined.store(&table[cursor++], row.text);
    }
    return RESULT_OK;
}

//           1         2         3
// 0123456789012345678901234567890123
// Interface FEC Mode     Link State
// --------- ------------ ----------
// 1/0/49    CL91         Up
// 1/0/50    Disabled     Down
static bool fecRowParse(const char *line, NAMED_ROW_T *row)
{
    const char *cursor = line;

    return columnTrimmed(&cursor, 0, 10, row->name, sizeof(row->name)) &&
           columnTrimmed(&cursor, 0, 13, row->text, sizeof(row->text));
}

static void fecStore(INTERFACE_ENTRY_T *entry, const char *text)
{
    textCopy(entry->fec, sizeof(entry->fec), text);
}

//           1         2         3
// 0123456789012345678901234567890123456789
// Interface  Mode            Ports in use
// ---------  --------------  -------------
// 1/0/49     1x100G          front port
// 1/0/50     4x25G           sub-ports
//
// Two words, wherever they stand.
static bool fanOutRowParse(const char *line, NAMED_ROW_T *row)
{
    return sscanf(line, "%1023s %1023s", row->name, row->text) == 2;
}

static void fanOutStore(INTERFACE_ENTRY_T *entry, const char *text)
{
    constexpr size_t STORED = 11;

    textCopy(entry->fanOutMode, STORED + 1, text);
}

// The partial output of a command that failed is removed.
static bool commandRun(CLIENT_HANDLE_T *clientHandle, const char *command, PATH_ID file)
{
    if (cliShowExecuteToFile(clientHandle, command, PathGet(file)) == RESULT_OK)
        return true;
    (void)remove(PathGet(file)); // there may be none
    return false;
}

int interfacesStatusFromCliGet(INTERFACE_ENTRY_T *table, uint32_t physical, uint32_t further, uint32_t *count)
{
    const uint64_t room = static_cast<uint64_t>(physical) + further;
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];

    *count = 0;
    int result = tableOpen(&show, __func__, PATH_SHOW_INTERFACES_STATUS);
    if (result != RESULT_OK)
        return result;

    while (*count < room && showFileLine(&show, line, sizeof(line))) {
        if (statusRowIs(line) && statusRowParse(line, &table[*count])) {
            showRowTaken();
            (*count)++;
        }
    }
    return RESULT_OK;
}

int interfacesFecModeFromCliGet(INTERFACE_ENTRY_T *table, uint32_t count)
{
    return joinedRead({__func__, PATH_SHOW_FEC, fecRowParse, fecStore}, table, count);
}

int interfacesFanOutModeFromCliGet(INTERFACE_ENTRY_T *table, uint32_t count)
{
    return joinedRead({__func__, PATH_SHOW_HW_PROFILE, fanOutRowParse, fanOutStore}, table, count);
}

void interfacesTableFill(CLIENT_HANDLE_T *clientHandle, INTERFACE_ENTRY_T *table, uint32_t physical, uint32_t further,
                         uint32_t *count)
{
    // What fails has logged its line; its columns, or the whole table, stay empty.
    *count = 0;
    if (commandRun(clientHandle, "show interfaces status all", PATH_SHOW_INTERFACES_STATUS))
        (void)interfacesStatusFromCliGet(table, physical, further, count);
    if (commandRun(clientHandle, "show interface fec", PATH_SHOW_FEC))
        (void)interfacesFecModeFromCliGet(table, *count);
    if (commandRun(clientHandle, "show interfaces hardware profile", PATH_SHOW_HW_PROFILE))
        (void)interfacesFanOutModeFromCliGet(table, *count);
}

const char *fecClassGet(const char *fec)
{
    static const char *const classes[] = {"Disable", "Auto", "CL108", "CL91", "CL74", "RS108"};

    for (const char *one : classes) {
        if (strstr(fec, one) != nullptr)
            return one;
    }
    return "Unknown";
}
