// lock.h - the lock of one API name, shared with every other process that writes its record.
#pragma once

// Take a lock: waits as long as it takes, and is named in the log meanwhile. 0 with the descriptor, or -1 (logged) with
// -1. Release unlocks and closes; descriptors below 1 are ignored.
[[nodiscard]] int rest_db_lock_acquire(const char *name, int *fd);
void rest_db_lock_release(int fd);

// Create the lock directory if needed; one that belongs to another user than root or the daemon's is moved aside
// first. 0 or -1 (logged).
[[nodiscard]] int ensure_lock_dir();
