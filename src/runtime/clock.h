// clock.h - the one place for the time of day and for sleeping, so that tests move both.
#pragma once

#include <cstdint>
#include <ctime>

// Source of time of a process. Either pointer may be null: the system's is used then.
struct CLOCK_SOURCE_T {
    void (*now)(struct timespec *now);    // wall clock
    void (*sleep)(uint32_t milliseconds); // called instead of sleeping
};

// Replace the source (null: back to the system's). The record must outlive its use.
void ClockSourceSet(const CLOCK_SOURCE_T *source);

// Length of one second of waiting in milliseconds (default 1000): what ClockSleep counts in. Tests shorten it.
void ClockTickSet(uint32_t milliseconds);

// Wall-clock time.
void ClockNow(struct timespec *now);
[[nodiscard]] time_t ClockSeconds();
[[nodiscard]] int64_t ClockMicroseconds();

// A clock that nobody sets, for durations: microseconds from some moment on. A replaced time of day replaces it, too.
[[nodiscard]] int64_t ClockSteady();

// Milliseconds of a tick.
[[nodiscard]] uint32_t ClockTick();

// Wait so many ticks of ClockTickSet.
void ClockSleep(uint32_t seconds);
