// clock.cpp - time of day and waiting, from the system or from a replaced source.
//
// Everything that waits goes through ClockSleep, so a shortened tick or a source that moves its clock instead of
// sleeping makes the whole daemon faster.
#include "runtime/clock.h"

#include <atomic>
#include <cerrno>

namespace {

std::atomic<const CLOCK_SOURCE_T *> currentSource{nullptr};
std::atomic<uint32_t> tickMilliseconds{1000};

void systemSleep(uint64_t milliseconds)
{
    struct timespec left = {};
    left.tv_sec = static_cast<time_t>(milliseconds / 1000);
    left.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

} // namespace

void ClockSourceSet(const CLOCK_SOURCE_T *source)
{
    currentSource.store(source);
}

void ClockTickSet(uint32_t milliseconds)
{
    tickMilliseconds.store(milliseconds);
}

void ClockNow(struct timespec *now)
{
    const CLOCK_SOURCE_T *source = currentSource.load();
    if (source != nullptr && source->now != nullptr)
        source->now(now);
    else
        clock_gettime(CLOCK_REALTIME, now);
}

time_t ClockSeconds()
{
    struct timespec now = {};
    ClockNow(&now);
    return now.tv_sec;
}

int64_t ClockMicroseconds()
{
    struct timespec now = {};
    ClockNow(&now);
    return static_cast<int64_t>(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

int64_t ClockSteady()
{
    const CLOCK_SOURCE_T *source = currentSource.load();
    struct timespec now = {};

    if (source != nullptr && source->now != nullptr)
        return ClockMicroseconds();
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

uint32_t ClockTick()
{
    return tickMilliseconds.load();
}

void ClockSleep(uint32_t seconds)
{
    uint64_t milliseconds = static_cast<uint64_t>(seconds) * tickMilliseconds.load();
    const CLOCK_SOURCE_T *source = currentSource.load();
    if (source != nullptr && source->sleep != nullptr)
        source->sleep(milliseconds > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(milliseconds));
    else
        systemSleep(milliseconds);
}
