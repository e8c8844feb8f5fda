#include "restcache/store.h"

// The REST cache file and its side channels: change list, lock files, signal. No connection outlives an operation. A
// change is announced before it is written: the name goes into the change list, then the flag is set, then the record
// is replaced, so that a reader of the list never misses a change (it may look a moment too early and is signalled
// again). An operation that meets a damaged file begins a new one and is done once more.

#include "restcache/store_access.h"
#include "restcache/store_recovery.h"
#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "runtime/result.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

int restDbChanged;

constexpr const char *OPERATION = "restapi_db_operation"; // name in the log lines of all operations
constexpr int BUSY_TIMEOUT_MS = 3000;
constexpr int STORE_UNCHANGED = 1;
constexpr size_t LOCK_PATH_SIZE = 128;
constexpr size_t ID_LINE_SIZE = 32;

static int operationOnce(int operation, const char *apiName, const char *data);
static int operationRun(sqlite3 *db, int operation, const char *apiName, const char *data);
static void connectionConfigure(sqlite3 *db);
static int tableCreate(sqlite3 *db);
static int recordLookUp(sqlite3 *db, const char *apiName, const char *data, bool *same);
static int recordWrite(sqlite3 *db, const char *apiName, const char *data);
static int recordReplace(sqlite3 *db, const char *apiName, const char *data);
static int recordDelete(sqlite3 *db, const char *apiName);
static int statementPrepare(sqlite3 *db, const char *sql, OWNED_STATEMENT *statement);
static int sqlErrorLog(sqlite3 *db, int result);
static bool isDirectory(const char *path);
static bool idRead(const char **cursor, int *id);
static void changedReset();

static PROCESS_STATE_T changedState(changedReset);

int restapi_db_operation(int operation, const char *apiName, const char *data)
{
    int result = operationOnce(operation, apiName, data);

    if (!restDbDamaged(result) || !restDbSetAside(sqlite3_errstr(result)))
        return result;
    if (operation != REST_DB_CREATE && operationOnce(REST_DB_CREATE, nullptr, nullptr) != RESULT_OK)
        return result;
    return operationOnce(operation, apiName, data);
}

int restDbOpen(int flags, OWNED_DB *db)
{
    sqlite3 *opened = nullptr;

    if (!fileMayBeMade(PathGet(PATH_REST_JOURNAL)))
        (void)unlink(PathGet(PATH_REST_JOURNAL)); // SQLite would wait at a pipe; what stays it reports
    int result = fileOpenDatabase(PathGet(PATH_REST_DB), flags, &opened);

    db->reset(opened);
    if (result == SQLITE_OK)
        connectionConfigure(opened);
    return result;
}

// One line, in one write, so that a reader who renames the list between two lines loses nothing.
bool restDbAnnounce(const char *apiName)
{
    FILE *delta = fileOpenAppend(PathGet(PATH_REST_DELTA));

    if (delta == nullptr)
        return false;
    bool printed = fprintf(delta, "%s\n", apiName) > 0;
    return fclose(delta) == 0 && printed;
}

int rest_db_lock_acquire(const char *name, int *fd)
{
    char path[LOCK_PATH_SIZE];

    if (fd == nullptr)
        return RESULT_ERROR;
    *fd = -1;
    if (name == nullptr || name[0] == '\0') {
        LOG_ERROR("rest_db_lock_acquire: empty api_name\n");
        return RESULT_ERROR;
    }
    if (ensure_lock_dir() != 0)
        return RESULT_ERROR;
    int length = snprintf(path, sizeof(path), "%s/%s%s", PathGet(PATH_LOCK_DIR), name, ".lock");
    if (length < 0 || static_cast<size_t>(length) >= sizeof(path)) {
        LOG_ERROR("rest_db_lock_acquire: path too long for '%s'\n", name);
        return RESULT_ERROR;
    }
    OWNED_FD_T lock(fileOpenMake(path, 0, 0600));
    if (lock.fd < 0) {
        LOG_ERROR("rest_db_lock_acquire: open(%s) failed: %s\n", path, strerror(errno));
        return RESULT_ERROR;
    }
    int result;
    do {
        result = flock(lock.fd, LOCK_EX);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        LOG_ERROR("rest_db_lock_acquire: flock(%s) failed: %s\n", path, strerror(errno));
        return RESULT_ERROR;
    }
    *fd = lock.release();
    return RESULT_OK;
}

void rest_db_lock_release(int fd)
{
    if (fd < 1)
        return;
    if (flock(fd, LOCK_UN) != 0)
        LOG_ERROR("rest_db_lock_release: flock unlock failed: %s\n", strerror(errno));
    close(fd);
}

int ensure_lock_dir()
{
    const char *dir = PathGet(PATH_LOCK_DIR);

    if (mkdir(dir, 0755) == 0)
        return RESULT_OK;
    int reason = errno;
    if (reason == EEXIST && isDirectory(dir))
        return RESULT_OK;
    LOG_ERROR("rest_db_lock: mkdir(%s) failed: %s\n", dir, strerror(reason));
    return RESULT_ERROR;
}

