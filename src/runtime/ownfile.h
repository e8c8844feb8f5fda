// ownfile.h - the daemon's own files in folders of everyone's, and the lock files among them: runtime/files.h with its
// failures in the log.
#pragma once

#include <sys/types.h>

// fileOpenOwn; what was moved aside is logged (error). Descriptor, or -1 with errno.
[[nodiscard]] int ownFileOpen(const char *path, int flags, mode_t mode);

// Move a foreign object aside, as it is (error line in either case). False, with errno, when it stays.
[[nodiscard]] bool ownFileClear(const char *path);

// Open a lock file, made when it is missing. Only root and the daemon's user can open it afterwards: whoever can, can
// hold the lock. Descriptor, or -1 with errno.
[[nodiscard]] int lockFileOpen(const char *path);

// Take the exclusive lock (flock) of an open lock file: waits as long as it takes, and is named in the log meanwhile
// (lockWaitTick). 0, or -1 with errno.
[[nodiscard]] int lockFileWait(int fd, const char *path);

// One tick of the timer task: a lock that is being waited for is named in the log (warning) every 30 ticks.
void lockWaitTick();
