#include "restcache/lock.h"

// A lock is an exclusive flock on "<name>.lock" in the lock directory. The file stays when the lock is released.

#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/ownfile.h"
#include "runtime/paths.h"
#include "runtime/result.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

constexpr size_t LOCK_PATH_SIZE = 128;

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
    int length = snprintf(path, sizeof(path), "%s/%s.lock", PathGet(PATH_LOCK_DIR), name);
    if (length < 0 || static_cast<size_t>(length) >= sizeof(path)) {
        LOG_ERROR("rest_db_lock_acquire: path too long for '%s'\n", name);
        return RESULT_ERROR;
    }
    OWNED_FD_T lock(lockFileOpen(path));
    if (lock.fd < 0) {
        LOG_ERROR("rest_db_lock_acquire: open(%s) failed: %s\n", path, strerror(errno));
        return RESULT_ERROR;
    }
    if (lockFileWait(lock.fd, path) != 0) {
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
    struct stat status;

    int reason = mkdir(dir, 0755) == 0 ? 0 : errno;
    if (reason == EEXIST && lstat(dir, &status) == 0 && fileIsLaid(status) && ownFileClear(dir))
        reason = mkdir(dir, 0755) == 0 ? 0 : errno; // whoever owned it could have taken each lock away
    if (reason == EEXIST && lstat(dir, &status) == 0 && S_ISDIR(status.st_mode) && !fileIsForeign(status))
        reason = 0;
    if (reason == 0)
        return RESULT_OK;
    LOG_ERROR("rest_db_lock: mkdir(%s) failed: %s\n", dir, strerror(reason));
    return RESULT_ERROR;
}
