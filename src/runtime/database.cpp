#include "runtime/database.h"

// A file system of SQLite's own kind that looks at what it opens: the default one with another access, and with another
// open below it, which judges the descriptor. A look at the name before would leave a gap in which it changes hands.

#include "runtime/files.h"
#include "runtime/ownfile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <mutex>

namespace {

constexpr const char *VFS_NAME = "devmgr";
constexpr const char *NOWHERE = "/dev/null/none"; // where no file can be
constexpr int WAIT_MS = 3000;
constexpr int STEPS_A_LOOK = 100000;
constexpr int LOOKS_MAX = 2000; // 200 million steps: some seconds
constexpr size_t DATABASE_PATH_SIZE = 512;

using OPEN_CALL = int (*)(const char *path, int flags, int mode);
OPEN_CALL systemOpen = nullptr; // of the default file system

// The connection that this thread opens and uses.
struct CONNECTION_STATE_T {
    const char *opening = nullptr; // path of the database while it is being opened
    DATABASE_KIND kind = DATABASE_SHARED;
    int waited = 0; // milliseconds, for locks
    int looks = 0;  // of the progress handler
};
thread_local CONNECTION_STATE_T connection;

// The daemon's own database as it was last opened: it stays its own when somebody gives it a second name.
thread_local struct stat lastOwn;

// Length of the database's name when a path is that of a file beside it; 0 for others.
size_t besideOf(const char *path)
{
    size_t length = strlen(path);

    for (const char *end : {"-journal", "-wal", "-shm"}) {
        size_t endLength = strlen(end);
        if (length > endLength && strcmp(path + length - endLength, end) == 0)
            return length - endLength;
    }
    return 0;
}

// Whether an object may stand beside the database whose name are the first `length` characters of its path.
bool besideMayBe(const char *path, size_t length, const struct stat &status)
{
    char database[DATABASE_PATH_SIZE];
    struct stat main;

    if (!S_ISREG(status.st_mode) || status.st_nlink != 1)
        return false;
    if (!fileIsForeign(status))
        return true;
    snprintf(database, sizeof(database), "%.*s", static_cast<int>(length), path);
    return stat(database, &main) == 0 && main.st_uid == status.st_uid;
}

// Move what may not be there out of the way. True when nothing that may not be there stands there now.
bool besideClear(const char *path, size_t length)
{
    struct stat status;

    return lstat(path, &status) != 0 || besideMayBe(path, length, status) || ownFileClear(path);
}

int besideOpen(const char *path, size_t length, int flags, int mode)
{
    for (int tries = 0; tries < 3; tries++) {
        OWNED_FD_T file(systemOpen(path, flags | O_NONBLOCK, mode));
        int reason = errno;
        struct stat status;

        if (file.fd >= 0 && fstat(file.fd, &status) == 0 && besideMayBe(path, length, status))
            return file.release();
        if (!besideClear(path, length)) {
            errno = EPERM;
            return -1;
        }
        if (file.fd < 0 && (reason == ENOENT || lstat(path, &status) == 0)) {
            errno = reason; // there is none, or one that may be there and cannot be opened
            return -1;
        }
    }
    errno = EBUSY;
    return -1;
}

bool isSame(const struct stat &one, const struct stat &other)
{
    return one.st_ino == other.st_ino && one.st_dev == other.st_dev;
}

// Whether an object may not stand at the name of the daemon's own database.
bool ownMustGo(const struct stat &status)
{
    return fileIsForeign(status) || (fileIsLaid(status) && !isSame(status, lastOwn));
}

bool mainMayBe(const struct stat &opened)
{
    struct stat named;

    if (!S_ISREG(opened.st_mode))
        return false;
    if (connection.kind == DATABASE_SHARED)
        return true;
    if (ownMustGo(opened) || lstat(connection.opening, &named) != 0 || !isSame(named, opened))
        return false;
    lastOwn = opened;
    return true;
}

int judgedOpen(const char *path, int flags, int mode)
{
    size_t length = besideOf(path);

    if (length > 0)
        return besideOpen(path, length, flags, mode);
    if (connection.opening == nullptr)
        return systemOpen(path, flags, mode);
    flags |= connection.kind == DATABASE_OWN ? O_NONBLOCK | O_NOFOLLOW : O_NONBLOCK;
    OWNED_FD_T file(systemOpen(path, flags, mode));
    struct stat status;
    if (file.fd < 0 || (fstat(file.fd, &status) == 0 && mainMayBe(status)))
        return file.release();
    errno = EISDIR; // SQLite does not try another way
    return -1;
}

// SQLite asks for a journal's existence before it opens it.
int judgedAccess(sqlite3_vfs *vfs, const char *path, int flags, int *result)
{
    size_t length = flags == SQLITE_ACCESS_EXISTS ? besideOf(path) : 0;

    if (length > 0 && !besideClear(path, length))
        return SQLITE_IOERR_ACCESS;
    return sqlite3_vfs_find("unix")->xAccess(vfs, path, flags, result);
}

// SQLite would open what a link leads to, and make it when it is missing: one that was laid just now, too.
int judgedFullPathname(sqlite3_vfs *vfs, const char *path, int size, char *out)
{
    if (connection.opening == nullptr || connection.kind != DATABASE_OWN || path[0] != '/')
        return sqlite3_vfs_find("unix")->xFullPathname(vfs, path, size, out);
    sqlite3_snprintf(size, out, "%s", path);
    return SQLITE_OK;
}

void fileSystemRegister()
{
    static sqlite3_vfs judged;
    sqlite3_vfs *unixFiles = sqlite3_vfs_find("unix");

    systemOpen = reinterpret_cast<OPEN_CALL>(unixFiles->xGetSystemCall(unixFiles, "open"));
    (void)unixFiles->xSetSystemCall(unixFiles, "open", reinterpret_cast<sqlite3_syscall_ptr>(judgedOpen));
    judged = *unixFiles;
    judged.zName = VFS_NAME;
    judged.pNext = nullptr;
    judged.xAccess = judgedAccess;
    judged.xFullPathname = judgedFullPathname;
    (void)sqlite3_vfs_register(&judged, 0); // without memory SQLite says at the open that there is none of that name
}

// SQLite's own timeout begins anew with every statement: one that is locked out would make an operation wait three
// times more for its settings.
int lockedWait(void *, int count)
{
    static const int pauses[] = {1, 2, 5, 10, 15, 20, 25, 25, 25, 50, 50};

    constexpr int last = sizeof(pauses) / sizeof(pauses[0]) - 1;
    int pause = std::min(pauses[count < last ? count : last], WAIT_MS - connection.waited);
    if (pause <= 0)
        return 0;
    connection.waited += pause;
    (void)sqlite3_sleep(pause);
    return 1;
}

int stepsLook(void *)
{
    return ++connection.looks > LOOKS_MAX ? 1 : 0;
}

// None of these can fail but for a connection that is none.
void connectionDefend(sqlite3 *db)
{
    (void)sqlite3_db_config(db, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    (void)sqlite3_db_config(db, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    (void)sqlite3_db_config(db, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    (void)sqlite3_db_config(db, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    (void)sqlite3_limit(db, SQLITE_LIMIT_LENGTH, DATABASE_TEXT_MAX);
    (void)sqlite3_busy_handler(db, lockedWait, nullptr);
    sqlite3_progress_handler(db, STEPS_A_LOOK, stepsLook, nullptr);
}

// Whether SQLite may open the name: it would wait at a pipe, and follow a link.
bool nameMayBe(DATABASE_KIND kind, const char *path, int flags)
{
    struct stat status;

    if (kind == DATABASE_SHARED)
        return stat(path, &status) == 0 && S_ISREG(status.st_mode);
    if (lstat(path, &status) != 0)
        return errno == ENOENT;
    if (ownMustGo(status))
        return ownFileClear(path) && (flags & SQLITE_OPEN_CREATE) != 0;
    return S_ISREG(status.st_mode); // what root has put there stays, and does not open
}

} // namespace

int databaseOpen(DATABASE_KIND kind, const char *path, int flags, OWNED_DB *db)
{
    static std::once_flag registered;
    sqlite3 *opened = nullptr;

    (void)sqlite3_initialize(); // the open reports what fails here
    std::call_once(registered, fileSystemRegister);
    connection = {nullptr, kind, 0, 0};
    if (nameMayBe(kind, path, flags))
        connection.opening = path;
    int result = sqlite3_open_v2(connection.opening == nullptr ? NOWHERE : path, &opened, flags, VFS_NAME);
    connection.opening = nullptr;
    db->reset(opened);
    if (result == SQLITE_OK)
        connectionDefend(opened);
    return result;
}

int databaseOpenRead(const char *path, OWNED_DB *db)
{
    int result = databaseOpen(DATABASE_SHARED, path, SQLITE_OPEN_READWRITE, db);

    return result == SQLITE_OK ? result : databaseOpen(DATABASE_SHARED, path, SQLITE_OPEN_READONLY, db);
}
