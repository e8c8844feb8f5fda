#include "runtime/files.h"

// Opens without waiting and looks at what was opened, not at the name, so that nothing can be put there in between.

#include "runtime/owned.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/random.h>

namespace {

constexpr int OPEN_FLAGS = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr int OPEN_TRIES = 4; // the name may change hands between two looks

FILE *streamOf(int fd, const char *mode)
{
    FILE *stream = fd < 0 ? nullptr : fdopen(fd, mode);

    if (stream == nullptr && fd >= 0)
        close(fd);
    return stream;
}

int regularOpen(const char *path, int flags, bool own)
{
    OWNED_FD_T file(open(path, O_RDONLY | OPEN_FLAGS | flags));
    struct stat status;

    if (file.fd < 0 || fstat(file.fd, &status) != 0)
        return -1;
    if (own ? fileIsOwn(status) : S_ISREG(status.st_mode))
        return file.release();
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return -1;
}

// Cut off what has just been appended, unless another program has appended behind it.
void appendedCut(int fd, size_t written)
{
    struct stat status;
    off_t end = lseek(fd, 0, SEEK_CUR);

    if (end >= static_cast<off_t>(written) && fstat(fd, &status) == 0 && status.st_size == end)
        (void)!ftruncate(fd, end - static_cast<off_t>(written)); // what stays gets a line end before the next text
}

} // namespace

FILE *fileOpenRead(const char *path)
{
    return streamOf(regularOpen(path, 0, false), "r");
}

FILE *fileOpenReadOwn(const char *path)
{
    return streamOf(regularOpen(path, O_NOFOLLOW, true), "r");
}

int fileOpenOwn(const char *path, int flags, mode_t mode, char aside[FILE_ASIDE_SIZE])
{
    aside[0] = '\0';
    for (int i = 0; i < OPEN_TRIES; i++) {
        OWNED_FD_T file(open(path, O_RDWR | O_CREAT | O_NOFOLLOW | OPEN_FLAGS | flags, mode));
        int reason = errno;
        struct stat status;

        if (file.fd >= 0 && fstat(file.fd, &status) == 0 && fileIsOwn(status))
            return file.release();
        // A kernel that protects such folders refuses to open what is another user's there: the name tells.
        bool there = lstat(path, &status) == 0;
        bool failed = there && fileIsLaid(status)
                          ? !fileMoveAside(path, aside)
                          : file.fd < 0 || (there && !S_ISREG(status.st_mode)); // root's, no file
        if (failed) {
            errno = file.fd < 0 ? reason : EINVAL;
            return -1;
        }
        // otherwise the file that was opened has been taken away since: its reader may have removed it already
    }
    errno = EBUSY;
    return -1;
}

bool fileMoveAside(const char *path, char aside[FILE_ASIDE_SIZE])
{
    unsigned end = 0;

    snprintf(aside, FILE_ASIDE_SIZE, "%s.bad", path);
    if (fileRename(path, aside))
        return true;
    (void)!getrandom(&end, sizeof(end), GRND_NONBLOCK); // a name that is taken only fails
    snprintf(aside, FILE_ASIDE_SIZE, "%s.bad.%08x", path, end);
    if (fileRename(path, aside))
        return true;
    aside[0] = '\0';
    return false;
}

// Between two names of one file rename does nothing and reports success.
bool fileRename(const char *from, const char *to)
{
    struct stat left, moved;

    if (rename(from, to) != 0)
        return false;
    if (lstat(from, &left) != 0 || lstat(to, &moved) != 0 || left.st_ino != moved.st_ino || left.st_dev != moved.st_dev)
        return true;
    errno = EEXIST;
    return false;
}

bool fileIsForeign(const struct stat &status)
{
    return status.st_uid != 0 && status.st_uid != geteuid();
}

bool fileIsLaid(const struct stat &status)
{
    return fileIsForeign(status) || (!S_ISDIR(status.st_mode) && status.st_nlink > 1);
}

bool fileIsOwn(const struct stat &status)
{
    return S_ISREG(status.st_mode) && status.st_nlink == 1 && !fileIsForeign(status);
}

bool fileAppend(int fd, const char *text, size_t length)
{
    size_t written = 0;

    while (written < length) {
        ssize_t count = write(fd, text + written, length - written); // all in one, as a rule
        if (count > 0) {
            written += static_cast<size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            int reason = count == 0 ? ENOSPC : errno;
            appendedCut(fd, written);
            errno = reason;
            return false;
        }
    }
    return true;
}

bool fileEndsInLineEnd(int fd)
{
    struct stat status;
    char last = '\n';

    return fstat(fd, &status) != 0 || status.st_size == 0 || pread(fd, &last, 1, status.st_size - 1) != 1 ||
           last == '\n';
}
