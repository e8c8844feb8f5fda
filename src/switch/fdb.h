// fdb.h - a snapshot of the learned MAC addresses, in two forms.
#pragma once

#include "runtime/owned.h"
#include "switch/session.h"

#include <cstdint>

constexpr size_t MAC_TEXT_SIZE = 18;

// One address, 32 bytes.
struct FDB_ENTRY_T {
    int32_t vlanId;
    uint32_t ifNum;
    int32_t learned;         // 1 when learned
    char mac[MAC_TEXT_SIZE]; // six pairs with colons, as the platform prints them
};

// Fast form: from the table of "show mac-addr-table". Returns the number of entries, 0 on any failure.
uint32_t fdbEntryListGetSimpleFast(CLIENT_HANDLE_T *clientHandle, OWNED_ARRAY<FDB_ENTRY_T> *entries);

// Slow form: walks the platform's forwarding database and keeps the entries of physical ports.
uint32_t fdbEntryListGetSimple(CLIENT_HANDLE_T *clientHandle, OWNED_ARRAY<FDB_ENTRY_T> *entries);

// The fast form, or the slow one when the fast one yields nothing.
uint32_t fdbSnapshotGet(CLIENT_HANDLE_T *clientHandle, OWNED_ARRAY<FDB_ENTRY_T> *entries);
