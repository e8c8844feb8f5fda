#include "restcache/store.h"

// The REST cache file and its side channels: change list, lock files, signal. No connection outlives an operation. A
// change is announced before it is written: the name goes into the change list, then the flag is set, then the record
// is replaced, so that a reader of the list never misses a change (it may look a moment too early and is signalled
// again). An operation that meets a damaged file begins a new one and is done once more.

#include "restcache/store_access.h"
#include "restcache/store_recovery.h"
#include "runtime/database.h"
#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/ownfile.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "runtime/result.h"
#include "runtime/sql.h"

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

// What this process knows of the file.
struct CACHE_FILE_T {
    bool known;
    dev_t device;
    ino_t inode;
    unsigned beginnings;
    unsigned notStored;
};
static CACHE_FILE_T cacheFile;

constexpr const char *OPERATION = "restapi_db_operation"; // name in the log lines of all operations
constexpr int STORE_UNCHANGED = 1;
constexpr const char *LOCK_ACQUIRE = "rest_db_lock_acquire";
constexpr size_t LOCK_PATH_SIZE = 128;
constexpr size_t ID_LINE_SIZE = 32;

static int operationOnce(int operation, const char *apiName, const char *data);
static void fileLook();
static bool isWrite(int operation);
static int operationRun(sqlite3 *db, int operation, const char *apiName, const char *data);
static void connectionConfigure(sqlite3 *db);
static int tableCreate(sqlite3 *db);
static int recordLookUp(sqlite3 *db, const char *apiName, const char *data, bool *same);
static int recordWrite(sqlite3 *db, const char *apiName, const char *data);
static int recordReplace(sqlite3 *db, const char *apiName, const char *data);
static int recordDelete(sqlite3 *db, const char *apiName);
static int statementPrepare(sqlite3 *db, const char *sql, OWNED_STATEMENT *statement);
static int sqlErrorLog(sqlite3 *db, int result);
static int lockAcquire(const char *name);
static bool isOwnDirectory(const char *path);
static bool idRead(const char **cursor, int *id);
static bool signalAllowed(FILE *ids, int process);
static void changedReset();

static PROCESS_STATE_T changedState(changedReset);

int restapi_db_operation(int operation, const char *apiName, const char *data)
{
    int result = operationOnce(operation, apiName, data);
    bool again = restDbDamaged(result) && restDbSetAside(sqlite3_errstr(result)) &&
                 (operation == REST_DB_CREATE || operationOnce(REST_DB_CREATE, nullptr, nullptr) == RESULT_OK);

    if (again)
        result = operationOnce(operation, apiName, data);
    if (isWrite(operation) && result != STORE_UNCHANGED && result != SQLITE_DONE)
        cacheFile.notStored++;
    return result;
}

unsigned restDbBeginnings()
{
    return cacheFile.beginnings;
}

unsigned restDbNotStored()
{
    return cacheFile.notStored;
}

int restDbOpen(int flags, OWNED_DB *db)
{
    int result = databaseOpen(DATABASE_OWN, PathGet(PATH_REST_DB), flags, db);

    if (result == SQLITE_OK)
        connectionConfigure(db->get());
    return result;
}

// One line, in one write, so that a reader who renames the list between two lines loses nothing.
bool restDbAnnounce(const char *apiName)
{
    const char *path = PathGet(PATH_REST_DELTA);
    struct stat status;

    // whatever is no file of the daemon's would freeze the cache; what stays there does not open
    if (lstat(path, &status) == 0 && !fileIsOwn(status) && ownFileClear(path) && !fileIsForeign(status))
        restDbNamesAnnounce(); // perhaps the list itself, to which somebody has made a link: its names were not read
    OWNED_FD_T list(ownFileOpen(path, O_APPEND, 0666));
    size_t length = strlen(apiName) + 1;
    OWNED_TEXT line(static_cast<char *>(malloc(length + 1)));

    if (list.fd < 0 || line == nullptr || (!fileEndsInLineEnd(list.fd) && !fileAppend(list.fd, "\n", 1)))
        return false;
    snprintf(line.get(), length + 1, "%s\n", apiName);
    return fileAppend(list.fd, line.get(), length);
}

int rest_db_lock_acquire(const char *name, int *fd)
{
    if (fd == nullptr)
        return RESULT_ERROR;
    *fd = lockAcquire(name);
    if (*fd >= 0)
        return RESULT_OK;
    cacheFile.notStored++;
    return RESULT_ERROR;
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
    struct stat status;

    int reason = mkdir(dir, 0755) == 0 ? 0 : errno;
    if (reason == EEXIST && lstat(dir, &status) == 0 && fileIsLaid(status) && ownFileClear(dir))
        reason = mkdir(dir, 0755) == 0 ? 0 : errno; // whoever owned it could have taken each lock away
    if (reason == 0 || (reason == EEXIST && isOwnDirectory(dir)))
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
    if (process != 0 && thread != 0 && signalAllowed(ids.get(), process))
        (void)syscall(SYS_tgkill, process, thread, SIGINT); // the server may have gone; the next one reads the cache
}

