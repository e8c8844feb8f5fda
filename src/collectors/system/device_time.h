// device_time.h - the document "device_time": the switch's clock, the time zone as configured and as the platform
// counts it, and the summer-time rule. Rebuilt once in 60 cycles.
#pragma once

#include "switch/session.h"

#include <cstddef>

constexpr size_t DATE_TIME_SIZE = 20;
constexpr size_t TIMEZONE_SIZE = 15;
constexpr size_t CONFIGURED_TIMEZONE_SIZE = 64;

// Builder into a buffer of 1024 bytes; always 0. What cannot be read is an empty text, or rule 0.
[[nodiscard]] int getDeviceTime(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size);

// Local date and time, and offset from UTC, as the platform writes them. 0, or the platform's result (logged) with the
// text untouched.
[[nodiscard]] int getDateTime(CLIENT_HANDLE_T *clientHandle, char text[DATE_TIME_SIZE]);
[[nodiscard]] int getTimezone(CLIENT_HANDLE_T *clientHandle, char text[TIMEZONE_SIZE]);

// Name of the time zone in the persisted clock configuration, "" when it has none; a missing file is created with an
// empty one. 0; -1 with "" when the file cannot be created, read or parsed.
[[nodiscard]] int configuredTimezoneGet(char text[CONFIGURED_TIMEZONE_SIZE]);

// Summer-time rule from "show clock detail": 1 EU, 2 USA, 0 none or unknown. 0; 10000 when the command fails; 10016
// when its output (which stays in place) does not open.
[[nodiscard]] int getSummerTime(CLIENT_HANDLE_T *clientHandle, int *rule);
