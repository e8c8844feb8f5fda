// main.cpp - process entry: options, the task table, start-up.

#include "documents.h"
#include "restcache/account_file.h"
#include "restcache/monitor.h"
#include "runtime/account.h"
#include "runtime/clock.h"
#include "runtime/paths.h"
#include "runtime/startup.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <getopt.h>
#include <sys/stat.h>
#include <unistd.h>

// The timer task first: its lock must exist before the monitor arms a timer.
static const DM_TASK_T dmTaskTable[] = {
    {"TMR", TmrTask, 0},
    {"AMT", AgentRestMonitor, 0},
    {nullptr, nullptr, 0},
};

constexpr int EXIT_USAGE = 2;

static const char usageText[] = "usage: devmgr [--root DIR] [--tick-ms N]\n"
                                "Keeps the REST cache of a managed AV switch filled and fresh.\n"
                                "\n"
                                "  --root DIR    put all files under DIR (an existing writable directory, at most\n"
                                "                18 characters); default: none, the switch's own root\n"
                                "  --tick-ms N   length of one second of waiting in milliseconds, 1 to 60000\n"
                                "                (default 1000; for tests)\n"
                                "  --help        show this text\n"
                                "  --version     show the version\n"
                                "\n"
                                "Signals: SIGTERM, SIGHUP and SIGQUIT end it at once with status 2.\n"
                                "Status: 1 when it cannot start, 2 for a wrong option or root.\n"
                                "The log level and all files are described in devmgr(8).\n";

static int usageError(const char *what, const char *value, const char *why)
{
    fprintf(stderr, "devmgr: %s %s: %s\n", what, value, why);
    return EXIT_USAGE;
}

// A root must be there and writable, and short enough for the output paths.
static int rootUse(const char *root)
{
    struct stat status;

    if (PathsInit(root, nullptr) != 0)
        return usageError("--root", root, "longer than 18 characters");
    if (stat(root, &status) != 0)
        return usageError("--root", root, strerror(errno));
    if (!S_ISDIR(status.st_mode))
        return usageError("--root", root, "not a directory");
    if (access(root, W_OK | X_OK) != 0)
        return usageError("--root", root, strerror(errno));
    return 0;
}

static int tickUse(const char *text)
{
    char *end = nullptr;
    long milliseconds = strtol(text, &end, 10);

    if (end == text || *end != '\0' || milliseconds < 1 || milliseconds > 60000)
        return usageError("--tick-ms", text, "not a number from 1 to 60000");
    ClockTickSet(static_cast<uint32_t>(milliseconds));
    return 0;
}

// Descriptors 0 to 2 are open before anything opens a file: a lock file on descriptor 0 would never be released.
static void standardStreamsOpen()
{
    int fd = open("/dev/null", O_RDWR);

    while (fd >= 0 && fd <= STDERR_FILENO)
        fd = open("/dev/null", O_RDWR);
    if (fd >= 0)
        close(fd);
}

// True to go on; otherwise the process ends with *status.
static bool optionsTake(int argc, char **argv, int *status)
{
    static const struct option options[] = {
        {"root", required_argument, nullptr, 'r'},
        {"tick-ms", required_argument, nullptr, 't'},
        {"help", no_argument, nullptr, 'h'},
        {"version", no_argument, nullptr, 'v'},
        {nullptr, 0, nullptr, 0},
    };
    *status = 0;
    opterr = 0;
    for (;;) {
        const char *asked = argv[optind]; // optind stays at a cluster of letters until its last one
        int option = getopt_long(argc, argv, "+:", options, nullptr);
        if (option == -1)
            break;
        switch (option) {
        case 'r':
            *status = rootUse(optarg);
            break;
        case 't':
            *status = tickUse(optarg);
            break;
        case 'h':
            fputs(usageText, stdout);
            return false;
        case 'v':
            puts("devmgr " DEVMGR_VERSION);
            return false;
        case ':':
            *status = usageError("option", asked, "needs a value (see --help)");
            break;
        default:
            *status = usageError("option", asked, "unknown (see --help)");
            break;
        }
        if (*status != 0)
            return false;
    }
    if (optind < argc) {
        *status = usageError("argument", argv[optind], "not expected (see --help)");
        return false;
    }
    return true;
}

int main(int argc, char **argv)
{
    int status = EXIT_FAILURE;

    standardStreamsOpen();
    if (PathsInit(nullptr, nullptr) != 0 || !optionsTake(argc, argv, &status))
        return status;
    documentsRegister();
    accountStart(accountFileWrite, REFRESH_PERIOD);
    return DmMain(dmTaskTable);
}
