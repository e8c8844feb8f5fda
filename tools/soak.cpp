// soak.cpp - days of the refresh cycle in one process, on a clock that is moved: does anything pile up?
//
// Plays the websocket server as well: it empties the change list after every cycle, reads what was announced, and must
// hold what the cache holds at the end. One hour runs at the most talkative log level. What is judged after the first
// hour (when every item has run twice and every buffer has its size): memory, descriptors, files, error lines.

#include "harness.h"

#include "documents.h"
#include "progress.h"
#include "restcache/cycle.h"
#include "runtime/clock.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/sql.h"

#include <algorithm>
#include <chrono>
#include <control.h>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <sys/syscall.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool MEMORY_TELLS = false; // freed blocks are kept back
#else
constexpr bool MEMORY_TELLS = true;
#endif

constexpr unsigned HOUR = 120; // cycles
constexpr unsigned DEFAULT_CYCLES = 7 * 24 * HOUR;
constexpr double CYCLE_SECONDS = 30;
constexpr unsigned FIBER_REQUEST_PERIOD = 10; // cycles between two requests of another process
constexpr double MEMORY_GROWTH_MAX = 0.01;
constexpr size_t LOG_LEFT_SIZE = 1048576 - 8192; // of an earlier run's log: it will be rotated soon

// Error lines at the start: every place of a stack is asked for, also where no unit is.
constexpr const char *START_ERROR = "[stackUnitMgrPreconfigModelIdGet:";

using NAMES_T = std::set<std::string>;

struct MEASURE_T {
    size_t residentKiB;
    size_t heapBytes; // handed out
    size_t descriptors;
};

// The log as it grows, over its rotations.
struct LOG_READER_T {
    ino_t inode;
    size_t offset;
    unsigned rotations;
    unsigned errors;
};

struct SOAK_T {
    unsigned cycles;
    unsigned cycle;   // the one that runs
    unsigned settled; // cycles after which nothing may grow: an hour, half of a short run; as many again talk
    unsigned findings;
    unsigned changes;
    RECORDS_T followed; // what a reader of the change list holds
    LOG_READER_T log;
    NAMES_T hourFiles; // after the first hour
    MEASURE_T hour;
    MEASURE_T end;
};

static volatile sig_atomic_t signalsSeen;

static void signalCount(int)
{
    signalsSeen = signalsSeen + 1;
}

static bool begin(const std::string &root, const std::string &scenario)
{
    documentsRegister();
    if (!switchUse(root, scenario))
        return false;
    vsFaultsClear(); // a fault of the scenario would be an announced error; here there is none
    textWrite(PathGet(PATH_LOG), std::string(LOG_LEFT_SIZE, '\n'));
    textWrite(PathGet(PATH_LOG_OLD), "of long ago\n");
    processBegin();
    signal(SIGINT, signalCount);
    textWrite(PathGet(PATH_WS_PID), std::to_string(getpid()) + " " + std::to_string(syscall(SYS_gettid)) + "\n");
    initCompleteWrite();
    startDocumentsWrite();
    return true;
}

static NAMES_T filesList()
{
    std::string root = PathGet(PATH_REST_DB);
    NAMES_T files;

    root.resize(root.size() - strlen("/tmp/restapi_db"));
    for (const auto &entry : std::filesystem::recursive_directory_iterator(root))
        files.insert(entry.path());
    return files;
}

static size_t residentKiB()
{
    std::string status = textRead("/proc/self/status");
    size_t at = status.find("VmRSS:");

    return at == std::string::npos ? 0 : strtoul(status.c_str() + at + strlen("VmRSS:"), nullptr, 10);
}

static MEASURE_T measureTake()
{
    std::filesystem::directory_iterator descriptors("/proc/self/fd");

    return {residentKiB(), mallinfo2().uordblks,
            static_cast<size_t>(std::distance(begin(descriptors), end(descriptors)))};
}

