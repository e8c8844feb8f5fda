// log.cpp - the process-wide logger: threshold in a shared level file, one log file rotated at 1 MiB, syslog, stdout.
//
// The threshold is read with a one-byte pread on every call. A mapping would be cheaper, but `echo 7 > FILE` empties
// the file first, and a touch of a mapped page beyond the end of the file ends the process. An empty file counts as 6.
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

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <pthread.h>

constexpr int DEFAULT_THRESHOLD = 6;
constexpr int DEFAULT_FACILITY = 8;
constexpr int64_t ROTATE_BYTES = 1048576; // a total above it rotates
constexpr off_t LEVEL_FILE_SIZE = 4;
constexpr const char *LEVEL_NAMES[] = {"", "", "", "ERROR", "WARN", "NOTICE", "INFO", "DEBUG"};

static void logReset();
static void logClose();
static void levelFileOpen();
static void logFileOpen();
static int thresholdGet();
static void openOnce();
static void processNameRead();
static void fileWriteRotate(int level, const char *format, va_list arguments) __attribute__((format(printf, 2, 0)));
static int lineWrite(FILE *stream, int level, const char *format, va_list arguments)
    __attribute__((format(printf, 3, 0)));
static void logRotate();
static bool timestampFormat(char *out, size_t size);

struct LOG_STATE_T {
    int options = -1;  // LOG_OPTION bits; -1 until initialised
    int facility = -1; // of syslog
    const char *ident = nullptr;
    FILE *file = nullptr;
    int64_t bytesWritten = 0;        // size of the current log file
    std::atomic<int> levelFd{-1};    // level file, kept open
    std::atomic<bool> opened{false}; // the first write has settled identity and syslog
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
        (void)lineWrite(stdout, level, format, copy); // nothing counts the bytes of standard output
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
        if (logState.file != nullptr)
            (void)fclose(logState.file); // every line was flushed; the logger reports no failure of its own
        logState.file = nullptr;
    }
    int fd = logState.levelFd.exchange(-1);
    if (fd >= 0)
        close(fd);
    logState.opened.store(false);
}

static void levelFileOpen()
{
    OWNED_FD_T level(fileOpenMake(PathGet(PATH_LOG_LEVEL), 0, 0666));
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

static void logFileOpen()
{
    logState.bytesWritten = 0;
    logState.file = fileOpenAppend(PathGet(PATH_LOG));
    if (logState.file == nullptr || fseeko(logState.file, 0, SEEK_END) != 0)
        return;
    off_t size = ftello(logState.file);
    logState.bytesWritten = size > 0 ? size : 0;
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
    if (logState.file == nullptr) {
        (void)lineWrite(stdout, level, format, arguments); // nothing counts the bytes of standard output
        return;
    }
    logState.bytesWritten += lineWrite(logState.file, level, format, arguments);
    if (logState.bytesWritten > ROTATE_BYTES)
        logRotate();
    if (logState.file != nullptr)
        (void)fflush(logState.file); // a full disk loses the line, never the caller
}

// Header and message, as one line unless the message says otherwise. Gives the bytes written. The stream is locked for
// both, since standard output has no lock of ours.
static int lineWrite(FILE *stream, int level, const char *format, va_list arguments)
{
    const char *name = level >= 0 && level <= LOG_LEVEL_DEBUG ? LEVEL_NAMES[level] : "";
    const char *ident = logState.ident == nullptr ? "" : logState.ident;
    char timestamp[64];
    flockfile(stream);
    int header = timestampFormat(timestamp, sizeof(timestamp))
                     ? fprintf(stream, "%s (%s): %s: ", timestamp, name, ident)
                     : fprintf(stream, "(%s): %s: ", name, ident);
    int message = vfprintf(stream, format, arguments);
    funlockfile(stream);
    return (header > 0 ? header : 0) + (message > 0 ? message : 0);
}

// Move the full file aside, over the one old generation. Steps that fail leave the file where it is.
static void logRotate()
{
    (void)fclose(logState.file);
    (void)remove(PathGet(PATH_LOG_OLD));
    (void)rename(PathGet(PATH_LOG), PathGet(PATH_LOG_OLD));
    logState.file = fileOpenAppend(PathGet(PATH_LOG));
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
