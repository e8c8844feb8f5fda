// database.h - opening SQLite databases in folders where whoever else may put things.
//
// A database is data here, never code: triggers and views of a schema do not run, and no statement runs for ever. What
// SQLite opens beside it (journal, write-ahead log, its index) it would roll into the database: that must be a regular
// file with one link, of root, of the daemon's user or of the database's owner. Anything else is moved aside, or, where
// it cannot be, the operation fails; either is logged.
#pragma once

#include "runtime/owned.h"

enum DATABASE_KIND : int {
    DATABASE_OWN, // of root or the daemon's user, never a link; what somebody else may have put there (another user's,
                  // a hard link) is moved aside (logged)
    DATABASE_SHARED, // another program's: whoever owns it, a link too; never made here
};

// Open a database with SQLite's flags. Its statements wait for another program's lock for 3 seconds in all, hold at
// most DATABASE_TEXT_MAX bytes a cell and run a bounded number of steps (SQLITE_INTERRUPT beyond). SQLite's code; a
// failed open too leaves a connection, for the error text. One connection at a time in a thread.
[[nodiscard]] int databaseOpen(DATABASE_KIND kind, const char *path, int flags, OWNED_DB *db);

// Likewise, for reading another program's database: opened for writing where it may be, so that what a program that was
// killed inside its write has left there is rolled back.
[[nodiscard]] int databaseOpenRead(const char *path, OWNED_DB *db);

// Bytes that a cell may hold: some ten times the longest document.
constexpr int DATABASE_TEXT_MAX = 64 * 1024 * 1024;
