#include "cache/cache.h"

// The looking side of the cache. An open connection keeps a file that was replaced or removed and never hears of it, so
// the folder is watched, too, and device and inode are compared at each look. The daemon writes a record in one
// transaction of a few milliseconds: a look that meets it waits for it (BUSY_MILLISECONDS), and a short transaction of
// a reader is what the daemon's own wait is for.

#include "runtime/files.h"
#include "runtime/paths.h"
#include "runtime/sql.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>

static constexpr int BUSY_MILLISECONDS = 1000;
static constexpr int WAIT_QUIET = 5000; // a look without an event: only for a file system that tells nothing
static constexpr int WAIT_AGAIN = 200;  // after a locked, damaged or missing file

static int64_t steadyMilliseconds()
{
    struct timespec now;

    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

static CACHE_LOOK_T looked(CACHE_STATE state, const std::string &trouble)
{
    return {state, state == CACHE_READ ? WAIT_QUIET : WAIT_AGAIN, trouble};
}

static CACHE_LOOK_T sqlLooked(int result, const char *path)
{
    int code = result & 0xff;

    if (code == SQLITE_CANTOPEN || code == SQLITE_PERM || code == SQLITE_AUTH || code == SQLITE_READONLY)
        return looked(CACHE_REFUSED, std::string(path) + ": cannot be read by this user (the group devmgr can)");
    return looked(CACHE_BUSY, std::string(path) + ": " + sqlite3_errstr(result));
}

// A database is data: its triggers and views do not run.
static int connect(const char *path, OWNED_DB *db)
{
    sqlite3 *opened = nullptr;
    int result = sqlite3_open_v2(path, &opened, SQLITE_OPEN_READONLY, nullptr);

    db->reset(opened);
    if (result != SQLITE_OK)
        return result;
    sqlite3_busy_timeout(opened, BUSY_MILLISECONDS);
    (void)sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    (void)sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    (void)sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    return SQLITE_OK;
}

static int dataVersionRead(sqlite3 *db, int64_t *version)
{
    OWNED_STATEMENT statement;
    int result = sqlPrepare(db, "PRAGMA data_version;", &statement);

    if (result == SQLITE_OK)
        result = sqlStep(statement);
    if (result != SQLITE_ROW)
        return result;
    *version = sqlite3_column_int64(statement.get(), 0);
    return SQLITE_OK;
}

// "neighbor_ex" for "neighbor_ex/3", but "profile/list_ex" for itself.
static std::string withoutNumber(const std::string &name)
{
    size_t slash = name.rfind('/');

    if (slash == std::string::npos || slash + 1 == name.size() ||
        name.find_first_not_of("0123456789", slash + 1) != std::string::npos)
        return name;
    return name.substr(0, slash);
}

static bool isWanted(const std::set<std::string> &wanted, const std::string &name)
{
    return wanted.empty() || wanted.count(name) != 0 || wanted.count(withoutNumber(name)) != 0;
}

static int documentsRead(sqlite3 *db, const std::set<std::string> &wanted, CACHE_DOCUMENTS_T *documents)
{
    OWNED_STATEMENT statement;
    int result = sqlPrepare(db, "SELECT api_name, data FROM restapi_db;", &statement);

    if (result != SQLITE_OK)
        return result;
    while ((result = sqlStep(statement)) == SQLITE_ROW) {
        std::string name(sqlText(statement, 0));
        if (isWanted(wanted, name))
            (*documents)[name] = sqlText(statement, 1);
    }
    return result == SQLITE_DONE ? SQLITE_OK : result;
}

static void fileWatchSet(CACHE_T *cache)
{
    if (cache->fileWatch >= 0)
        (void)inotify_rm_watch(cache->events.fd, cache->fileWatch); // gone with its file already, perhaps
    cache->fileWatch = inotify_add_watch(cache->events.fd, PathGet(PATH_REST_DB), IN_MODIFY | IN_DELETE_SELF);
}

static void connectionForget(CACHE_T *cache)
{
    cache->db.reset();
    cache->dataVersion = -1;
    cache->device = 0;
    cache->inode = 0;
}

std::vector<CACHE_CHANGE_T> cacheCompare(const CACHE_DOCUMENTS_T &was, const CACHE_DOCUMENTS_T &now)
{
    std::vector<CACHE_CHANGE_T> changes;
    auto old = was.begin();

    for (const auto &document : now) {
        for (; old != was.end() && old->first < document.first; ++old)
            changes.push_back({old->first, old->second, ""});
        bool had = old != was.end() && old->first == document.first;
        if (!had || old->second != document.second)
            changes.push_back({document.first, had ? old->second : "", document.second});
        if (had)
            ++old;
    }
    for (; old != was.end(); ++old)
        changes.push_back({old->first, old->second, ""});
    return changes;
}

// The connection of the file that stands at the name now. CACHE_READ when there is one.
static CACHE_LOOK_T fileLook(CACHE_T *cache)
{
    const char *path = PathGet(PATH_REST_DB);
    struct stat status;

    if (lstat(path, &status) != 0) {
        int error = errno;
        connectionForget(cache);
        return looked(error == EACCES ? CACHE_REFUSED : CACHE_MISSING, std::string(path) + ": " + strerror(error));
    }
    if (!S_ISREG(status.st_mode) || fileIsForeign(status)) {
        connectionForget(cache);
        return looked(CACHE_REFUSED, std::string(path) + ": belongs neither to root nor to this user, or is no file");
    }
    if (cache->db != nullptr && status.st_dev == cache->device && status.st_ino == cache->inode)
        return looked(CACHE_READ, "");
    connectionForget(cache);
    fileWatchSet(cache); // before the first reading, so that nothing is missed after it
    int result = connect(path, &cache->db);
    if (result != SQLITE_OK) {
        connectionForget(cache);
        return sqlLooked(result, path);
    }
    cache->device = status.st_dev;
    cache->inode = status.st_ino;
    return looked(CACHE_READ, "");
}

bool cacheOpen(CACHE_T *cache)
{
    std::string folder = PathGet(PATH_REST_DB);

    folder.resize(folder.rfind('/') + 1);
    cache->events.fd = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    return cache->events.fd >= 0 &&
           inotify_add_watch(cache->events.fd, folder.c_str(), IN_CREATE | IN_MOVED_TO | IN_ONLYDIR) >= 0;
}

CACHE_LOOK_T cacheLook(CACHE_T *cache, std::vector<CACHE_CHANGE_T> *changes)
{
    CACHE_LOOK_T look = fileLook(cache);
    CACHE_DOCUMENTS_T documents;
    int64_t version = -1;

    changes->clear();
    if (look.state != CACHE_READ)
        return look;
    int result = dataVersionRead(cache->db.get(), &version);
    if (result == SQLITE_OK && version == cache->dataVersion)
        return look;
    if (result == SQLITE_OK)
        result = documentsRead(cache->db.get(), cache->wanted, &documents);
    if (result == SQLITE_OK) {
        cache->dataVersion = version;
        *changes = cacheCompare(cache->documents, documents);
        cache->documents.swap(documents);
        return look;
    }
    bool noTable = result == SQLITE_ERROR; // the daemon has just made the file
    connectionForget(cache);               // a connection that met a damage would meet it again
    return noTable ? looked(CACHE_MISSING, std::string(PathGet(PATH_REST_DB)) + ": holds no documents yet")
                   : sqlLooked(result, PathGet(PATH_REST_DB));
}

bool cacheEventsTake(CACHE_T *cache)
{
    alignas(struct inotify_event) char events[4096];
    const char *name = strrchr(PathGet(PATH_REST_DB), '/') + 1;
    bool ours = false;
    ssize_t count;

    while ((count = read(cache->events.fd, events, sizeof(events))) > 0) {
        for (const char *at = events; at < events + count;) {
            const auto *event = reinterpret_cast<const struct inotify_event *>(at);
            ours = ours || event->len == 0 || strcmp(event->name, name) == 0; // of the file, or too many at once
            at += sizeof(*event) + event->len;
        }
    }
    return ours;
}

void cacheWait(CACHE_T *cache, int milliseconds)
{
    int64_t end = steadyMilliseconds() + milliseconds;
    int64_t left = milliseconds;

    for (; left > 0; left = end - steadyMilliseconds()) {
        struct pollfd ready = {cache->events.fd, POLLIN, 0};
        if (poll(&ready, 1, static_cast<int>(left)) != 1 || cacheEventsTake(cache))
            return; // an interrupted wait is an early look
    }
}

CACHE_LOOK_T cacheFileRead(const char *path, CACHE_DOCUMENTS_T *documents)
{
    OWNED_DB db;
    struct stat status;

    if (stat(path, &status) != 0)
        return looked(CACHE_MISSING, std::string(path) + ": " + strerror(errno));
    int result = connect(path, &db);
    if (result == SQLITE_OK)
        result = documentsRead(db.get(), {}, documents);
    return result == SQLITE_OK ? looked(CACHE_READ, "") : sqlLooked(result, path);
}
