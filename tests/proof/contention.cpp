// contention.cpp - the daemon, two more writers and eight readers on one cache.
//
// The writers take the names' locks as the daemon does. Names of their own, and names that the daemon's cycle rebuilds.
// Under its lock a record must be what was just written; at the end the record of each own name is that of its last
// writer, its change-list lines are as many as were written, and the daemon has rebuilt its own. Nobody may stand
// still.

#include "change_list.h"
#include "progress.h"
#include "proof.h"
#include "restcache/lock.h"
#include "restcache/notify.h"
#include "restcache/store.h"
#include "runtime/log.h"
#include "runtime/paths.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <sys/mman.h>
#include <unistd.h>

constexpr unsigned WRITERS = 2, READERS = 8, OWN_NAMES = 16;
constexpr unsigned TIMES_MAX = 1 << 20; // read times kept of each reader

// Rebuilt by the cycle at least every sixth time, and each under its lock.
static const char *const daemonNames[] = {
    "device_health", "swcfg_poe",       "sw_lag_cfg_ex",     "radius_config",     "logging",         "scheduleList",
    "sw_ptp_cfg",    "profile/list_ex", "multicast_mode_ex", "sw_auto_trunk_cfg", "sw_portmirroring"};
constexpr unsigned NAMES = OWN_NAMES + std::size(daemonNames);

// Last write and number of announcements of a name: kept under its lock.
struct NAME_T {
    unsigned writer, number, lines;
};

struct SHARED_T {
    std::atomic<bool> stop{false};
    NAME_T names[NAMES] = {};
    std::atomic<unsigned> writes[WRITERS] = {}, busy{0}, lost{0}, mixed{0}, errors{0}, readErrors{0};
    std::atomic<unsigned> reads[READERS] = {};
    unsigned microseconds[READERS][TIMES_MAX];
};
static SHARED_T *shared;

static std::string nameOf(unsigned index)
{
    return index < OWN_NAMES ? "contention/" + std::to_string(index) : daemonNames[index - OWN_NAMES];
}

static std::string textOf(unsigned writer, unsigned number)
{
    return "{\"proof\":" + std::to_string(writer) + ",\"number\":" + std::to_string(number) + ",\"pad\":\"" +
           std::string(number * 7919 % 20000, static_cast<char>('a' + number % 26)) + "\"}";
}

static bool isProof(const std::string &text)
{
    return text.compare(0, 9, "{\"proof\":") == 0;
}

static bool whole(const std::string &text)
{
    unsigned writer = 0, number = 0;

    if (!isProof(text))
        return parses(text);
    return sscanf(text.c_str(), "{\"proof\":%u,\"number\":%u,", &writer, &number) == 2 &&
           text == textOf(writer, number);
}

static void writeOne(unsigned writer, unsigned number)
{
    unsigned index = roll(NAMES);
    std::string name = nameOf(index), lockName = name, text = textOf(writer, number);
    RECORDS_T record;
    int lock = -1, result;

    std::replace(lockName.begin(), lockName.end(), '/', '_');
    if (rest_db_lock_acquire(lockName.c_str(), &lock) != 0) {
        shared->errors++;
        return;
    }
    do {
        result = restapi_db_operation(REST_DB_WRITE, name.c_str(), text.c_str());
        shared->names[index].lines++; // a write that met a locked database is announced too
        shared->busy += result == SQLITE_BUSY;
    } while (result == SQLITE_BUSY && !shared->stop);
    shared->errors += result != SQLITE_DONE && result != SQLITE_BUSY;
    if (result == SQLITE_DONE) {
        shared->names[index].writer = writer;
        shared->names[index].number = number;
        int read = recordsRead(PathGet(PATH_REST_DB), &record, name);
        shared->lost += read == SQLITE_DONE && record[name] != text;
        shared->readErrors += read != SQLITE_DONE;
    }
    rest_db_lock_release(lock);
    send_signal_to_ws();
    shared->writes[writer]++;
}

