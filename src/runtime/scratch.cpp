#include "runtime/scratch.h"

// Looks once, at start, through the folders of the numbered output files in the table of paths.

#include "runtime/paths.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr time_t KEPT_SECONDS = 600;

bool isNumber(const char *text)
{
    return text[0] != '\0' && text[strspn(text, "0123456789")] == '\0';
}

// A file whose time lies in the future (the clock was wrong when it was written) stays.
void oldFilesRemove(DIR *folder, const char *name)
{
    const int fd = dirfd(folder);
    const size_t length = strlen(name);

    while (const struct dirent *entry = readdir(folder)) {
        struct stat status;

        if (strncmp(entry->d_name, name, length) == 0 && isNumber(entry->d_name + length) &&
            fstatat(fd, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode) &&
            status.st_mtime < time(nullptr) - KEPT_SECONDS)
            (void)unlinkat(fd, entry->d_name, 0); // what stays is only room
    }
}

} // namespace

void scratchFilesSweep()
{
    for (int id = 0; id < PATH_COUNT; id++) {
        if (!PathIsNumbered(static_cast<PATH_ID>(id)))
            continue;
        char path[PATH_OUTPUT_SIZE];
        snprintf(path, sizeof(path), "%s", PathGet(static_cast<PATH_ID>(id)));
        char *name = strrchr(path, '/');
        *name++ = '\0';
        std::unique_ptr<DIR, int (*)(DIR *)> folder(opendir(path), closedir);
        if (folder != nullptr)
            oldFilesRemove(folder.get(), name);
    }
}
