// store_access.h - what the operations on the cache and its recovery share; for these two only.
#pragma once

#include "runtime/owned.h"

// Open the cache file with SQLite's open flags and configure the connection. SQLite's code; a failed open too leaves a
// connection, for the error text.
[[nodiscard]] int restDbOpen(int flags, OWNED_DB *db);

// Append a name to the change list. False when the list cannot be opened or the line does not get into it.
bool restDbAnnounce(const char *apiName);
