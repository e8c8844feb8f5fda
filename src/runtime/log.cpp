// log.cpp - the process-wide logger: threshold in a shared level file, one log file rotated at 1 MiB, syslog, stdout.
//
// The threshold is read with a one-byte pread on every call. A mapping would be cheaper, but `echo 7 > FILE` empties
// the file first, and a touch of a mapped page beyond the end of the file ends the process. An empty file counts as 6.
// A line is one write into a file opened for appending, cut off again when the disk takes only part of it; a log that
// was removed or moved away is begun anew with the next line.
// The log lock serialises the log file and its rotation; cancellation is held off while a message is written, so that a
// task deleted from outside never leaves the lock taken.
#include <syslog.h>
// <syslog.h> names its priorities like our macros; only its functions are used here.
#undef LOG_INFO
#undef LOG_DEBUG
#include "runtime/log.h"

#include "runtime/clock.h"
#include "runtime/files.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <pthread.h>

constexpr int DEFAULT_THRESHOLD = 6;
constexpr int DEFAULT_FACILITY = 8;
constexpr int64_t ROTATE_BYTES = 1048576; // a total above it rotates
constexpr int64_t LINE_SIZE = 2048;       // a longer line takes memory
constexpr off_t LEVEL_FILE_SIZE = 4;
constexpr const char *LEVEL_NAMES[] = {"", "", "", "ERROR", "WARN", "NOTICE", "INFO", "DEBUG"};

static void logReset();
static void logClose();
static void levelFileOpen();
static void logFileOpen();
static void logFileClose();
static int thresholdGet();
static void openOnce();
static void processNameRead();
static void fileWriteRotate(int level, const char *format, va_list arguments) __attribute__((format(printf, 2, 0)));
static void fileLineWrite(int level, const char *format, va_list arguments) __attribute__((format(printf, 2, 0)));
static void asideTell(const char *path, const char *aside);
static void streamLineWrite(FILE *stream, int level, const char *format, va_list arguments)
    __attribute__((format(printf, 3, 0)));
static size_t headerFormat(char *out, size_t size, int level);
static void logRotate();
static bool timestampFormat(char *out, size_t size);

struct LOG_STATE_T {
    int options = -1;  // LOG_OPTION bits; -1 until initialised
    int facility = -1; // of syslog
    const char *ident = nullptr;
    int file = -1;
    struct stat fileStatus = {};           // of the log file, as it was opened
    int64_t bytesWritten = 0;              // size of the current log file
    char levelAside[FILE_ASIDE_SIZE] = ""; // where what stood at the level file's name was moved; told once
    std::atomic<int> levelFd{-1};          // level file, kept open
    std::atomic<bool> opened{false};       // the first write has settled identity and syslog
    std::mutex openLock;
    std::mutex fileLock;
    char processName[64] = "";
};
static LOG_STATE_T logState;
static PROCESS_STATE_T logProcessState(logReset);

void LogInit(int options, int facility, const char *ident)
{
    logClose();
    logState.ident = ident;
    logState.options = options;
    logState.facility = facility;
    levelFileOpen();
    if ((options & LOG_OPTION_FILE) != 0) {
        std::lock_guard<std::mutex> guard(logState.fileLock);
        logFileOpen();
        asideTell(PathGet(PATH_LOG_LEVEL), logState.levelAside);
    }
}

void LogWrite(int level, const char *format, ...)
{
    if (!LogEnabled(level))
        return;
    int cancelState = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState);
    openOnce();
    va_list arguments;
    va_start(arguments, format);
    va_list copy;
    if ((logState.options & LOG_OPTION_STDOUT) != 0) {
        va_copy(copy, arguments);
        streamLineWrite(stdout, level, format, copy);
        va_end(copy);
    }
    if ((logState.options & LOG_OPTION_FILE) != 0) {
        va_copy(copy, arguments);
        fileWriteRotate(level, format, copy);
        va_end(copy);
    }
    if ((logState.options & LOG_OPTION_SYSLOG) != 0) {
        va_copy(copy, arguments);
        vsyslog(level, format, copy);
        va_end(copy);
    }
    va_end(arguments);
    pthread_setcancelstate(cancelState, nullptr);
}

