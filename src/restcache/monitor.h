// monitor.h - the REST monitor task: start-up documents, then one refresh cycle every 30 seconds.
#pragma once

#include <cstdint>

// Task entry. Registers the client, creates the cache, waits for the VLAN profile database, writes the start-up
// documents, runs cycle 1, arms the timer, and runs a cycle per timer event for ever. Returns only when the client
// cannot be registered.
void AgentRestMonitor(intptr_t argument);

// One refresh cycle: every document that is due, in the order of the cadence table.
void GetAllRestApiData();

// What a timer event does: write what the cache lost since the last cycle (a file that was removed, replaced or
// damaged, start documents that could not be stored), then run a cycle.
void monitorRefresh();

// Write the "init_complete" record: the store's result of a write.
int initCompleteWrite();

// Write the documents that are made once, before the first cycle.
void startDocumentsWrite();

// Items of the cadence table, for tools: the name at an index (null beyond the last), and one run of that item as a
// cycle does it, whether it is due or not. A change of a direct item is signalled by the next cycle.
[[nodiscard]] const char *cycleItemName(unsigned index);
void cycleItemRun(unsigned index);

// Rebuild "interfaces_status", watch the links, and rebuild "port_vendor_detect" after a port came up.
void portLinkWatch();

// Cycles run so far in this process.
[[nodiscard]] uint32_t refreshCycleNumber();

// Session that the cycle uses: for the direct items and for tools that run a cycle without the task.
struct openclt_handle;
[[nodiscard]] struct openclt_handle *monitorClientHandle();
