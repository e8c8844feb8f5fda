// logging.h - the document "logging": where the switch logs to, and from which severity on. Every sixth cycle.
#pragma once

#include "switch/session.h"

#include <cstddef>
#include <cstdint>

// Modes are 0 off, 1 on; levels 0 (emergency) to 7 (debug).
struct LOG_CONFIG_T {
    uint32_t switchLog; // buffered log
    uint32_t commandLog;
    uint32_t consoleLog;
    uint32_t bufferedLoggingLevel;
    uint32_t consoleLoggingLevel;
};

// Read everything, one after the other, until something fails: 0, or that result (logged). What was not read is 0.
[[nodiscard]] int getLogConfig(CLIENT_HANDLE_T *clientHandle, LOG_CONFIG_T *config);

// Builder. 0; the result of getLogConfig; 10000 without memory or when the text does not fit. No text on failure.
[[nodiscard]] int getLogConfigJson(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size);

// Mode and severity of the buffered log from "show logging", untouched when the output has no line of it or the line no
// severity. 0; 10000 when the command fails; -26 when its output does not open (logged).
[[nodiscard]] int bufferedLogModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t *mode);
[[nodiscard]] int bufferedLogseverityGet(CLIENT_HANDLE_T *clientHandle, uint32_t *level);
