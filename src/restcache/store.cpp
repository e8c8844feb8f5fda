#include "restcache/store.h"

// The REST cache file. No connection outlives an operation. A change is announced before it is written: the name goes
// into the change list, then the flag is set, then the record is replaced, so that a reader of the list never misses a
// change (it may look a moment too early and is signalled again). An operation that meets a damaged file begins a new
// one and is done once more.

#include "restcache/connection.h"
#include "restcache/notify.h"
#include "runtime/account.h"
#include "runtime/log.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "runtime/result.h"
#include "runtime/sql.h"

#include <sys/stat.h>

static_assert(STORE_WRITTEN == SQLITE_DONE, "the result of a write's last step");

// What this process knows of the file.
struct CACHE_FILE_T {
    bool known;
    dev_t device;
    ino_t inode;
    bool made; // its table, by this process or before
    unsigned beginnings;
    unsigned notStored;
};
static CACHE_FILE_T cacheFile;

static void cacheFileReset()
{
    cacheFile = {};
}
static PROCESS_STATE_T cacheFileState(cacheFileReset);

constexpr const char *OPERATION = "restapi_db_operation"; // name in the log lines of all operations

static int sqlErrorLog(sqlite3 *db, int result)
{
    LOG_ERROR_AS(OPERATION, "SQL error: %s\n", sqlite3_errmsg(db));
    return result;
}

static int tableCreate(sqlite3 *db)
{
    const char *sql = "CREATE TABLE IF NOT EXISTS restapi_db (api_name TEXT PRIMARY KEY, data TEXT);";
    int there =
        sqlite3_table_column_metadata(db, nullptr, "restapi_db", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    int result = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);

    if (result != SQLITE_OK)
        return sqlErrorLog(db, result);
    if (there == SQLITE_ERROR) { // no such table
        cacheFile.beginnings++;
        if (cacheFile.made)
            accountCacheReason("the file was removed");
    }
    cacheFile.made = true;
    return STORE_DONE;
}

static int statementPrepare(sqlite3 *db, const char *sql, OWNED_STATEMENT *statement)
{
    int result = sqlPrepare(db, sql, statement);

    if (result != SQLITE_OK)
        LOG_ERROR_AS(OPERATION, "prepare failed: %s\n", sqlite3_errmsg(db));
    return result;
}

// *same: whether a record of that name holds exactly this text. A step that fails (a locked database) counts as not the
// same: the write that follows then waits, or reports the failure.
static int recordLookUp(sqlite3 *db, const char *apiName, const char *data, bool *same)
{
    OWNED_STATEMENT select;
    int result = statementPrepare(db, "SELECT data FROM restapi_db WHERE api_name = ?;", &select);

    *same = false;
    if (result != SQLITE_OK)
        return result;
    if (sqlBind(select, {apiName}) == SQLITE_OK && sqlStep(select) == SQLITE_ROW && data != nullptr) {
        std::string_view stored = sqlText(select, 0);
        *same = stored.data() != nullptr && stored == data;
    }
    return STORE_DONE;
}

static int recordReplace(sqlite3 *db, const char *apiName, const char *data)
{
    OWNED_STATEMENT replace;
    int result = statementPrepare(db, "REPLACE INTO restapi_db (api_name, data) VALUES (?, ?);", &replace);

    if (result != SQLITE_OK)
        return result;
    result = sqlBind(replace, {apiName, data});
    if (result == SQLITE_OK)
        result = sqlStep(replace);
    if (result != SQLITE_DONE)
        LOG_ERROR_AS(OPERATION, "Execution failed: %s\n", sqlite3_errmsg(db));
    else
        accountRecordChanged();
    return result;
}

static int recordWrite(sqlite3 *db, const char *apiName, const char *data)
{
    bool same;
    int result = recordLookUp(db, apiName, data, &same);

    if (result != SQLITE_OK)
        return result;
    if (same)
        return STORE_UNCHANGED;
    if (!restDbAnnounce(apiName)) {
        LOG_ERROR_AS(OPERATION, "Unable to open delta file\n");
        return STORE_NOT_ANNOUNCED; // the next build of the document tries again
    }
    restDbChanged = 1;
    return recordReplace(db, apiName, data);
}