static void changesFollow(SOAK_T *soak)
{
    std::istringstream list(textRead(PathGet(PATH_REST_DELTA)));
    std::string name;
    NAMES_T names;

    (void)remove(PathGet(PATH_REST_DELTA)); // there is none when nothing changed
    while (std::getline(list, name))
        names.insert(name);
    soak->changes += static_cast<unsigned>(names.size());
    if (names.empty())
        return;
    RECORDS_T records = recordsRead();
    for (const std::string &changed : names) {
        auto record = records.find(changed);
        if (record == records.end())
            soak->followed.erase(changed);
        else
            soak->followed[changed] = record->second;
    }
}

static void finding(SOAK_T *soak, const char *format, ...)
{
    va_list arguments;

    va_start(arguments, format);
    printf("soak: ");
    vprintf(format, arguments);
    printf("\n");
    va_end(arguments);
    soak->findings++;
}

// Judge a log from an offset on; the offset of its end. A line at a time: a whole log would show in the memory that is
// measured.
static size_t logPart(SOAK_T *soak, PATH_ID path, size_t offset)
{
    std::ifstream text(PathGet(path), std::ios::binary);
    std::string line;

    text.seekg(static_cast<std::streamoff>(offset));
    while (std::getline(text, line)) {
        offset += line.size() + (text.eof() ? 0 : 1);
        bool announced = soak->cycle == 0 && line.find(START_ERROR) != std::string::npos;
        if (!announced && line.find(" (ERROR): ") != std::string::npos && soak->log.errors++ < 10)
            finding(soak, "error line: %s", line.c_str());
    }
    return offset;
}

static void logFollow(SOAK_T *soak)
{
    LOG_READER_T *log = &soak->log;
    struct stat status = {};

    if (stat(PathGet(PATH_LOG), &status) != 0)
        return;
    if (log->inode != 0 && status.st_ino != log->inode) {
        (void)logPart(soak, PATH_LOG_OLD, log->offset);
        log->offset = 0;
        log->rotations++;
    }
    log->inode = status.st_ino;
    log->offset = logPart(soak, PATH_LOG, log->offset);
}

static void cycleRun(SOAK_T *soak)
{
    if (soak->cycle == soak->settled || soak->cycle == 2 * soak->settled)
        textWrite(PathGet(PATH_LOG_LEVEL), soak->cycle == soak->settled ? "7" : "6");
    if (soak->cycle % FIBER_REQUEST_PERIOD == 0)
        textWrite(PathGet(PATH_FIBER_REQUEST), std::to_string(ClockSeconds()));
    GetAllRestApiData();
    changesFollow(soak);
    logFollow(soak);
    timeMove(CYCLE_SECONDS);
}

static void growthJudge(SOAK_T *soak, const char *what, size_t before, size_t after)
{
    if (static_cast<double>(after) > static_cast<double>(before) * (1 + MEMORY_GROWTH_MAX))
        finding(soak, "%s grew from %zu to %zu", what, before, after);
}

// What stands under the root after long is what stood there, and has a fixed name: one that carries a number is an
// output file that somebody forgot.
static void filesJudge(SOAK_T *soak)
{
    const NAMES_T files = filesList();
    const NAMES_T changing = {PathGet(PATH_LOG), PathGet(PATH_LOG_OLD), PathGet(PATH_REST_DELTA)};

    for (const std::string &file : files) {
        if (soak->hourFiles.count(file) == 0 && changing.count(file) == 0)
            finding(soak, "left behind: %s", file.c_str());
    }
    for (int id = PATH_SHOW_BOOTVAR; id < PATH_COUNT; id++) {
        const std::string path = PathGet(static_cast<PATH_ID>(id));
        for (const std::string &file : files) {
            if (file.size() > path.size() && file.compare(0, path.size(), path) == 0 && isdigit(file[path.size()]))
                finding(soak, "left behind: %s", file.c_str());
        }
    }
}

