#include "runtime/ownfile.h"

// A task that waits for a lock says nothing while it waits; the timer task speaks for it.

#include "runtime/account.h"
#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/paths.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>

namespace {

constexpr uint32_t WAIT_TOLD_TICKS = 30;

// The lock that is being waited for; at most one, since one task does all the work.
struct LOCK_WAIT_T {
    std::mutex lock;
    char path[2 * PATH_OUTPUT_SIZE] = "";
    uint32_t ticks = 0;
};
LOCK_WAIT_T lockWait;

void waitSet(const char *path)
{
    std::lock_guard<std::mutex> guard(lockWait.lock);
    snprintf(lockWait.path, sizeof(lockWait.path), "%s", path);
    lockWait.ticks = 0;
}

void asideLog(const char *path, const char *aside)
{
    LOG_ERROR_AS("ownFileOpen", "%s: not a file of this daemon, moved aside as %s\n", path, aside);
}

} // namespace

int ownFileOpen(const char *path, int flags, mode_t mode)
{
    char aside[FILE_ASIDE_SIZE];
    int fd = fileOpenOwn(path, flags, mode, aside);
    int reason = errno;

    if (aside[0] != '\0')
        asideLog(path, aside);
    errno = reason;
    return fd;
}

bool ownFileClear(const char *path)
{
    char aside[FILE_ASIDE_SIZE];

    if (fileMoveAside(path, aside)) {
        asideLog(path, aside);
        return true;
    }
    int reason = errno;
    LOG_ERROR_AS("ownFileOpen", "%s: not a file of this daemon, and cannot be moved aside: %s\n", path,
                 strerror(reason));
    errno = reason;
    return false;
}

int lockFileOpen(const char *path)
{
    int fd = ownFileOpen(path, 0, S_IRUSR | S_IWUSR);
    struct stat status;

    if (fd >= 0 && fstat(fd, &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        (void)fchmod(fd, S_IRUSR | S_IWUSR); // made by another program; one of root's that daemon's user may not change
    return fd;
}

int lockFileWait(int fd, const char *path)
{
    ACCOUNT_SCOPE_T waiting(ACCOUNT_LOCK_WAIT, path);
    int result;

    waitSet(path);
    do {
        result = flock(fd, LOCK_EX);
    } while (result != 0 && errno == EINTR);
    int reason = errno;
    waitSet("");
    errno = reason;
    return result;
}

void lockWaitTick()
{
    std::lock_guard<std::mutex> guard(lockWait.lock);

    if (lockWait.path[0] != '\0' && ++lockWait.ticks % WAIT_TOLD_TICKS == 0)
        LOG_WARN("%s: locked by another process, waited for %u s\n", lockWait.path, lockWait.ticks);
}
