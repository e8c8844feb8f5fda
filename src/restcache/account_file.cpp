#include "restcache/account_file.h"

#include "runtime/account.h"
#include "runtime/files.h"
#include "runtime/owned.h"
#include "runtime/paths.h"

#include <cstdio>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

void accountFileWrite()
{
    static std::mutex one; // the timer's task and the monitor
    std::lock_guard<std::mutex> guard(one);
    char beside[PATH_OUTPUT_SIZE];
    char aside[FILE_ASIDE_SIZE];

    snprintf(beside, sizeof(beside), "%s.new", PathGet(PATH_STATUS));
    OWNED_FD_T opened(fileOpenOwn(beside, 0, 0644, aside));
    // whoever may ask "is it well" may read it, whatever umask the daemon was started with
    if (opened.fd < 0 || ftruncate(opened.fd, 0) != 0 || fchmod(opened.fd, 0644) != 0)
        return;
    OWNED_FILE file(fdopen(opened.fd, "w"));
    if (file == nullptr)
        return;
    (void)opened.release();
    accountPrint(file.get(), DEVMGR_VERSION);
    if (fflush(file.get()) == 0 && ferror(file.get()) == 0)
        (void)fileRename(beside, PathGet(PATH_STATUS));
}
