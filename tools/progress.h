// progress.h - says how far long work is: a line on standard error now and then, so that nobody takes it for a hang.
#pragma once

#include <chrono>
#include <cstdarg>
#include <cstdio>

constexpr double PROGRESS_SECONDS = 4; // between two lines; whoever works asks a little oftener

// Print the line when the last one is long enough ago. Format and arguments as of printf, without the line's end.
inline void progressSay(const char *format, ...) __attribute__((format(printf, 1, 2)));
inline void progressSay(const char *format, ...)
{
    static auto saidAt = std::chrono::steady_clock::now();
    auto now = std::chrono::steady_clock::now();
    va_list arguments;

    if (std::chrono::duration<double>(now - saidAt).count() < PROGRESS_SECONDS)
        return;
    saidAt = now;
    va_start(arguments, format);
    vfprintf(stderr, format, arguments);
    va_end(arguments);
    fputc('\n', stderr);
}
