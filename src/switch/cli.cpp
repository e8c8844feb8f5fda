#include "switch/cli.h"

// Runs show commands through the platform and reads their output files. SHOW_FILE_T is the road of one file from the
// command to its removal; the two readers that other processes run into the same files take a lock file around it.

#include "runtime/account.h"
#include "runtime/clock.h"
#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/ownfile.h"
#include "runtime/result.h"
#include "switch/columns.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr size_t COMMAND_SIZE = 255;
thread_local int lastRead = -1; // place in the account of the command whose text was read last
constexpr int BOOTVAR_HEADER_LINES = 14;

// One attempt: command and path cut to the platform's buffers, any earlier file gone. The platform's result.
int platformRun(CLIENT_HANDLE_T *clientHandle, const char *command, const char *outputFile);

// Remove an earlier file, or move aside what is none.
void outputClear(const char *path);

// Make an empty output file, of time 0, and remove it again if the platform has not written it.
void outputMake(const char *path);
void outputUnwrittenRemove(const char *path);

// File name of a request, as long as an output path may be.
void requestPath(const SHOW_REQUEST_T &request, char path[PATH_OUTPUT_SIZE]);
int requestRun(SHOW_FILE_T *show, CLIENT_HANDLE_T *clientHandle, const SHOW_REQUEST_T &request);
int openAtPath(SHOW_FILE_T *show, const SHOW_REQUEST_T &request);
void openFailureLog(const SHOW_REQUEST_T &request, const char *path);

// Run a reader while holding a lock file, under which other processes run the same command into the same file. The lock
// file stays: removing it would let the holder of the old file and the maker of a new one both hold the lock.
template <typename READER> int lockedRun(PATH_ID lockFile, const char *name, READER reader);

// Run and open as the shared readers do: a command that failed shows as a file that does not open.
int readerOpen(SHOW_FILE_T *show, CLIENT_HANDLE_T *clientHandle, const SHOW_REQUEST_T &request);

bool bootvarRowParse(const char *line, BOOTVAR_ROW_T *row);
void managementLineParse(const char *line, MANAGEMENT_PORT_T *parameters);
} // namespace

int cliShowExecuteToFile(CLIENT_HANDLE_T *clientHandle, const char *command, const char *outputFile)
{
    if (command == nullptr || outputFile == nullptr) {
        LOG_ERROR("cliShowExecuteToFile: Invalid argument\r\n");
        return RESULT_INVALID_ARGUMENT;
    }
    int result = platformRun(clientHandle, command, outputFile);
    if (result != OPENCLT_OK) {
        LOG_ERROR("Execute show cmd faile, result:%d\r\n", result);
        return RESULT_FAILED;
    }
    return RESULT_OK;
}

SHOW_FILE_T::~SHOW_FILE_T()
{
    if (stream != nullptr)
        fclose(stream);
    if (removeAtEnd)
        (void)remove(path); // it may be gone, or never have been written
}

int showFileRun(SHOW_FILE_T *show, CLIENT_HANDLE_T *clientHandle, const SHOW_REQUEST_T &request)
{
    requestPath(request, show->path);
    show->removeAtEnd = request.after == SHOW_AFTER_REMOVE;
    int result = requestRun(show, clientHandle, request);
    if (result != RESULT_OK) {
        if (show->removeAtEnd)
            (void)remove(show->path); // there may be no part of it
        return result;
    }
    return openAtPath(show, request);
}

int showFileOpen(SHOW_FILE_T *show, const SHOW_REQUEST_T &request)
{
    requestPath(request, show->path);
    show->removeAtEnd = request.after == SHOW_AFTER_REMOVE;
    return openAtPath(show, request);
}

bool showFileLine(SHOW_FILE_T *show, char *line, size_t size)
{
    lastRead = show->account;
    return show->stream != nullptr && fgets(line, static_cast<int>(size), show->stream) != nullptr;
}

void showRowTaken()
{
    accountCommandRow(lastRead);
}

