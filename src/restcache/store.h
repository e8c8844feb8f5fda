// store.h - the REST cache: one JSON document per API name in an SQLite file.
//
// Every operation opens, configures and closes its own connection; a database locked by another process is waited for
// up to 3 seconds. Only the monitor task writes.
#pragma once

#include "restcache/recovery.h"

enum REST_DB_OP : int {
    REST_DB_CREATE = 1, // create the table; name and data are not used
    REST_DB_LOOKUP = 2, // look a name up, result only
    REST_DB_WRITE = 3,  // write when the text differs from the stored one
    REST_DB_WRITE2 = 5, // the same
    REST_DB_DELETE = 6,
};

enum STORE_RESULT : int {
    STORE_DONE = 0,          // of all operations but a write
    STORE_NOT_ANNOUNCED = 0, // of a write: the change list cannot be written, so the record was not either
    STORE_UNCHANGED = 1,     // of a write: the text is the stored one
    STORE_WRITTEN = 101,     // of a write: announced, the changed flag set, then written
};

// One operation on the cache: a STORE_RESULT, else SQLite's code; -1 for another operation, or one without its name or
// text. A deletion announces its name and sets the changed flag also when there was no record. An operation that meets
// a damaged file sets it aside, creates the table anew and is done once more.
int restapi_db_operation(int operation, const char *apiName, const char *data);

// At start, before the table is created: a damaged file is set aside (logged), and a record of this daemon's that is
// not JSON is deleted and announced (logged): one that is on no schedule would stay for ever. What other programs keep
// in the file is left alone.
void restDbCheck(RESTDB_NAME_T isOurs);

// How often the cache was begun anew since the process started: its table was made, a damaged file was set aside, or
// another file stood in the place of the one last used. What was written before is gone then.
[[nodiscard]] unsigned restDbBeginnings();

// How many documents could not be stored so far: the write failed, or it was said so (the lock could not be had).
[[nodiscard]] unsigned restDbNotStored();
void restDbNotStoredAdd();
