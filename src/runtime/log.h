// log.h - the process-wide logger.
//
// A message is dropped when its level is above the threshold, the digit in the first byte of the shared level file,
// read on every call, so that an operator changes the verbosity of a running daemon with `echo 7 > FILE`. What passes
// goes to the log file (rotated once at 1 MiB), to syslog and to standard output, as the options say.
// Any thread may log. Nothing here fails its caller.
#pragma once

#include <cstddef>

enum LOG_LEVEL : int { LOG_LEVEL_ERROR = 3, LOG_LEVEL_WARN = 4, LOG_LEVEL_INFO = 6, LOG_LEVEL_DEBUG = 7 };

// Destinations, a bit set.
enum LOG_OPTION : int { LOG_OPTION_FILE = 1, LOG_OPTION_SYSLOG = 2, LOG_OPTION_STDOUT = 4 };

// Set up the logger: destinations, syslog facility (8 is user), and the identity shown in each line; a null identity
// stands for the process name. A second call closes what the first one opened and starts over. `ident` must outlive the
// logger. Not thread-safe; called from start-up.
void LogInit(int options, int facility, const char *ident);

// Log one message; no line end is added. Before LogInit messages go to standard output.
void LogWrite(int level, const char *format, ...) __attribute__((format(printf, 2, 3)));

// Whether a message of this level would be written now.
[[nodiscard]] bool LogEnabled(int level);

// "[function:line] " before the message's own format. A level that is off costs one look at the threshold.
#define LOG_AT(level, name, format, ...)                                                                               \
    do {                                                                                                               \
        if (LogEnabled(level))                                                                                         \
            LogWrite((level), "[%s:%d] " format, (name), __LINE__ __VA_OPT__(, ) __VA_ARGS__);                         \
    } while (0)
#define LOG_ERROR(...) LOG_AT(LOG_LEVEL_ERROR, __func__, __VA_ARGS__)
#define LOG_WARN(...) LOG_AT(LOG_LEVEL_WARN, __func__, __VA_ARGS__)
#define LOG_INFO(...) LOG_AT(LOG_LEVEL_INFO, __func__, __VA_ARGS__)
#define LOG_DEBUG(...) LOG_AT(LOG_LEVEL_DEBUG, __func__, __VA_ARGS__)

// For shared mechanisms that log under the name of the routine they serve.
#define LOG_ERROR_AS(name, ...) LOG_AT(LOG_LEVEL_ERROR, name, __VA_ARGS__)
#define LOG_WARN_AS(name, ...) LOG_AT(LOG_LEVEL_WARN, name, __VA_ARGS__)
#define LOG_INFO_AS(name, ...) LOG_AT(LOG_LEVEL_INFO, name, __VA_ARGS__)
#define LOG_DEBUG_AS(name, ...) LOG_AT(LOG_LEVEL_DEBUG, name, __VA_ARGS__)
