// root.h - a fresh root directory for one test, with the folders and files that other programs leave on a switch.
#pragma once

#include "support/read.h"

#include <string>

// A temporary root of at most 18 characters, made current (PathsInit) and removed with everything in it at the end.
// Process state is reset, the logger writes to the root's log file, waiting is moved instead of slept (testClock).
struct TEST_ROOT_T {
    TEST_ROOT_T();
    ~TEST_ROOT_T();
    TEST_ROOT_T(const TEST_ROOT_T &) = delete;
    TEST_ROOT_T &operator=(const TEST_ROOT_T &) = delete;
    std::string dir;
};

void fileWrite(const std::string &path, const std::string &text);
bool fileExists(const std::string &path);

// Log lines so far without time stamps and line numbers: "(ERROR) name: message", one a line; logClear starts anew.
std::string logText();
void logClear();
void logLevelSet(char digit);

// Stored document of an API name, "" when there is none; and the change list.
std::string cacheRead(const std::string &apiName);
std::string changeList();

// Text of a document without layout, for comparing content: cJSON_PrintUnformatted of its parse; "(not JSON)"
// otherwise.
std::string compact(const std::string &json);

// Seconds slept through ClockSleep since the root was made; the wall clock advances with them from 2026-03-01 08:00:00
// UTC.
unsigned sleptSeconds();