static int operationOnce(int operation, const char *apiName, const char *data)
{
    OWNED_DB db;
    int result = restDbOpen(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, &db);

    if (result == SQLITE_OK) {
        fileLook();
        return operationRun(db.get(), operation, apiName, data);
    }
    LOG_ERROR_AS(OPERATION, "Can't open database: %s\n", sqlite3_errmsg(db.get()));
    return result;
}

// Another file than the last one means that what was written is gone.
static void fileLook()
{
    struct stat status;

    if (stat(PathGet(PATH_REST_DB), &status) != 0)
        return; // removed just now: the next operation meets another one
    if (cacheFile.known && (status.st_dev != cacheFile.device || status.st_ino != cacheFile.inode))
        cacheFile.beginnings++;
    cacheFile.known = true;
    cacheFile.device = status.st_dev;
    cacheFile.inode = status.st_ino;
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

// The cache lives in memory and can be rebuilt, so nothing is synced. A setting that fails costs speed only.
static void connectionConfigure(sqlite3 *db)
{
    static const char *const settings[] = {
        "PRAGMA cache_size = -2000;",
        "PRAGMA temp_store = MEMORY;",
        "PRAGMA journal_mode = MEMORY;",
        "PRAGMA synchronous = OFF;",
    };

    for (const char *setting : settings)
        (void)sqlite3_exec(db, setting, nullptr, nullptr, nullptr);
}

static int tableCreate(sqlite3 *db)
{
    const char *sql = "CREATE TABLE IF NOT EXISTS restapi_db (api_name TEXT PRIMARY KEY, data TEXT);";
    int there =
        sqlite3_table_column_metadata(db, nullptr, "restapi_db", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    int result = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);

    if (result != SQLITE_OK)
        return sqlErrorLog(db, result);
    if (there == SQLITE_ERROR) // no such table
        cacheFile.beginnings++;
    return RESULT_OK;
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
    result = sqlBind(replace, {apiName, data});
    if (result == SQLITE_OK)
        result = sqlStep(replace);
    if (result != SQLITE_DONE)
        LOG_ERROR_AS(OPERATION, "Execution failed: %s\n", sqlite3_errmsg(db));
    return result;
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
    return result == SQLITE_DONE ? RESULT_OK : sqlErrorLog(db, result);
}

static int statementPrepare(sqlite3 *db, const char *sql, OWNED_STATEMENT *statement)
{
    int result = sqlPrepare(db, sql, statement);

    if (result != SQLITE_OK)
        LOG_ERROR_AS(OPERATION, "prepare failed: %s\n", sqlite3_errmsg(db));
    return result;
}

static int sqlErrorLog(sqlite3 *db, int result)
{
    LOG_ERROR_AS(OPERATION, "SQL error: %s\n", sqlite3_errmsg(db));
    return result;
}

// Descriptor of the locked file, or -1.
static int lockAcquire(const char *name)
{
    char path[LOCK_PATH_SIZE];

    if (name == nullptr || name[0] == '\0') {
        LOG_ERROR_AS(LOCK_ACQUIRE, "rest_db_lock_acquire: empty api_name\n");
        return -1;
    }
    if (ensure_lock_dir() != 0)
        return -1;
    int length = snprintf(path, sizeof(path), "%s/%s%s", PathGet(PATH_LOCK_DIR), name, ".lock");
    if (length < 0 || static_cast<size_t>(length) >= sizeof(path)) {
        LOG_ERROR_AS(LOCK_ACQUIRE, "rest_db_lock_acquire: path too long for '%s'\n", name);
        return -1;
    }
    OWNED_FD_T lock(lockFileOpen(path));
    if (lock.fd < 0) {
        LOG_ERROR_AS(LOCK_ACQUIRE, "rest_db_lock_acquire: open(%s) failed: %s\n", path, strerror(errno));
        return -1;
    }
    if (lockFileWait(lock.fd, path) != 0) {
        LOG_ERROR_AS(LOCK_ACQUIRE, "rest_db_lock_acquire: flock(%s) failed: %s\n", path, strerror(errno));
        return -1;
    }
    return lock.release();
}

static bool isOwnDirectory(const char *path)
{
    struct stat status;

    return lstat(path, &status) == 0 && S_ISDIR(status.st_mode) && !fileIsForeign(status);
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

// SIGINT means something to every process, to the first one a restart of the switch: whoever left the ids must be root,
// the daemon's user, or the owner of the process. Whoever laid a link has left what it leads to.
static bool signalAllowed(FILE *ids, int process)
{
    char path[32];
    struct stat file, named, owner;

    if (fstat(fileno(ids), &file) != 0 || lstat(PathGet(PATH_WS_PID), &named) != 0)
        return false;
    const struct stat &left = fileIsForeign(named) ? named : file;
    snprintf(path, sizeof(path), "/proc/%d", process);
    if (!fileIsForeign(left) ? !fileIsLaid(left) : stat(path, &owner) != 0 || owner.st_uid == left.st_uid)
        return true; // it may have gone: nothing is hit then
    LOG_ERROR_AS("send_signal_to_ws", "%s belongs to another user than process %d, not signalled\n",
                 PathGet(PATH_WS_PID), process);
    return false;
}

static void changedReset()
{
    restDbChanged = 0;
    cacheFile = {};
}
