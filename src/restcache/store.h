// store.h - the REST cache: one JSON document per API name in an SQLite file, with a change list beside it.
//
// Every operation opens, configures and closes its own connection; a database locked by another process is waited for
// up to 3 seconds. Only the monitor task writes.
#pragma once

enum REST_DB_OP : int {
    REST_DB_CREATE = 1, // create the table; name and data are not used
    REST_DB_LOOKUP = 2, // look a name up, result only
    REST_DB_WRITE = 3,  // write when the text differs from the stored one
    REST_DB_WRITE2 = 5, // the same
    REST_DB_DELETE = 6,
};

// One operation on the cache.
// Writing: 1 when the text is the stored one (nothing written); 101 when it was written, its name appended to the
// change list first and the changed flag set; 0 when the change list cannot be opened (nothing written); else SQLite's
// code. Deleting: 0 (name appended, flag set, also when there was no record), else SQLite's code. Any other operation:
// -1. An operation that meets a damaged file sets it aside, creates the table anew and is done once more.
int restapi_db_operation(int operation, const char *apiName, const char *data);

// Set by every change; read and cleared by the refresh cycle.
extern int restDbChanged;

// How often the cache was begun anew since the process started: its table was made, a damaged file was set aside, or
// another file stood in the place of the one last used. What was written before is gone then.
[[nodiscard]] unsigned restDbBeginnings();

// How many documents could not be stored so far: their lock could not be had, or the operation failed.
[[nodiscard]] unsigned restDbNotStored();

// Lock of one name, shared with every other process that writes it: waits as long as it takes, and is named in the log
// meanwhile. 0 with the descriptor, or -1 (logged) with -1. Release unlocks and closes; descriptors below 1 are
// ignored.
[[nodiscard]] int rest_db_lock_acquire(const char *name, int *fd);
void rest_db_lock_release(int fd);

// Create the lock directory if needed; one that belongs to another user than root or the daemon's is moved aside
// first. 0 or -1 (logged).
[[nodiscard]] int ensure_lock_dir();

// Send SIGINT to the thread of the websocket server that its id file names; nothing when there is none, or when the
// file belongs to a user who could not send it either (logged).
void send_signal_to_ws();
