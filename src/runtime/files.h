// files.h - opening files in folders where other programs, and whoever else, may put things.
//
// Nothing here waits: a pipe in place of a file is refused, as a directory or a device is. A file that is made by the
// daemon is never made by following a link, which could lead anywhere; a file that is only read may be a link that an
// administrator has set.
#pragma once

#include <cstdio>
#include <sqlite3.h>
#include <sys/types.h>

// Open a regular file for reading. Null, with errno, when there is none.
[[nodiscard]] FILE *fileOpenRead(const char *path);

// Open a regular file, made when it is missing, for appending and reading. Null, with errno, also for a link.
[[nodiscard]] FILE *fileOpenAppend(const char *path);

// Open a regular file, made with these rights when it is missing, for reading and writing; `flags` are further ones of
// open. Descriptor, or -1 with errno, also for a link.
[[nodiscard]] int fileOpenMake(const char *path, int flags, mode_t mode);

// Open a database with SQLite's flags: a regular file or, where it may be made, none; a link only where it may not be
// made. SQLite's code, and the connection for its error text as from SQLite itself.
[[nodiscard]] int fileOpenDatabase(const char *path, int flags, sqlite3 **db);

// Whether nothing but a regular file stands there, if anything does.
[[nodiscard]] bool fileMayBeMade(const char *path);
