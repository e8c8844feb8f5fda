// files.h - opening files in folders where other programs, and whoever else, may put things.
//
// Nothing here waits: a pipe in place of a file is refused, as a directory or a device is. A file that is only read may
// be a link that an administrator has set. A file that the daemon writes through is its own: regular, with one link,
// of root or of the daemon's user, and never reached by a link. What another user has put at its name, and a hard link
// to another file, is moved aside as it is, and the file is made anew. Nothing here logs, so that the logger can use
// it; runtime/ownfile.h does.
#pragma once

#include <cstddef>
#include <cstdio>
#include <sys/stat.h>
#include <sys/types.h>

// Open a regular file for reading. Null, with errno, when there is none.
[[nodiscard]] FILE *fileOpenRead(const char *path);

// Likewise, but a file that another user than root or the daemon's could have laid there counts as none: for files
// that the platform has just written for the daemon into a folder of everyone's.
[[nodiscard]] FILE *fileOpenReadOwn(const char *path);

// Room for the name of what was moved aside.
constexpr size_t FILE_ASIDE_SIZE = 256;

// Open a file of the daemon's own for reading and writing, made with these rights when it is missing; `flags` are
// further ones of open (none that empties it: what is opened is looked at first). Descriptor, or -1 with errno. `aside`
// receives where a foreign object was moved to, "" when there was none.
[[nodiscard]] int fileOpenOwn(const char *path, int flags, mode_t mode, char aside[FILE_ASIDE_SIZE]);

// Move what stands at a path to a name beside it: "<path>.bad", in place of a file moved there before, or that with a
// random end. The name goes into `aside`. False, with errno, when it stays.
[[nodiscard]] bool fileMoveAside(const char *path, char aside[FILE_ASIDE_SIZE]);

// Rename, and false, with errno, also where both names are links to one file, so that nothing has moved.
[[nodiscard]] bool fileRename(const char *from, const char *to);

// Whether an object belongs to another user than root or the daemon's.
[[nodiscard]] bool fileIsForeign(const struct stat &status);

// Whether anybody may have laid an object at a name of the daemon's: another user's, or a second name of what stands
// somewhere else, too (a file, a link, a pipe).
[[nodiscard]] bool fileIsLaid(const struct stat &status);

// Whether an object is a file of the daemon's own.
[[nodiscard]] bool fileIsOwn(const struct stat &status);

// Append a text to a file that was opened with O_APPEND, whole or not at all: what a full disk leaves of it is cut off
// again. False, with errno, when it could not be written.
[[nodiscard]] bool fileAppend(int fd, const char *text, size_t length);

// False when the last line of a file has no end: a program was killed inside a write, or its disk was full.
[[nodiscard]] bool fileEndsInLineEnd(int fd);