bool showFileLineCut(SHOW_FILE_T *show, char *line, size_t size)
{
    if (show->stream == nullptr)
        return false;
    lastRead = show->account;
    size_t length = 0;
    size_t total = 0;
    int character;
    while ((character = getc_unlocked(show->stream)) != EOF && character != '\n') {
        if (length + 1 < size)
            line[length++] = static_cast<char>(character);
        total++;
    }
    if (length > 0 && length == total && line[length - 1] == '\r')
        length--;
    line[length] = '\0';
    return character != EOF || total > 0;
}

bool showFileSkipTo(SHOW_FILE_T *show, const char *prefix, char *line, size_t size)
{
    line[0] = '\0';
    while (showFileLine(show, line, size)) {
        if (textBegins(line, prefix))
            return true;
    }
    return false;
}

void showFileRewind(SHOW_FILE_T *show)
{
    if (show->stream != nullptr)
        rewind(show->stream);
}

int bootvarGetSafe(CLIENT_HANDLE_T *clientHandle, BOOTVAR_ROW_T *rows, uint32_t *count)
{
    return lockedRun(PATH_BOOTVAR_LOCK, __func__, [=] { return bootvarGet(clientHandle, rows, count); });
}

/*
 * 14 lines of explanation, column titles and rules, then one row a unit:
 *
 *  1  7.1.0.14      7.1.0.9       7.1.0.14          7.1.0.14
 *  2  7.1.0.14      7.1.0.9       7.1.0.14          7.1.0.14
 */
int bootvarGet(CLIENT_HANDLE_T *clientHandle, BOOTVAR_ROW_T *rows, uint32_t *count)
{
    uint32_t capacity = *count;
    *count = 0;
    SHOW_FILE_T show;
    int result = readerOpen(&show, clientHandle, {__func__, "show bootvar", PATH_SHOW_BOOTVAR});
    if (result != RESULT_OK)
        return result;

    char line[CLI_LINE_SIZE];
    for (int i = 0; i < BOOTVAR_HEADER_LINES; i++) {
        if (!showFileLine(&show, line, sizeof line))
            return RESULT_OK;
    }
    while (*count < capacity && showFileLine(&show, line, sizeof line) && bootvarRowParse(line, &rows[*count])) {
        showRowTaken();
        (*count)++;
    }
    return RESULT_OK;
}

int managementPortIPv4ParametersGetSafe(CLIENT_HANDLE_T *clientHandle, MANAGEMENT_PORT_T *parameters)
{
    return lockedRun(PATH_MGMT_PORT_LOCK, __func__,
                     [=] { return managementPortIPv4ParametersGet(clientHandle, parameters); });
}

int managementPortIPv4ParametersGet(CLIENT_HANDLE_T *clientHandle, MANAGEMENT_PORT_T *parameters)
{
    SHOW_FILE_T show;
    int result = readerOpen(&show, clientHandle, {__func__, "show ip management", PATH_SHOW_IP_MANAGEMENT});
    if (result != RESULT_OK)
        return result;

    char line[CLI_LINE_SIZE];
    while (showFileLine(&show, line, sizeof line))
        managementLineParse(line, parameters);
    return RESULT_OK;
}

int managementVlanGet(CLIENT_HANDLE_T *clientHandle, int *vlan)
{
    if (clientHandle == nullptr || vlan == nullptr)
        return RESULT_INVALID_ARGUMENT;
    MANAGEMENT_PORT_T parameters = {};
    parameters.vlan = 1;
    int result = managementPortIPv4ParametersGetSafe(clientHandle, &parameters);
    *vlan = parameters.vlan;
    return result;
}

