#include "harness.h"

// Stands between the tools that judge documents (goldens, sweep, bench) and the daemon's rooms. The time of day moves
// with the waiting that the daemon does; the switch's time stands still but for timeMove.

#include "restcache/cycle.h"
#include "restcache/store.h"
#include "runtime/clock.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "runtime/sql.h"
#include "switch/session.h"

#include <control.h>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <model.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>

static int64_t sleptMilliseconds;
static double frozenSeconds;

// In memory, where there is such a folder: thousands of runs make and remove their files.
static std::string rootMake()
{
    for (const char *folder : {"/dev/shm", "/tmp"}) { // a root is short
        std::string name = folder + std::string("/dm_XXXXXX");
        if (mkdtemp(&name[0]) != nullptr)
            return name;
    }
    perror("mkdtemp");
    return "";
}

static bool programRun(const std::vector<std::string> &arguments)
{
    std::vector<char *> argv;
    posix_spawn_file_actions_t actions;
    pid_t child;
    int status = -1;

    for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    bool started = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    return started && waitpid(child, &status, 0) == child && status == 0;
}

std::string rootSeed(const std::string &scenario)
{
    std::string root = rootMake();

    if (root.empty() || programRun({"/usr/bin/python3", DEVMGR_SOURCE_DIR "/tools/seed.py", "--few-ouis", "--scenario",
                                    scenario, "--cache", root, root}))
        return root;
    fprintf(stderr, "seed.py failed for %s\n", scenario.c_str());
    rootRemove(root);
    return "";
}

std::string rootCopy(const std::string &root)
{
    std::string copy = rootMake();
    std::error_code error;

    if (copy.empty())
        return "";
    std::filesystem::copy(root, copy, std::filesystem::copy_options::recursive, error);
    if (!error)
        return copy;
    fprintf(stderr, "%s: %s\n", root.c_str(), error.message().c_str());
    rootRemove(copy);
    return "";
}

void rootRemove(const std::string &root)
{
    std::error_code ignored; // a temporary folder that cannot be removed harms nobody

    if (!root.empty())
        std::filesystem::remove_all(root, ignored);
}

static void timeNow(struct timespec *now)
{
    int64_t milliseconds = static_cast<int64_t>(frozenSeconds * 1000) + sleptMilliseconds;

    now->tv_sec = static_cast<time_t>(vsState().epoch + milliseconds / 1000);
    now->tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
}

static void timeSleep(uint32_t milliseconds)
{
    sleptMilliseconds += milliseconds;
}
static const CLOCK_SOURCE_T frozenClock = {timeNow, timeSleep};

bool switchUse(const std::string &root, const std::string &scenario, double seconds)
{
    if (PathsInit(root.c_str(), nullptr) != 0) {
        fprintf(stderr, "%s: too long for a root\n", root.c_str());
        return false;
    }
    if (!scenario.empty()) {
        std::string error = vsLoadFile(scenario);
        if (!error.empty()) {
            fprintf(stderr, "%s\n", error.c_str());
            return false;
        }
        timeSet(seconds);
    }
    ClockSourceSet(&frozenClock);
    return true;
}

std::string scenarioBegin(const std::string &scenario)
{
    std::string root = rootSeed(scenario);

    if (root.empty() || !switchUse(root, scenario)) {
        rootRemove(root);
        return "";
    }
    processBegin();
    documentsRunAll();
    return root;
}

void timeSet(double seconds)
{
    frozenSeconds = seconds;
    vsClockSet(seconds);
}

void timeMove(double seconds)
{
    timeSet(frozenSeconds + seconds);
}

void processBegin()
{
    processStateReset();
    LogInit(LOG_OPTION_FILE, 8, "devmgr");
    sleptMilliseconds = 0;
    // Failures show as documents that are not there.
    (void)initHandler("documents", monitorClientHandle());
    (void)restapi_db_operation(REST_DB_CREATE, nullptr, nullptr);
    // Items that wait for another process to ask are asked for.
    textWrite(PathGet(PATH_FIBER_REQUEST), std::to_string(ClockSeconds()));
}

std::vector<DOCUMENT_T> documentsListed()
{
    std::vector<DOCUMENT_T> listed;

    for (const DOCUMENT_T &row : documentTable()) {
        if (row.start != START_MARK)
            listed.push_back(row);
    }
    return listed;
}

void documentRun(const DOCUMENT_T &row)
{
    cycleRow(*documentFind(row.name));
}

void documentsRunAll()
{
    initCompleteWrite();
    startDocumentsWrite();
    GetAllRestApiData();
    for (const DOCUMENT_T &row : documentsListed()) {
        if (!documentIsInCycle(row))
            documentRun(row);
    }
}

static OWNED_DB cacheOpen()
{
    sqlite3 *opened = nullptr;

    if (sqlite3_open(PathGet(PATH_REST_DB), &opened) != SQLITE_OK)
        fprintf(stderr, "%s: %s\n", PathGet(PATH_REST_DB), sqlite3_errmsg(opened));
    sqlite3_exec(opened, "PRAGMA synchronous = OFF;", nullptr, nullptr, nullptr);
    return OWNED_DB(opened);
}

RECORDS_T recordsRead()
{
    RECORDS_T records;
    OWNED_DB db = cacheOpen();
    OWNED_STATEMENT select;

    if (sqlPrepare(db.get(), "SELECT api_name, data FROM restapi_db;", &select) != SQLITE_OK)
        return records;
    while (sqlStep(select) == SQLITE_ROW)
        records[std::string(sqlText(select, 0))] = sqlText(select, 1);
    return records;
}

static void cacheRun(sqlite3 *db, const char *sql, std::initializer_list<const char *> texts)
{
    OWNED_STATEMENT statement;

    if (sqlPrepare(db, sql, &statement) != SQLITE_OK || sqlBind(statement, texts) != SQLITE_OK ||
        sqlStep(statement) != SQLITE_DONE)
        fprintf(stderr, "%s: %s\n", sql, sqlite3_errmsg(db));
}

void recordsWrite(const RECORDS_T &records)
{
    OWNED_DB db = cacheOpen();

    cacheRun(db.get(), "BEGIN;", {});
    cacheRun(db.get(), "DELETE FROM restapi_db;", {});
    for (const auto &[name, data] : records)
        cacheRun(db.get(), "INSERT INTO restapi_db (api_name, data) VALUES (?, ?);", {name.c_str(), data.c_str()});
    cacheRun(db.get(), "COMMIT;", {});
}

void recordsDelete(const std::vector<std::string> &names)
{
    OWNED_DB db = cacheOpen();

    for (const std::string &name : names)
        cacheRun(db.get(), "DELETE FROM restapi_db WHERE api_name = ?;", {name.c_str()});
}

std::string textRead(const std::string &path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;

    text << stream.rdbuf();
    return text.str();
}

void textWrite(const std::string &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}
