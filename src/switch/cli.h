// cli.h - running CLI show commands and reading their output files.
//
// The platform runs a show command and writes its text into a file; a collector reads that file line by line and
// deletes it. SHOW_FILE_T is that whole road as one owning thing.
#pragma once

#include "runtime/paths.h"
#include "switch/session.h"

#include <cstdio>

// Line buffer of the readers; a longer line arrives as several.
constexpr size_t CLI_LINE_SIZE = 1024;

// Run a command (cut at 254 characters) into a file (path cut at 95), deleting any earlier file first.
// 0; 10003 when an argument is missing; 10000 when the platform fails ("Show cmd failed" with the command, and
// "Execute show cmd faile" with the result, are logged).
// The caller owns the file.
[[nodiscard]] int cliShowExecuteToFile(CLIENT_HANDLE_T *clientHandle, const char *command, const char *outputFile);

// How the name of an output file ends.
enum SHOW_NAME : int { SHOW_NAME_FIXED, SHOW_NAME_RANDOM };

// Whether the file is deleted when the SHOW_FILE_T goes.
enum SHOW_AFTER : int { SHOW_AFTER_REMOVE, SHOW_AFTER_KEEP };

// What is logged (error) when the output file does not open.
enum SHOW_OPEN_LINE : int {
    SHOW_OPEN_LOWER, // "can not open file:%s\r\n"
    SHOW_OPEN_UPPER, // "Can not open file:%s\r\n"
    SHOW_OPEN_SHORT, // "can not open %s\n"
    SHOW_OPEN_SILENT,
};

// Who runs the command: the runner above, or the platform call directly (of the lines at a failure only that
// with the command appears, and *platformResult of the SHOW_FILE_T holds the platform's own result).
enum SHOW_RUN : int { SHOW_RUN_RUNNER, SHOW_RUN_PLATFORM };

// One show command as a collector wants it. What differs from the presets is set by name.
struct SHOW_REQUEST_T {
    const char *caller; // function name in the log lines
    const char *command;
    PATH_ID file;
    SHOW_NAME name = SHOW_NAME_FIXED;
    SHOW_AFTER after = SHOW_AFTER_REMOVE;
    SHOW_OPEN_LINE openLine = SHOW_OPEN_LOWER;
    SHOW_RUN run = SHOW_RUN_RUNNER;

    SHOW_REQUEST_T(const char *callerName, const char *showCommand, PATH_ID outputFile)
        : caller(callerName), command(showCommand), file(outputFile)
    {
    }
};

// An output file being read. Closes, and removes as asked, when it goes out of scope.
struct SHOW_FILE_T {
    char path[PATH_OUTPUT_SIZE] = {};
    FILE *stream = nullptr;
    bool removeAtEnd = false;
    int platformResult = 0;
    int account = -1; // place of the command in the daemon's account of itself

    SHOW_FILE_T() = default;
    SHOW_FILE_T(const SHOW_FILE_T &) = delete;
    SHOW_FILE_T &operator=(const SHOW_FILE_T &) = delete;
    ~SHOW_FILE_T();
};

// Run the command and open its output. 0; the runner's result (10000) when the command fails, with any part-written
// file removed unless it is to be kept; 10016 when the file does not open.
[[nodiscard]] int showFileRun(SHOW_FILE_T *show, CLIENT_HANDLE_T *clientHandle, const SHOW_REQUEST_T &request);

// Only open a file that an earlier command left (same results but for the command's).
[[nodiscard]] int showFileOpen(SHOW_FILE_T *show, const SHOW_REQUEST_T &request);

// Next piece of at most size-1 characters, the line feed kept; false at the end. A longer line arrives as several.
[[nodiscard]] bool showFileLine(SHOW_FILE_T *show, char *line, size_t size);

// Next line cut at size-1 characters, without its line end (LF, or CR LF); what is beyond is passed over.
[[nodiscard]] bool showFileLineCut(SHOW_FILE_T *show, char *line, size_t size);

// Read on past the first line that begins with the prefix; that line is left in `line`. False when the file ends first
// (`line` then holds the last line read, or "" when there was none).
[[nodiscard]] bool showFileSkipTo(SHOW_FILE_T *show, const char *prefix, char *line, size_t size);

// Say that the line that was read last, of whichever file, was recognised as a row. A text with lines behind its rule
// of which none was is the mark of a firmware that moved a column.
void showRowTaken();

// Start again at the first line.
void showFileRewind(SHOW_FILE_T *show);

// ---- readers that other processes share, behind lock files ----

// One row of "show bootvar": the unit and the four image columns.
struct BOOTVAR_ROW_T {
    int unit;
    char image1[12];
    char image2[12];
    char image3[18]; // what the image collector reports as running
    char image4[18];
};

// Rows of "show bootvar": *count is the room on entry, the filled rows on return. 0, 10016 when the output does not
// open, 10000 when the lock cannot be had.
[[nodiscard]] int bootvarGetSafe(CLIENT_HANDLE_T *clientHandle, BOOTVAR_ROW_T *rows, uint32_t *count);
[[nodiscard]] int bootvarGet(CLIENT_HANDLE_T *clientHandle, BOOTVAR_ROW_T *rows, uint32_t *count);

// Values of "show ip management"; those whose lines are absent are left as they are. Each text is one word.
struct MANAGEMENT_PORT_T {
    int vlan;
    char method[64];
    char address[64];
    char mask[64];
    char gateway[64];
};
[[nodiscard]] int managementPortIPv4ParametersGetSafe(CLIENT_HANDLE_T *clientHandle, MANAGEMENT_PORT_T *parameters);
[[nodiscard]] int managementPortIPv4ParametersGet(CLIENT_HANDLE_T *clientHandle, MANAGEMENT_PORT_T *parameters);

// Management VLAN, 1 unless "show ip management" says otherwise; 10003 when an argument is missing.
[[nodiscard]] int managementVlanGet(CLIENT_HANDLE_T *clientHandle, int *vlan);
