// fileops.cpp - one counter for the file operations of the code under test, which fails the chosen one.
//
// A stream operation that fails leaves the stream's error mark alone; its caller may only go by the result. Sweep runs
// are single-threaded, so plain variables do.
#include "fileops.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

static unsigned countedSources;
static int64_t counted;
static int64_t failingAt = -1;
static bool failed;
static const char *failedName = "";
static std::string failedPath;

// Count one operation; true when it is the one to fail.
static bool fails(unsigned source, const char *name, const char *path)
{
    if ((countedSources & source) == 0 || counted++ != failingAt)
        return false;
    failed = true;
    failedName = name;
    failedPath = path;
    // SQLite takes EIO of a read for a damaged file, which is a matter of its own
    errno = source == FILEOPS_SQLITE ? ENOMEM : EIO;
    return true;
}

// TYPE NAME(PARAMETERS), called with ARGUMENTS, failing with RESULT; PATH where it has one.
#define WRAP(type, name, parameters, arguments, result, path)                                                          \
    extern "C" type __real_##name parameters;                                                                          \
    extern "C" type __wrap_##name parameters;                                                                          \
    extern "C" type __wrap_##name parameters                                                                           \
    {                                                                                                                  \
        return fails(FILEOPS_OWN, #name, path) ? (result) : __real_##name arguments;                                   \
    }

WRAP(FILE *, fopen, (const char *path, const char *mode), (path, mode), nullptr, path)
WRAP(FILE *, fdopen, (int fd, const char *mode), (fd, mode), nullptr, "")
WRAP(char *, fgets, (char *line, int size, FILE *stream), (line, size, stream), nullptr, "")
WRAP(size_t, fread, (void *to, size_t size, size_t count, FILE *stream), (to, size, count, stream), 0, "")
WRAP(size_t, fwrite, (const void *from, size_t size, size_t count, FILE *stream), (from, size, count, stream), 0, "")
WRAP(int, fputs, (const char *text, FILE *stream), (text, stream), EOF, "")
WRAP(int, fseek, (FILE * stream, long offset, int whence), (stream, offset, whence), -1, "")
WRAP(long, ftell, (FILE * stream), (stream), -1, "")
WRAP(int, vfprintf, (FILE * stream, const char *format, va_list arguments), (stream, format, arguments), -1, "")
WRAP(int, fflush, (FILE * stream), (stream), EOF, "")
WRAP(ssize_t, read, (int fd, void *to, size_t size), (fd, to, size), -1, "")
WRAP(ssize_t, write, (int fd, const void *from, size_t size), (fd, from, size), -1, "")
WRAP(int, rename, (const char *from, const char *to), (from, to), -1, from)
WRAP(int, remove, (const char *path), (path), -1, path)
WRAP(int, unlink, (const char *path), (path), -1, path)
WRAP(int, mkdir, (const char *path, mode_t mode), (path, mode), -1, path)
WRAP(int, flock, (int fd, int operation), (fd, operation), -1, "")
WRAP(int, ftruncate, (int fd, off_t size), (fd, size), -1, "")
WRAP(int, access, (const char *path, int mode), (path, mode), -1, path)
WRAP(int, stat, (const char *path, struct stat *status), (path, status), -1, path)
WRAP(int, fstat, (int fd, struct stat *status), (fd, status), -1, "")
WRAP(DIR *, opendir, (const char *path), (path), nullptr, path)
WRAP(int, scandir,
     (const char *path, struct dirent ***list, int (*filter)(const struct dirent *),
      int (*order)(const struct dirent **, const struct dirent **)),
     (path, list, filter, order), -1, path)

extern "C" int __real_open(const char *path, int flags, ...);
extern "C" int __wrap_open(const char *path, int flags, ...);
extern "C" int __wrap_open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return fails(FILEOPS_OWN, "open", path) ? -1 : __real_open(path, flags, mode);
}

extern "C" int __wrap_fprintf(FILE *stream, const char *format, ...);
extern "C" int __wrap_fprintf(FILE *stream, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    int result = fails(FILEOPS_OWN, "fprintf", "") ? -1 : __real_vfprintf(stream, format, arguments);
    va_end(arguments);
    return result;
}

