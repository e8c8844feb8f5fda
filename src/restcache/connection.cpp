#include "restcache/connection.h"

// The cache lives in memory and can be rebuilt, so nothing is synced. A setting that fails costs speed only.

#include "runtime/database.h"
#include "runtime/paths.h"

int restDbOpen(int flags, OWNED_DB *db)
{
    static const char *const settings[] = {
        "PRAGMA cache_size = -2000;",
        "PRAGMA temp_store = MEMORY;",
        "PRAGMA journal_mode = MEMORY;",
        "PRAGMA synchronous = OFF;",
    };
    int result = databaseOpen(DATABASE_OWN, PathGet(PATH_REST_DB), flags, db);

    if (result != SQLITE_OK)
        return result;
    for (const char *setting : settings)
        (void)sqlite3_exec(db->get(), setting, nullptr, nullptr, nullptr);
    return SQLITE_OK;
}
