// monitor.h - the REST monitor task: start-up documents, then one refresh cycle every 30 seconds.
#pragma once

#include <cstdint>

constexpr uint32_t REFRESH_PERIOD = 30; // ticks from one cycle to the next

// Task entry. Registers the client, makes the cache ready, waits for the VLAN profile database, writes the start-up
// documents, runs cycle 1, arms the timer, and runs a cycle per timer event for ever. Returns only when the client
// cannot be registered.
void AgentRestMonitor(intptr_t argument);
