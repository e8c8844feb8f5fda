#include "restcache/notify.h"

// The change list and the id file lie in a folder of everyone's. The list is the daemon's own; the ids are another
// program's, and are trusted only as far as whoever left them could have sent the signal himself.

#include "restcache/connection.h"
#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/ownfile.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "runtime/sql.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

int restDbChanged;

static void changedReset()
{
    restDbChanged = 0;
}
static PROCESS_STATE_T changedState(changedReset);

// One line, in one write, so that a reader who renames the list between two lines loses nothing.
bool restDbAnnounce(const char *apiName)
{
    const char *path = PathGet(PATH_REST_DELTA);
    struct stat status;

    // whatever is no file of the daemon's would freeze the cache; what stays there does not open
    if (lstat(path, &status) == 0 && !fileIsOwn(status) && ownFileClear(path) && !fileIsForeign(status))
        restDbNamesAnnounce(); // perhaps the list itself, to which somebody has made a link: its names were not read
    OWNED_FD_T list(ownFileOpen(path, O_APPEND, 0666));
    size_t length = strlen(apiName) + 1;
    OWNED_TEXT line(static_cast<char *>(malloc(length + 1)));

    if (list.fd < 0 || line == nullptr || (!fileEndsInLineEnd(list.fd) && !fileAppend(list.fd, "\n", 1)))
        return false;
    snprintf(line.get(), length + 1, "%s\n", apiName);
    return fileAppend(list.fd, line.get(), length);
}

void restDbNamesAnnounce()
{
    // A damaged file may give anything: no index, and an end.
    const char *sql = "SELECT api_name FROM restapi_db NOT INDEXED LIMIT 10000;";
    OWNED_DB db;
    OWNED_STATEMENT select;

    if (restDbOpen(SQLITE_OPEN_READONLY, &db) != SQLITE_OK || sqlPrepare(db.get(), sql, &select) != SQLITE_OK)
        return; // often there is nothing left to read
    while (sqlStep(select) == SQLITE_ROW) {
        std::string_view name = sqlText(select, 0);
        if (isListable(name))
            (void)restDbAnnounce(name.data());
    }
}

bool isListable(std::string_view name)
{
    return !name.empty() && name.size() < RESTDB_NAME_SIZE &&
           std::all_of(name.begin(), name.end(), [](char character) { return character > ' ' && character <= '~'; });
}

// The next decimal number of a line. One beyond int becomes 0, an id that is never signalled.
static bool idRead(const char **cursor, int *id)
{
    char *end = nullptr;
    long value = strtol(*cursor, &end, 10);

    if (end == *cursor)
        return false;
    *cursor = end;
    *id = value >= INT_MIN && value <= INT_MAX ? static_cast<int>(value) : 0;
    return true;
}

// SIGINT means something to every process, to the first one a restart of the switch: whoever left the ids must be root,
// the daemon's user, or the owner of the process. Whoever laid a link has left what it leads to.
static bool signalAllowed(FILE *ids, int process)
{
    char path[32];
    struct stat file, named, owner;

    if (fstat(fileno(ids), &file) != 0 || lstat(PathGet(PATH_WS_PID), &named) != 0)
        return false;
    const struct stat &left = fileIsForeign(named) ? named : file;
    snprintf(path, sizeof(path), "/proc/%d", process);
    if (!fileIsForeign(left) ? !fileIsLaid(left) : stat(path, &owner) != 0 || owner.st_uid == left.st_uid)
        return true; // it may have gone: nothing is hit then
    LOG_ERROR_AS("send_signal_to_ws", "%s belongs to another user than process %d, not signalled\n",
                 PathGet(PATH_WS_PID), process);
    return false;
}

void send_signal_to_ws()
{
    const char *path = PathGet(PATH_WS_PID);
    char line[32] = "";
    const char *cursor = line;
    int process = 0;
    int thread = 0;

    if (access(path, F_OK) != 0)
        return;
    OWNED_FILE ids(fileOpenRead(path));
    if (ids == nullptr) {
        LOG_ERROR("%s(): Unable to open file\n", __func__);
        return;
    }
    if (fgets(line, sizeof(line), ids.get()) == nullptr)
        return;
    if (!idRead(&cursor, &process) || !idRead(&cursor, &thread))
        LOG_ERROR("%s(): Failed to parse integers from the file.\n", __func__);
    if (process != 0 && thread != 0 && signalAllowed(ids.get(), process))
        (void)syscall(SYS_tgkill, process, thread, SIGINT); // the server may have gone; the next one reads the cache
}

void changesSignal()
{
    if (restDbChanged == 0)
        return;
    send_signal_to_ws();
    restDbChanged = 0;
}
