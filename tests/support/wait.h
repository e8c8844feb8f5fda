// wait.h - waiting for something that another thread or process brings about, with a limit that only a hang
// reaches, however busy the machine is.
#pragma once

#include <chrono>
#include <thread>

// Ask again and again until the condition holds; false when it does not within the limit.
template <typename CONDITION> bool waitUntil(CONDITION condition, int limitSeconds = 600)
{
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(limitSeconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