static int recordDelete(sqlite3 *db, const char *apiName)
{
    OWNED_STATEMENT erase;
    int result = sqlPrepare(db, "DELETE FROM restapi_db WHERE api_name = ?;", &erase);

    if (result == SQLITE_OK)
        result = sqlBind(erase, {apiName});
    if (result == SQLITE_OK)
        result = sqlStep(erase);
    bool gone = result == SQLITE_DONE || (result & 0xFF) == SQLITE_IOERR; // which may come after the deletion
    if (gone) {
        (void)restDbAnnounce(apiName); // the record is gone whether or not that can be told; the flag still signals it
        restDbChanged = 1;
    }
    return result == SQLITE_DONE ? STORE_DONE : sqlErrorLog(db, result);
}

static bool isWrite(int operation)
{
    return operation == REST_DB_WRITE || operation == REST_DB_WRITE2;
}

static int operationRun(sqlite3 *db, int operation, const char *apiName, const char *data)
{
    bool writes = isWrite(operation);
    bool named = writes || operation == REST_DB_LOOKUP || operation == REST_DB_DELETE;
    bool same;

    // A missing name would become a record without a name, which no reader could ever ask for.
    if ((named && apiName == nullptr) || (writes && data == nullptr)) {
        LOG_ERROR_AS(OPERATION, "Operation %d without a name or a text\n", operation);
        return RESULT_ERROR;
    }
    switch (operation) {
    case REST_DB_CREATE:
        return tableCreate(db);
    case REST_DB_LOOKUP:
        return recordLookUp(db, apiName, nullptr, &same);
    case REST_DB_WRITE:
    case REST_DB_WRITE2:
        return recordWrite(db, apiName, data);
    case REST_DB_DELETE:
        return recordDelete(db, apiName);
    default:
        LOG_ERROR_AS(OPERATION, "Invalid operation %d\n", operation);
        return RESULT_ERROR;
    }
}

// Another file than the last one means that what was written is gone.
static void fileNote()
{
    struct stat status;

    if (stat(PathGet(PATH_REST_DB), &status) != 0)
        return; // removed just now: the next operation meets another one
    if (cacheFile.known && (status.st_dev != cacheFile.device || status.st_ino != cacheFile.inode)) {
        cacheFile.beginnings++;
        accountCacheReason("another file was put in its place");
    }
    cacheFile.known = true;
    cacheFile.device = status.st_dev;
    cacheFile.inode = status.st_ino;
}

static int operationOnce(int operation, const char *apiName, const char *data)
{
    OWNED_DB db;
    int result = restDbOpen(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, &db);

    if (result == SQLITE_OK) {
        fileNote();
        return operationRun(db.get(), operation, apiName, data);
    }
    LOG_ERROR_AS(OPERATION, "Can't open database: %s\n", sqlite3_errmsg(db.get()));
    return result;
}

int restapi_db_operation(int operation, const char *apiName, const char *data)
{
    int result = operationOnce(operation, apiName, data);
    bool again = restDbDamaged(result) && restDbSetAside(sqlite3_errstr(result)) &&
                 (operation == REST_DB_CREATE || operationOnce(REST_DB_CREATE, nullptr, nullptr) == STORE_DONE);

    if (again)
        result = operationOnce(operation, apiName, data);
    if (isWrite(operation) && result != STORE_UNCHANGED && result != STORE_WRITTEN)
        restDbNotStoredAdd();
    return result;
}

void restDbCheck(RESTDB_NAME_T isOurs)
{
    char name[RESTDB_NAME_SIZE] = "";

    if (!restDbFileSound())
        return;
    while (restDbBadRecord(isOurs, name)) {
        LOG_ERROR("REST cache: record '%s' is damaged, deleted\n", name);
        if (restapi_db_operation(REST_DB_DELETE, name, nullptr) != STORE_DONE)
            return; // it says why
    }
}

unsigned restDbBeginnings()
{
    return cacheFile.beginnings;
}

unsigned restDbNotStored()
{
    return cacheFile.notStored;
}

void restDbNotStoredAdd()
{
    cacheFile.notStored++;
}
