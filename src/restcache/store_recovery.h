// store_recovery.h - a cache that a process left damaged when it was killed inside a write.
//
// The journal is kept in memory, so such a kill can leave a file that does not open, pages of two versions, or a record
// whose text is cut or mixed. What the cache holds can be built again, so nothing is repaired.
#pragma once

#include "runtime/owned.h"

// Whether a record of that name is one of this daemon's.
using RESTDB_NAME_T = bool (*)(const char *name);

// At start, before the table is created: a damaged file is set aside (logged), and a record of this daemon's that is
// not JSON is deleted and announced (logged): one that is on no schedule would stay for ever. What other programs keep
// in the file is left alone. A file that is missing, locked (waited for once, 3 seconds) or cannot be opened is left to
// the operations, which report it.
void restDbCheck(RESTDB_NAME_T isOurs);

// Whether a result of SQLite says that the file is damaged.
[[nodiscard]] bool restDbDamaged(int result);

// Move the file and its journal aside, in place of those moved there before, and announce the names that can still be
// read from it: a reader then sees which records are gone. One error line. False when the file could not be moved away.
[[nodiscard]] bool restDbSetAside(const char *reason);

// Announce the names of all records, as far as they can be read.
void restDbNamesAnnounce();
