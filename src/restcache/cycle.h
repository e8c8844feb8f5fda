// cycle.h - which documents are built when: what is written once at the start, one refresh cycle, and what the cache
// has lost since the last one.
#pragma once

#include "restcache/document.h"

// Make the cache ready at the start (restDbCheck, the table) and write "init_complete".
void cacheBegin();

// Write the "init_complete" record: 0; the store logs what fails. The builder of that row.
int initCompleteWrite(CLIENT_HANDLE_T *clientHandle = nullptr);

// Write the other documents that are made once, before the first cycle.
void startDocumentsWrite();

// One refresh cycle: every document that is due, in the order of the table.
void GetAllRestApiData();

// What a cycle does with a row that is due: one that waits for a request is built only when there is one. A change of a
// direct one is signalled at the end of the next cycle.
void cycleRow(const DOCUMENT_T &row);

// Rebuild "interfaces_status", watch the links, and rebuild "port_vendor_detect" after a port came up.
void portLinkWatch();

// What a timer event does: write what the cache lost since the last cycle (a file that was removed, replaced or
// damaged, start documents that could not be stored), then run a cycle.
void monitorRefresh();

// Cycles run so far in this process.
[[nodiscard]] uint32_t refreshCycleNumber();

// Session that the cycle uses, for whoever registers it.
[[nodiscard]] CLIENT_HANDLE_T *monitorClientHandle();
