// recovery.h - a cache that a process left damaged when it was killed inside a write.
//
// The journal is kept in memory, so such a kill can leave a file that does not open, pages of two versions, or a record
// whose text is cut or mixed. What the cache holds can be built again, so nothing is repaired.
#pragma once

// Whether a record of that name is one of this daemon's.
using RESTDB_NAME_T = bool (*)(const char *name);

// Check the file, and set it aside when it is damaged. True when it is sound; also false for one that is missing,
// locked (waited for once, 3 seconds) or cannot be opened: the operations report that.
[[nodiscard]] bool restDbFileSound();

// The next record of this daemon's after `name`, in the order of names, that is not JSON; its name into `name`
// (RESTDB_NAME_SIZE bytes). False when there is none. No connection is open when it returns.
[[nodiscard]] bool restDbBadRecord(RESTDB_NAME_T isOurs, char *name);

// Whether a result of SQLite says that the file is damaged.
[[nodiscard]] bool restDbDamaged(int result);

// Move the file and its journal aside, in place of those moved there before, and announce the names that can still be
// read from it: a reader then sees which records are gone. One error line. False when the file could not be moved away.
[[nodiscard]] bool restDbSetAside(const char *reason);
