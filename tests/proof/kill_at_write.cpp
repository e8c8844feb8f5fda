// kill_at_write.cpp - preloaded into the daemon: kills it just before the n-th write to one file, as PROOF_KILL_FILE
// and PROOF_KILL_AT say.

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

static void written(int fd)
{
    static const char *const path = getenv("PROOF_KILL_FILE");
    static const char *const at = getenv("PROOF_KILL_AT");
    static const long last = at == nullptr ? 0 : strtol(at, nullptr, 10);
    static std::atomic<long> count{0};
    struct stat file, wanted;

    if (path == nullptr || fstat(fd, &file) != 0 || !S_ISREG(file.st_mode) || stat(path, &wanted) != 0 ||
        file.st_ino != wanted.st_ino || file.st_dev != wanted.st_dev)
        return;
    if (++count == last)
        kill(getpid(), SIGKILL);
}

extern "C" ssize_t pwrite64(int fd, const void *bytes, size_t size, off64_t offset)
{
    using PWRITE_T = ssize_t (*)(int, const void *, size_t, off64_t);
    static const auto real = reinterpret_cast<PWRITE_T>(dlsym(RTLD_NEXT, "pwrite64"));
    written(fd);
    return real(fd, bytes, size, offset);
}

extern "C" ssize_t write(int fd, const void *bytes, size_t size)
{
    using WRITE_T = ssize_t (*)(int, const void *, size_t);
    static const auto real = reinterpret_cast<WRITE_T>(dlsym(RTLD_NEXT, "write"));
    written(fd);
    return real(fd, bytes, size);
}