extern "C" int __real_fclose(FILE *stream);
extern "C" int __wrap_fclose(FILE *stream);
extern "C" int __wrap_fclose(FILE *stream)
{
    bool failing = fails(FILEOPS_OWN, "fclose", "");
    int result = __real_fclose(stream);
    return failing ? EOF : result;
}

// ---- SQLite's system calls ----

static sqlite3_syscall_ptr realOf[5];

static int sqliteOpen(const char *path, int flags, int mode)
{
    using OPEN_T = int (*)(const char *, int, int);
    return fails(FILEOPS_SQLITE, "SQLite's open", path) ? -1 : reinterpret_cast<OPEN_T>(realOf[0])(path, flags, mode);
}

static ssize_t sqlitePread(int fd, void *to, size_t size, off_t at)
{
    using PREAD_T = ssize_t (*)(int, void *, size_t, off_t);
    return fails(FILEOPS_SQLITE, "SQLite's pread", "") ? -1 : reinterpret_cast<PREAD_T>(realOf[1])(fd, to, size, at);
}

static ssize_t sqlitePwrite(int fd, const void *from, size_t size, off_t at)
{
    using PWRITE_T = ssize_t (*)(int, const void *, size_t, off_t);
    return fails(FILEOPS_SQLITE, "SQLite's pwrite", "") ? -1
                                                        : reinterpret_cast<PWRITE_T>(realOf[2])(fd, from, size, at);
}

static int sqliteFstat(int fd, struct stat *status)
{
    using FSTAT_T = int (*)(int, struct stat *);
    return fails(FILEOPS_SQLITE, "SQLite's fstat", "") ? -1 : reinterpret_cast<FSTAT_T>(realOf[3])(fd, status);
}

static int sqliteFcntl(int fd, int command, ...)
{
    using FCNTL_T = int (*)(int, int, ...);
    va_list arguments;
    va_start(arguments, command);
    void *argument = va_arg(arguments, void *); // a lock record, or a number in its place
    va_end(arguments);
    bool locks = command == F_SETLK && static_cast<struct flock *>(argument)->l_type != F_UNLCK;
    if (locks && fails(FILEOPS_SQLITE, "SQLite's fcntl", ""))
        return -1;
    return reinterpret_cast<FCNTL_T>(realOf[4])(fd, command, argument);
}

void fileopsInstall()
{
    static const struct {
        const char *name;
        sqlite3_syscall_ptr ours;
    } calls[] = {
        {"open", reinterpret_cast<sqlite3_syscall_ptr>(sqliteOpen)},
        {"pread", reinterpret_cast<sqlite3_syscall_ptr>(sqlitePread)},
        {"pwrite", reinterpret_cast<sqlite3_syscall_ptr>(sqlitePwrite)},
        {"fstat", reinterpret_cast<sqlite3_syscall_ptr>(sqliteFstat)},
        {"fcntl", reinterpret_cast<sqlite3_syscall_ptr>(sqliteFcntl)},
    };
    sqlite3_vfs *vfs = sqlite3_vfs_find(nullptr);
    sqlite3_syscall_ptr *real = realOf;

    for (const auto &call : calls) {
        // SQLite also asks for the 64-bit names where it was built with them
        std::string name = call.name;
        *real = vfs->xGetSystemCall(vfs, (name + "64").c_str());
        if (*real != nullptr)
            name += "64";
        else
            *real = vfs->xGetSystemCall(vfs, call.name);
        if (vfs->xSetSystemCall(vfs, name.c_str(), call.ours) != SQLITE_OK || *real == nullptr)
            abort();
        real++;
    }
}

void fileopsFailAt(int64_t n, unsigned sources)
{
    counted = 0;
    failed = false;
    failedPath.clear();
    failingAt = n;
    countedSources = sources;
}

bool fileopsFailStop()
{
    countedSources = 0;
    return failed;
}

const char *fileopsFailedName()
{
    return failedName;
}

std::string fileopsFailedPath()
{
    return failedPath;
}