bool LogEnabled(int level)
{
    return level <= thresholdGet();
}

static void logReset()
{
    logClose();
    logState.options = -1;
    logState.facility = -1;
    logState.ident = nullptr;
}

// Close what an earlier LogInit and its first write opened.
static void logClose()
{
    if (logState.opened.load() && (logState.options & LOG_OPTION_SYSLOG) != 0)
        closelog();
    {
        std::lock_guard<std::mutex> guard(logState.fileLock);
        logFileClose();
    }
    int fd = logState.levelFd.exchange(-1);
    if (fd >= 0)
        close(fd);
    logState.opened.store(false);
}

static void levelFileOpen()
{
    OWNED_FD_T level(fileOpenOwn(PathGet(PATH_LOG_LEVEL), 0, 0666, logState.levelAside));
    if (level.fd < 0 || ftruncate(level.fd, LEVEL_FILE_SIZE) != 0)
        return;
    char digit = 0;
    if (pread(level.fd, &digit, 1, 0) != 1 || digit < '0' || digit > '9') {
        // a file that cannot be written counts as 6 anyway
        if (pwrite(level.fd, "6", 1, 0) != 1)
            return;
    }
    logState.levelFd.store(level.release());
}

// What an earlier process left of its last line gets a line end, but for a log that is about to be rotated with it.
static void logFileOpen()
{
    char aside[FILE_ASIDE_SIZE];

    logState.bytesWritten = 0;
    logState.file = fileOpenOwn(PathGet(PATH_LOG), O_APPEND, 0666, aside);
    if (logState.file < 0)
        return;
    if (fstat(logState.file, &logState.fileStatus) == 0)
        logState.bytesWritten = logState.fileStatus.st_size;
    if (logState.bytesWritten < ROTATE_BYTES - LINE_SIZE && !fileEndsInLineEnd(logState.file) &&
        fileAppend(logState.file, "\n", 1))
        logState.bytesWritten++;
    asideTell(PathGet(PATH_LOG), aside);
}

static void logFileClose()
{
    if (logState.file >= 0)
        close(logState.file);
    logState.file = -1;
}

static int thresholdGet()
{
    int fd = logState.levelFd.load();
    char digit = 0;
    if (fd < 0 || pread(fd, &digit, 1, 0) != 1 || digit < '0' || digit > '9')
        return DEFAULT_THRESHOLD;
    return digit - '0';
}

// Settle, on the first message, what LogInit left open.
static void openOnce()
{
    if (logState.opened.load())
        return;
    std::lock_guard<std::mutex> guard(logState.openLock);
    if (logState.opened.load())
        return;
    if (logState.options < 0) {
        logState.options = LOG_OPTION_STDOUT;
        logState.facility = DEFAULT_FACILITY;
    } else {
        if (logState.facility < 0)
            logState.facility = DEFAULT_FACILITY;
        if (logState.ident == nullptr && logState.options != LOG_OPTION_STDOUT)
            processNameRead();
    }
    if ((logState.options & LOG_OPTION_SYSLOG) != 0)
        openlog(logState.ident, 0, logState.facility);
    logState.opened.store(true);
}

// Take the identity from the "Name:" line of the process's status; it stays empty when there is none.
static void processNameRead()
{
    OWNED_FILE status(fopen("/proc/self/status", "re"));
    if (!status)
        return;
    char *line = logState.processName;
    while (fgets(line, sizeof(logState.processName), status.get()) != nullptr) {
        if (strncmp(line, "Name:", 5) != 0)
            continue;
        char *rest = nullptr;
        (void)strtok_r(line, "\t\n", &rest); // the label itself
        logState.ident = strtok_r(nullptr, "\t\n", &rest);
        return;
    }
}

static void fileWriteRotate(int level, const char *format, va_list arguments)
{
    std::lock_guard<std::mutex> guard(logState.fileLock);
    struct stat named;

    // removed or moved away by somebody: what is written must be found
    if (logState.file >= 0 && (lstat(PathGet(PATH_LOG), &named) != 0 || named.st_ino != logState.fileStatus.st_ino ||
                               named.st_dev != logState.fileStatus.st_dev))
        logFileClose();
    if (logState.file < 0)
        logFileOpen();
    if (logState.file < 0) {
        streamLineWrite(stdout, level, format, arguments);
        return;
    }
    fileLineWrite(level, format, arguments);
    if (logState.bytesWritten > ROTATE_BYTES)
        logRotate();
}

