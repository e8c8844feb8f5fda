// connection.h - a connection to the cache's file, for the rooms of the cache only.
#pragma once

#include "runtime/owned.h"

// Open the cache file with SQLite's open flags and configure the connection. SQLite's code; a failed open too leaves a
// connection, for the error text.
[[nodiscard]] int restDbOpen(int flags, OWNED_DB *db);