static void writer(unsigned which)
{
    for (unsigned number = 1; !shared->stop; number++)
        writeOne(which, number);
}

static void reader(unsigned which)
{
    while (!shared->stop) {
        RECORDS_T record;
        std::string name = nameOf(roll(NAMES));
        double begin = steadySeconds();
        int result = recordsRead(PathGet(PATH_REST_DB), &record, name);
        shared->microseconds[which][shared->reads[which] % TIMES_MAX] =
            static_cast<unsigned>((steadySeconds() - begin) * 1e6);
        shared->readErrors += result != SQLITE_DONE;
        shared->mixed += result == SQLITE_DONE && !record.empty() && !whole(record[name]);
        shared->reads[which]++;
        usleep(1000 + roll(4000));
    }
}

static pid_t spawn(void (*body)(unsigned), unsigned which)
{
    pid_t pid = fork();

    if (pid != 0)
        return pid;
    dice().seed(std::random_device{}());
    LogInit(0, 8, "proof"); // a locked database is expected
    body(which);
    _exit(0);
}

static bool rootMake(char *root)
{
    if (mkdtemp(root) == nullptr || PathsInit(root, nullptr) != 0)
        return false;
    std::string command = std::string("/usr/bin/python3 " DEVMGR_SOURCE_DIR "/tools/seed.py --few-ouis --scenario ") +
                          DEVMGR_SOURCE_DIR "/platform/virtual/scenarios/studio-52.json --cache " + root + " " + root +
                          " >/dev/null";
    return system(command.c_str()) == 0 && restapi_db_operation(REST_DB_CREATE, nullptr, nullptr) == 0;
}

// Lines of the change list so far, by name.
static void linesCount(CHANGE_LIST_T *list, std::map<std::string, unsigned> *lines)
{
    for (const auto &[name, fresh] : changeListLook(list, true, steadySeconds()))
        (*lines)[name] += fresh;
}

// Everything runs for so long; false when a writer or a reader does not get on.
static bool runFor(double seconds, CHANGE_LIST_T *list, std::map<std::string, unsigned> *lines)
{
    double until = steadySeconds() + seconds, movedAt[WRITERS + READERS];
    unsigned last[WRITERS + READERS] = {};

    std::fill(std::begin(movedAt), std::end(movedAt), steadySeconds());
    while (steadySeconds() < until) {
        usleep(100000);
        linesCount(list, lines);
        progressSay("contention: %.0f of %.0f s", seconds - (until - steadySeconds()), seconds);
        for (unsigned i = 0; i < WRITERS + READERS; i++) {
            unsigned count = i < WRITERS ? shared->writes[i] : shared->reads[i - WRITERS];
            if (count != last[i])
                movedAt[i] = steadySeconds();
            else if (steadySeconds() - movedAt[i] > HANG)
                return false;
            last[i] = count;
        }
    }
    return true;
}

static bool workersEnd(const std::vector<pid_t> &workers)
{
    double limit = steadySeconds() + HANG;
    bool all = true;

    shared->stop = true;
    for (pid_t worker : workers) {
        while (!ended(worker) && steadySeconds() < limit)
            usleep(10000);
        all &= ended(worker);
        end(worker, SIGKILL);
    }
    return all;
}

// Names whose record or lines are not what they must be.
static unsigned wrongNames(const RECORDS_T &records, const std::map<std::string, unsigned> &lines)
{
    unsigned wrong = 0;

    for (unsigned index = 0; index < NAMES; index++) {
        const NAME_T &name = shared->names[index];
        auto record = records.find(nameOf(index));
        auto line = lines.find(nameOf(index));
        std::string text = record == records.end() ? "" : record->second;
        unsigned count = line == lines.end() ? 0 : line->second;
        bool right = index < OWN_NAMES
                         ? count == name.lines && (name.number == 0 || text == textOf(name.writer, name.number))
                         : count > name.lines && !isProof(text) && parses(text);
        if (!right)
            printf("%s: %u lines of %u, %.60s\n", nameOf(index).c_str(), count, name.lines, text.c_str());
        wrong += !right;
    }
    return wrong;
}

