// writeback.cpp - rebuilds one document beside the running daemon, for names that no schedule rebuilds.
//
// It links the daemon's builders and takes the daemon's road: the name's lock, the cache, the change list and the
// signal are those under the same root. Its own are the client session, a scratch folder for the output files of show
// commands (their names are fixed, and the daemon may be using them), and the log, which goes to standard error so that
// the daemon's log file keeps one writer.

#include "documents.h"
#include "restcache/run.h"
#include "runtime/log.h"
#include "runtime/paths.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <getopt.h>
#include <unistd.h>

constexpr int SYSLOG_FACILITY_USER = 8;

static const char usageText[] = "usage: writeback --root DIR NAME\n"
                                "Rebuilds the document of an API name in the cache under DIR, as the daemon does.\n"
                                "Status: 0 when it was built, 1 when not, 2 for wrong usage.\n";

// True to go on; otherwise the program ends with *status.
static bool optionsTake(int argc, char **argv, const char **root, const char **name, int *status)
{
    static const struct option options[] = {
        {"root", required_argument, nullptr, 'r'}, {"help", no_argument, nullptr, 'h'}, {nullptr, 0, nullptr, 0}};
    int option;

    *root = nullptr;
    while ((option = getopt_long(argc, argv, "", options, nullptr)) == 'r')
        *root = optarg;
    *status = option == 'h' ? 0 : 2;
    if (option == -1 && *root != nullptr && optind == argc - 1) {
        *name = argv[optind];
        return true;
    }
    fputs(usageText, option == 'h' ? stdout : stderr);
    return false;
}

static int documentBuild(const char *name)
{
    CLIENT_HANDLE_T clientHandle = {};

    fflush(stdout);
    if (dup2(STDERR_FILENO, STDOUT_FILENO) < 0) // where the logger writes
        perror("standard output");
    LogInit(LOG_OPTION_STDOUT, SYSLOG_FACILITY_USER, "writeback");
    if (initHandler("writeback", &clientHandle) != 0) {
        fputs("writeback: the switch does not answer\n", stderr);
        return 1;
    }
    int result = rest_db_writeback(&clientHandle, name);
    if (result != 0)
        fprintf(stderr, "writeback: %s failed with result %d\n", name, result);
    return result == 0 ? 0 : 1;
}

int main(int argc, char **argv)
{
    const char *root, *name;
    int status;
    char scratch[] = "/tmp/dmw_XXXXXX";
    std::error_code ignored; // a temporary folder that cannot be removed harms nobody

    if (!optionsTake(argc, argv, &root, &name, &status))
        return status;
    documentsRegister();
    const DOCUMENT_T *row = documentFind(name);
    if (row == nullptr || row->isDirect) {
        fprintf(stderr, "writeback: no document is called '%s'\n", name);
        return 1;
    }
    if (mkdtemp(scratch) == nullptr) {
        perror(scratch);
        return 1;
    }
    status = 1;
    if (PathsInit(root, scratch) == 0)
        status = documentBuild(name);
    else
        fprintf(stderr, "writeback: %s: too long for a root\n", root);
    std::filesystem::remove_all(scratch, ignored);
    return status;
}