void send_signal_to_ws()
{
    const char *path = PathGet(PATH_WS_PID);
    char line[ID_LINE_SIZE] = "";
    const char *cursor = line;
    int process = 0;
    int thread = 0;

    if (access(path, F_OK) != 0)
        return;
    OWNED_FILE ids(fileOpenRead(path));
    if (ids == nullptr) {
        LOG_ERROR("%s(): Unable to open file\n", __func__);
        return;
    }
    if (fgets(line, sizeof(line), ids.get()) == nullptr)
        return;
    if (!idRead(&cursor, &process) || !idRead(&cursor, &thread))
        LOG_ERROR("%s(): Failed to parse integers from the file.\n", __func__);
    if (process != 0 && thread != 0)
        (void)syscall(SYS_tgkill, process, thread, SIGINT); // the server may have gone; the next one reads the cache
}

static int operationOnce(int operation, const char *apiName, const char *data)
{
    OWNED_DB db;
    int result = restDbOpen(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, &db);

    if (result == SQLITE_OK)
        return operationRun(db.get(), operation, apiName, data);
    LOG_ERROR_AS(OPERATION, "Can't open database: %s\n", sqlite3_errmsg(db.get()));
    return result;
}

static int operationRun(sqlite3 *db, int operation, const char *apiName, const char *data)
{
    bool writes = operation == REST_DB_WRITE || operation == REST_DB_WRITE2;
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

// The cache lives in memory and can be rebuilt, so nothing is synced. A setting that fails costs speed only.
static void connectionConfigure(sqlite3 *db)
{
    static const char *const settings[] = {
        "PRAGMA cache_size = -2000;",
        "PRAGMA temp_store = MEMORY;",
        "PRAGMA journal_mode = MEMORY;",
        "PRAGMA synchronous = OFF;",
    };

    (void)sqlite3_busy_timeout(db, BUSY_TIMEOUT_MS);
    for (const char *setting : settings)
        (void)sqlite3_exec(db, setting, nullptr, nullptr, nullptr);
}

static int tableCreate(sqlite3 *db)
{
    const char *sql = "CREATE TABLE IF NOT EXISTS restapi_db (api_name TEXT PRIMARY KEY, data TEXT);";
    int result = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);

    return result == SQLITE_OK ? RESULT_OK : sqlErrorLog(db, result);
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
    if (sqlite3_bind_text(select.get(), 1, apiName, -1, SQLITE_STATIC) != SQLITE_OK ||
        sqlite3_step(select.get()) != SQLITE_ROW || data == nullptr)
        return SQLITE_OK;
    const void *stored = sqlite3_column_text(select.get(), 0);
    size_t length = static_cast<size_t>(sqlite3_column_bytes(select.get(), 0));
    *same = stored != nullptr && length == strlen(data) && memcmp(stored, data, length) == 0;
    return SQLITE_OK;
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
        return RESULT_OK; // not written either: the next build of the document tries again
    }
    restDbChanged = 1;
    return recordReplace(db, apiName, data);
}

static int recordReplace(sqlite3 *db, const char *apiName, const char *data)
{
    OWNED_STATEMENT replace;
    int result = statementPrepare(db, "REPLACE INTO restapi_db (api_name, data) VALUES (?, ?);", &replace);

    if (result != SQLITE_OK)
        return result;
    result = sqlite3_bind_text(replace.get(), 1, apiName, -1, SQLITE_STATIC);
    if (result == SQLITE_OK)
        result = sqlite3_bind_text(replace.get(), 2, data, -1, SQLITE_STATIC);
    if (result == SQLITE_OK)
        result = sqlite3_step(replace.get());
    if (result != SQLITE_DONE)
        LOG_ERROR_AS(OPERATION, "Execution failed: %s\n", sqlite3_errmsg(db));
    return result;
}

static int recordDelete(sqlite3 *db, const char *apiName)
{
    sqlite3_stmt *prepared = nullptr;
    int result = sqlite3_prepare_v2(db, "DELETE FROM restapi_db WHERE api_name = ?;", -1, &prepared, nullptr);
    OWNED_STATEMENT erase(prepared);

    if (result == SQLITE_OK)
        result = sqlite3_bind_text(erase.get(), 1, apiName, -1, SQLITE_STATIC);
    if (result == SQLITE_OK)
        result = sqlite3_step(erase.get());
    bool gone = result == SQLITE_DONE || (result & 0xFF) == SQLITE_IOERR; // which may come after the deletion
    if (gone) {
        (void)restDbAnnounce(apiName); // the record is gone whether or not that can be told; the flag still signals it
        restDbChanged = 1;
    }
    return result == SQLITE_DONE ? RESULT_OK : sqlErrorLog(db, result);
}

static int statementPrepare(sqlite3 *db, const char *sql, OWNED_STATEMENT *statement)
{
    sqlite3_stmt *prepared = nullptr;
    int result = sqlite3_prepare_v2(db, sql, -1, &prepared, nullptr);

    statement->reset(prepared);
    if (result != SQLITE_OK)
        LOG_ERROR_AS(OPERATION, "prepare failed: %s\n", sqlite3_errmsg(db));
    return result;
}

static int sqlErrorLog(sqlite3 *db, int result)
{
    LOG_ERROR_AS(OPERATION, "SQL error: %s\n", sqlite3_errmsg(db));
    return result;
}

static bool isDirectory(const char *path)
{
    struct stat status;

    return lstat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// The next decimal number of a line. One beyond int becomes 0, an id that is never signalled.
static bool idRead(const char **cursor, int *id)
{
    char *end = nullptr;
    long value = strtol(*cursor, &end, 10);

    if (end == *cursor)
        return false;
    *cursor = end;
    *id = value >= INT_MIN && value <= INT_MAX ? static_cast<int>(value) : 0;
    return true;
}

static void changedReset()
{
    restDbChanged = 0;
}