static bool daemonRebuilt()
{
    RECORDS_T records;
    bool all = recordsRead(PathGet(PATH_REST_DB), &records) == SQLITE_DONE;

    for (const char *name : daemonNames)
        all &= records.count(name) != 0 && !isProof(records[name]);
    return all;
}

// Error lines of the daemon's store; that the database was locked is none.
static unsigned daemonErrors()
{
    std::istringstream log(fileRead(PathGet(PATH_LOG_OLD)) + fileRead(PathGet(PATH_LOG)));
    unsigned errors = 0;

    for (std::string line; std::getline(log, line);) {
        bool store = line.find(": [rest") != std::string::npos || line.find(": [send_signal") != std::string::npos;
        if (line.find("(ERROR)") == std::string::npos || !store || line.find("is locked") != std::string::npos)
            continue;
        puts(line.c_str());
        errors++;
    }
    return errors;
}

static void timesPrint()
{
    std::vector<unsigned> times;

    for (unsigned i = 0; i < READERS; i++)
        times.insert(times.end(), shared->microseconds[i],
                     shared->microseconds[i] + std::min(shared->reads[i].load(), TIMES_MAX));
    std::sort(times.begin(), times.end());
    if (times.empty())
        return;
    printf(
        "read of a record among %u writers and %u readers | %zu reads | median %.2f ms | p99 %.2f ms | max %.1f ms\n",
        WRITERS + 1, READERS, times.size(), times[times.size() / 2] / 1e3, times[times.size() * 99 / 100] / 1e3,
        times.back() / 1e3);
}

int main(int argc, char **argv)
{
    double seconds = argc > 1 ? strtod(argv[1], nullptr) : 600;
    char root[] = "/tmp/dc_XXXXXX";
    CHANGE_LIST_T list;
    std::map<std::string, unsigned> lines;
    std::vector<pid_t> workers;
    RECORDS_T records;
    std::error_code ignored; // a temporary folder that cannot be removed harms nobody

    shared = new (mmap(nullptr, sizeof(SHARED_T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) SHARED_T;
    if (!rootMake(root)) {
        fputs("contention: the root cannot be made\n", stderr);
        return 1;
    }
    list.path = PathGet(PATH_REST_DELTA);
    pid_t daemon =
        daemonStart(root, {"VSWITCH_SCENARIO=" DEVMGR_SOURCE_DIR "/platform/virtual/scenarios/studio-52.json"});
    for (unsigned i = 0; i < WRITERS; i++)
        workers.push_back(spawn(writer, i));
    for (unsigned i = 0; i < READERS; i++)
        workers.push_back(spawn(reader, i));
    bool moving = runFor(seconds, &list, &lines);
    moving &= workersEnd(workers);
    for (double limit = steadySeconds() + HANG; !daemonRebuilt() && steadySeconds() < limit;)
        usleep(10000);
    bool alive = !ended(daemon);
    end(daemon, SIGTERM);
    linesCount(&list, &lines);
    int read = recordsRead(PathGet(PATH_REST_DB), &records);
    unsigned wrong = wrongNames(records, lines), errors = daemonErrors();
    bool good = moving && alive && read == SQLITE_DONE && wrong + errors + shared->lost + shared->mixed == 0 &&
                shared->errors + shared->readErrors == 0;

    printf(
        "contention: %.0f s, %u and %u writes (%u met a locked database), %u lost, %u mixed, %u names wrong; errors: %u"
        " of writers, %u of readers, %u of the daemon%s%s\n",
        seconds, shared->writes[0].load(), shared->writes[1].load(), shared->busy.load(), shared->lost.load(),
        shared->mixed.load(), wrong, shared->errors.load(), shared->readErrors.load(), errors,
        moving && alive ? "" : "; SOMEBODY STANDS STILL", good ? "" : ": FAILED");
    timesPrint();
    std::filesystem::remove_all(root, ignored);
    return good ? 0 : 1;
}