// The database is whole, every record says success, and a reader of the change list holds exactly what stands there.
static void cacheJudge(SOAK_T *soak)
{
    sqlite3 *opened = nullptr;
    int result = sqlite3_open_v2(PathGet(PATH_REST_DB), &opened, SQLITE_OPEN_READONLY, nullptr);
    OWNED_DB db(opened);
    OWNED_STATEMENT check;

    if (result != SQLITE_OK || sqlPrepare(db.get(), "PRAGMA integrity_check;", &check) != SQLITE_OK ||
        sqlStep(check) != SQLITE_ROW || sqlText(check, 0) != "ok")
        finding(soak, "the cache is damaged: %s", sqlite3_errmsg(db.get()));
    RECORDS_T records = recordsRead();
    for (const auto &[name, text] : records) {
        OWNED_JSON tree(cJSON_Parse(text.c_str()));
        cJSON *code = cJSON_GetObjectItem(cJSON_GetObjectItem(tree.get(), "resp"), "respCode");
        if (!cJSON_IsNumber(code) || code->valueint != 0)
            finding(soak, "%s does not say success: %.100s", name.c_str(), text.c_str());
        if (soak->followed[name] != text)
            finding(soak, "%s differs from what its reader holds", name.c_str());
    }
    if (records.empty() || soak->followed.size() != records.size())
        finding(soak, "%zu records, a reader holds %zu", records.size(), soak->followed.size());
}

static void judge(SOAK_T *soak)
{
    if (MEMORY_TELLS && soak->settled == HOUR) { // items with a period of half an hour are new in a short run
        growthJudge(soak, "resident memory", soak->hour.residentKiB, soak->end.residentKiB);
        growthJudge(soak, "the heap", soak->hour.heapBytes, soak->end.heapBytes);
    }
    if (soak->end.descriptors != soak->hour.descriptors)
        finding(soak, "%zu descriptors, %zu before", soak->end.descriptors, soak->hour.descriptors);
    if (soak->log.rotations == 0)
        finding(soak, "the log was never rotated");
    filesJudge(soak);
    cacheJudge(soak);
}

int main(int argc, char **argv)
{
    SOAK_T soak = {};
    // blocks that a thread keeps back would count as handed out
    if (MEMORY_TELLS && getenv("GLIBC_TUNABLES") == nullptr) {
        setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);
        (void)execv("/proc/self/exe", argv); // it goes on here when that fails
    }
    soak.cycles = argc > 2 ? static_cast<unsigned>(strtoul(argv[2], nullptr, 10)) : DEFAULT_CYCLES;
    soak.settled = std::min(HOUR, soak.cycles / 2);
    if (argc < 2 || argc > 3 || soak.cycles < 2) {
        fputs("usage: soak SCENARIO [CYCLES]\n", stderr);
        return 2;
    }
    std::string root = rootSeed(argv[1]);
    if (root.empty() || !begin(root, argv[1])) {
        rootRemove(root);
        return 2;
    }
    auto started = std::chrono::steady_clock::now();
    for (; soak.cycle < soak.cycles; soak.cycle++) {
        if (soak.cycle == soak.settled) {
            soak.hourFiles = filesList(); // first: the names stay in memory
            soak.hour = measureTake();
        }
        cycleRun(&soak);
        progressSay("soak: %u of %u cycles, %u findings", soak.cycle + 1, soak.cycles, soak.findings);
    }
    soak.end = measureTake();
    std::chrono::duration<double> took = std::chrono::steady_clock::now() - started;
    judge(&soak);
    printf("soak: %u cycles (%.1f days) in %.1f s, %.2f ms each; %u changes, %d signals, log rotated %u times\n",
           soak.cycles, soak.cycles * CYCLE_SECONDS / 86400, took.count(), took.count() * 1000 / soak.cycles,
           soak.changes, static_cast<int>(signalsSeen), soak.log.rotations);
    printf("soak: resident %zu KiB then %zu KiB, heap %zu then %zu bytes, descriptors %zu then %zu; %u findings\n",
           soak.hour.residentKiB, soak.end.residentKiB, soak.hour.heapBytes, soak.end.heapBytes, soak.hour.descriptors,
           soak.end.descriptors, soak.findings);
    rootRemove(root);
    return soak.findings == 0 ? 0 : 1;
}