// Header and message in one write. A full disk loses the line, never the caller; a message that is longer than the
// buffer is cut where there is no memory for it.
static void fileLineWrite(int level, const char *format, va_list arguments)
{
    char buffer[LINE_SIZE];
    OWNED_TEXT longer;
    char *line = buffer;
    va_list again;

    va_copy(again, arguments);
    size_t header = headerFormat(buffer, sizeof(buffer), level);
    int message = vsnprintf(buffer + header, sizeof(buffer) - header, format, arguments);
    size_t length = header + (message > 0 ? static_cast<size_t>(message) : 0);
    if (length >= sizeof(buffer)) {
        longer.reset(static_cast<char *>(malloc(length + 1)));
        if (longer != nullptr) {
            line = longer.get();
            memcpy(line, buffer, header);
            (void)vsnprintf(line + header, length + 1 - header, format, again);
        } else {
            length = sizeof(buffer) - 1;
        }
    }
    va_end(again);
    if (fileAppend(logState.file, line, length))
        logState.bytesWritten += static_cast<int64_t>(length);
}

static void lineTell(int level, const char *format, ...) __attribute__((format(printf, 2, 3)));
static void lineTell(int level, const char *format, ...)
{
    va_list arguments;

    va_start(arguments, format);
    fileLineWrite(level, format, arguments);
    va_end(arguments);
}

// Under the log lock, as the log file is open.
static void asideTell(const char *path, const char *aside)
{
    if (aside[0] != '\0' && logState.file >= 0)
        lineTell(LOG_LEVEL_ERROR, "[%s:%d] %s: not a file of this daemon, moved aside as %s\n", __func__, __LINE__,
                 path, aside);
}

// The stream is locked for both parts, since standard output has no lock of ours.
static void streamLineWrite(FILE *stream, int level, const char *format, va_list arguments)
{
    char header[128];

    (void)headerFormat(header, sizeof(header), level);
    flockfile(stream);
    if (fputs(header, stream) >= 0)
        (void)vfprintf(stream, format, arguments); // the logger reports no failure of its own
    funlockfile(stream);
}

// "2026-03-01 08:15:02.042 (INFO): kelo_cgi: ". Gives its length.
static size_t headerFormat(char *out, size_t size, int level)
{
    const char *name = level >= 0 && level <= LOG_LEVEL_DEBUG ? LEVEL_NAMES[level] : "";
    const char *ident = logState.ident == nullptr ? "" : logState.ident;
    char timestamp[64];
    int length = timestampFormat(timestamp, sizeof(timestamp))
                     ? snprintf(out, size, "%s (%s): %s: ", timestamp, name, ident)
                     : snprintf(out, size, "(%s): %s: ", name, ident);

    return length < 0 ? 0 : std::min(static_cast<size_t>(length), size - 1);
}

// Move the full file aside, over the one old generation. What stands at its name and does not give way is moved aside
// itself; a log that cannot be moved at all is begun anew, so that it does not grow for ever.
static void logRotate()
{
    char aside[FILE_ASIDE_SIZE];

    logFileClose();
    (void)remove(PathGet(PATH_LOG_OLD));
    if (!fileRename(PathGet(PATH_LOG), PathGet(PATH_LOG_OLD)) &&
        (!fileMoveAside(PathGet(PATH_LOG_OLD), aside) || !fileRename(PathGet(PATH_LOG), PathGet(PATH_LOG_OLD))))
        (void)unlink(PathGet(PATH_LOG));
    logFileOpen();
    logState.bytesWritten = 0;
}

static bool timestampFormat(char *out, size_t size)
{
    struct timespec now = {};
    struct tm local = {};
    ClockNow(&now);
    if (localtime_r(&now.tv_sec, &local) == nullptr)
        return false;
    int length = snprintf(out, size, "%04d-%02d-%02d %02d:%02d:%02d.%03ld", local.tm_year + 1900, local.tm_mon + 1,
                          local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, now.tv_nsec / 1000000L);
    return length > 0 && static_cast<size_t>(length) < size;
}