namespace {
int platformRun(CLIENT_HANDLE_T *clientHandle, const char *command, const char *outputFile)
{
    char commandText[COMMAND_SIZE];
    char fileText[PATH_OUTPUT_SIZE];
    textCopy(commandText, sizeof commandText, command);
    textCopy(fileText, sizeof fileText, outputFile);
    outputClear(fileText);
    outputMake(fileText);
    openclt_buffer_t commandBuffer = {static_cast<uint32_t>(strlen(commandText) + 1), commandText};
    openclt_buffer_t fileBuffer = {static_cast<uint32_t>(strlen(fileText) + 1), fileText};
    int64_t begin = ClockSteady();
    int result = rpcclt_openapiCliShowExecuteToFile(clientHandle, &commandBuffer, &fileBuffer);
    accountCommandRun(commandText, fileText, result, ClockSteady() - begin);
    if (result != OPENCLT_OK)
        LOG_ERROR("Show cmd failed: %s\r\n", commandText); // the lines that follow do not name it
    outputUnwrittenRemove(fileText);
    return result;
}

void outputClear(const char *path)
{
    struct stat status;

    // there is none, as a rule; a folder that holds something cannot be removed
    if (remove(path) != 0 && errno != ENOENT && lstat(path, &status) == 0 && !fileIsOwn(status))
        (void)ownFileClear(path);
}

// A command takes its time, and in a folder of everyone's somebody could lay a file of his own meanwhile: it would
// count as missing afterwards. A name that is the daemon's nobody can take.
void outputMake(const char *path)
{
    OWNED_FD_T file(ownFileOpen(path, O_EXCL, 0666));
    const struct timespec never[2] = {};

    if (file.fd >= 0 && futimens(file.fd, never) != 0)
        (void)remove(path); // could not be told from one that was written; the platform makes it
}

// Writing, and emptying, sets the time.
void outputUnwrittenRemove(const char *path)
{
    struct stat status;

    if (lstat(path, &status) == 0 && fileIsOwn(status) && status.st_size == 0 && status.st_mtime == 0)
        (void)remove(path);
}

void requestPath(const SHOW_REQUEST_T &request, char path[PATH_OUTPUT_SIZE])
{
    if (request.name == SHOW_NAME_RANDOM)
        PathNumbered(request.file, randomSuffixGet(), path, PATH_OUTPUT_SIZE);
    else
        textCopy(path, PATH_OUTPUT_SIZE, PathGet(request.file));
}

int requestRun(SHOW_FILE_T *show, CLIENT_HANDLE_T *clientHandle, const SHOW_REQUEST_T &request)
{
    if (request.run == SHOW_RUN_RUNNER)
        return cliShowExecuteToFile(clientHandle, request.command, show->path);
    show->platformResult = platformRun(clientHandle, request.command, show->path);
    return show->platformResult == OPENCLT_OK ? RESULT_OK : RESULT_FAILED;
}

// Lines behind the rule under the column titles are data, unless they are blank or say that there is none.
void lineCount(std::string_view line, ACCOUNT_TEXT_T *text, bool *ruled)
{
    static constexpr std::string_view none[] = {"No ", "no ", "None", "There are no"};

    text->lines++;
    line.remove_prefix(std::min(line.find_first_not_of(" \t\r"), line.size()));
    if (line.substr(0, 3) == "---")
        *ruled = true;
    else if (*ruled && !line.empty() &&
             std::none_of(std::begin(none), std::end(none), [line](auto words) { return line.rfind(words, 0) == 0; }))
        text->data++;
}

// Looks at a whole text, of which a reader may want a part only. A line that fills the piece counts as several.
ACCOUNT_TEXT_T textCount(int fd)
{
    char piece[16384];
    ACCOUNT_TEXT_T text = {};
    bool ruled = false;
    ssize_t got;

    while ((got = pread(fd, piece, sizeof(piece), static_cast<off_t>(text.bytes))) > 0) {
        std::string_view rest(piece, static_cast<size_t>(got));
        for (size_t end; (end = rest.find('\n')) != std::string_view::npos; rest.remove_prefix(end + 1))
            lineCount(rest.substr(0, end), &text, &ruled);
        bool taken = static_cast<size_t>(got) < sizeof(piece) || rest.size() == sizeof(piece);
        if (taken && !rest.empty())
            lineCount(rest, &text, &ruled);
        text.bytes += static_cast<uint64_t>(got) - (taken ? 0 : rest.size());
    }
    return text;
}

int openAtPath(SHOW_FILE_T *show, const SHOW_REQUEST_T &request)
{
    show->stream = fileOpenReadOwn(show->path);
    if (show->stream != nullptr) {
        lastRead = show->account = accountCommandOf(show->path);
        accountCommandText(show->account, textCount(fileno(show->stream)));
        return RESULT_OK;
    }
    openFailureLog(request, show->path);
    return RESULT_OPEN_FAILED;
}

void openFailureLog(const SHOW_REQUEST_T &request, const char *path)
{
    switch (request.openLine) {
    case SHOW_OPEN_LOWER:
        LOG_ERROR_AS(request.caller, "can not open file:%s\r\n", path);
        break;
    case SHOW_OPEN_UPPER:
        LOG_ERROR_AS(request.caller, "Can not open file:%s\r\n", path);
        break;
    case SHOW_OPEN_SHORT:
        LOG_ERROR_AS(request.caller, "can not open %s\n", path);
        break;
    case SHOW_OPEN_SILENT:
        break;
    }
}

template <typename READER> int lockedRun(PATH_ID lockFile, const char *name, READER reader)
{
    OWNED_FD_T lock(lockFileOpen(PathGet(lockFile)));
    if (lock.fd < 0)
        return RESULT_FAILED;
    if (lockFileWait(lock.fd, PathGet(lockFile)) != 0) {
        LOG_ERROR_AS(name, "File lock failed\n");
        return RESULT_FAILED;
    }
    int result = reader();
    if (flock(lock.fd, LOCK_UN) != 0) {
        LOG_ERROR_AS(name, "File unlock failed\n");
        return RESULT_FAILED;
    }
    return result;
}

int readerOpen(SHOW_FILE_T *show, CLIENT_HANDLE_T *clientHandle, const SHOW_REQUEST_T &request)
{
    int result = showFileRun(show, clientHandle, request);
    return result == RESULT_FAILED ? showFileOpen(show, request) : result;
}

// Each image is split off whole and then cut to its column, so that an over-long name does not shift the ones after it.
bool bootvarRowParse(const char *line, BOOTVAR_ROW_T *row)
{
    char images[4][CLI_LINE_SIZE];
    int unit;
    if (sscanf(line, "%d %1023s %1023s %1023s %1023s", &unit, images[0], images[1], images[2], images[3]) != 5)
        return false;
    row->unit = unit;
    textCopy(row->image1, sizeof row->image1, images[0]);
    textCopy(row->image2, sizeof row->image2, images[1]);
    textCopy(row->image3, sizeof row->image3, images[2]);
    textCopy(row->image4, sizeof row->image4, images[3]);
    return true;
}

/*
 * 0         1         2         3         4         5
 * 0123456789012345678901234567890123456789012345678901234567
 * IPv4 Management Interface.......................... 1        (the number stands at column 52)
 * IP Address.................................... 192.168.1.20  (the word stands at column 47)
 */
void managementLineParse(const char *line, MANAGEMENT_PORT_T *parameters)
{
    constexpr size_t VLAN_COLUMN = 52;
    constexpr size_t TEXT_COLUMN = 47;
    struct LABEL_T {
        const char *label;
        char (MANAGEMENT_PORT_T::*field)[64];
    };
    static constexpr LABEL_T LABELS[] = {
        {"IP Address", &MANAGEMENT_PORT_T::address},
        {"Subnet Mask", &MANAGEMENT_PORT_T::mask},
        {"Method", &MANAGEMENT_PORT_T::method},
        {"Default Gateway", &MANAGEMENT_PORT_T::gateway},
    };
    if (textBegins(line, "IPv4 Management Interface")) {
        showRowTaken();
        (void)columnNumber(line, VLAN_COLUMN, &parameters->vlan); // no number: the caller's value stays
        return;
    }
    for (const LABEL_T &row : LABELS) {
        char *field = (parameters->*row.field);
        if (textBegins(line, row.label)) {
            showRowTaken();
            (void)columnWord(line, TEXT_COLUMN, field, sizeof parameters->address); // likewise
            return;
        }
    }
}
} // namespace
