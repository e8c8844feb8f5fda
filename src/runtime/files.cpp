#include "runtime/files.h"

// Opens without waiting and looks at what was opened, not at the name, so that nothing can be put there in between.

#include "runtime/owned.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

// Where no file can be.
constexpr const char *NOWHERE = "/dev/null/none";

static bool isRegular(const char *path);
static int regularOpen(const char *path, int flags, mode_t mode);
static FILE *streamOf(int fd, const char *mode);

FILE *fileOpenRead(const char *path)
{
    return streamOf(regularOpen(path, O_RDONLY, 0), "r");
}

FILE *fileOpenAppend(const char *path)
{
    return streamOf(fileOpenMake(path, O_APPEND, 0666), "a+");
}

int fileOpenMake(const char *path, int flags, mode_t mode)
{
    return regularOpen(path, O_RDWR | O_CREAT | O_NOFOLLOW | flags, mode);
}

int fileOpenDatabase(const char *path, int flags, sqlite3 **db)
{
    // SQLite opens by name and would follow a link, or wait at a pipe
    bool allowed = (flags & SQLITE_OPEN_CREATE) != 0 ? fileMayBeMade(path) : isRegular(path);

    return sqlite3_open_v2(allowed ? path : NOWHERE, db, flags, nullptr);
}

bool fileMayBeMade(const char *path)
{
    struct stat status;

    return lstat(path, &status) == 0 ? S_ISREG(status.st_mode) : errno == ENOENT;
}

// Or a link to a regular file.
static bool isRegular(const char *path)
{
    struct stat status;

    return stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

static int regularOpen(const char *path, int flags, mode_t mode)
{
    OWNED_FD_T file(open(path, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode));
    struct stat status;

    if (file.fd < 0 || fstat(file.fd, &status) != 0)
        return -1;
    if (S_ISREG(status.st_mode))
        return file.release();
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return -1;
}

static FILE *streamOf(int fd, const char *mode)
{
    FILE *stream = fd < 0 ? nullptr : fdopen(fd, mode);

    if (stream == nullptr && fd >= 0)
        close(fd);
    return stream;
}
