// kills.cpp - kills the daemon while it writes, again and again, and looks at what a whole cycle makes of what is left.
//
// Two scenarios take turns at a frozen time, so that each start rewrites every document and each document has two right
// texts. Half of the kills come just before the n-th write to the cache file, the others a moment after a name was
// announced. Now and then one whole cycle may end; then every record must be that of a clean run, and announced.

#include "progress.h"
#include "proof.h"

#include <cstdlib>
#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

constexpr unsigned CHECK_EVERY = 10;
constexpr unsigned ANNOUNCED_MAX = 25;
static const char SCENARIOS[] = DEVMGR_SOURCE_DIR "/platform/virtual/scenarios/";
static const char *const turns[] = {"studio-52", "two-port"};

struct TALLY_T {
    unsigned atWrite = 0, atInstant = 0, late = 0; // late: the cycle ended before the kill
    unsigned setAside = 0, deleted = 0;            // by the daemon
    unsigned checks = 0, failures = 0;
    unsigned wanted = 1000; // kills
};

static std::string root, db;
static RECORDS_T clean[2];
static std::set<std::string> clockNames;     // their texts follow the time of day
static unsigned writesOfRun[2] = {300, 300}; // to the cache file, about
static TALLY_T tally;

static std::string path(const char *name)
{
    return root + "/tmp/" + name;
}

static void failed(const std::string &what)
{
    tally.failures++;
    printf("FAILED: %s\n", what.c_str());
}

static bool rootMake()
{
    char name[] = "/tmp/dk_XXXXXX";

    if (mkdtemp(name) == nullptr)
        return false;
    root = name;
    db = path("restapi_db");
    std::string command = std::string("/usr/bin/python3 " DEVMGR_SOURCE_DIR "/tools/seed.py --few-ouis --log-level 7"
                                      " --scenario ") +
                          SCENARIOS + turns[0] + ".json --cache " + root + " " + root + " >/dev/null";
    return system(command.c_str()) == 0;
}

static pid_t start(unsigned turn, unsigned killAt)
{
    std::vector<std::string> variables = {"VSWITCH_TIME=600",
                                          std::string("VSWITCH_SCENARIO=") + SCENARIOS + turns[turn] + ".json"};
    if (killAt != 0) {
        variables.push_back("LD_PRELOAD=" KILL_LIBRARY);
        variables.push_back("PROOF_KILL_FILE=" + db);
        variables.push_back("PROOF_KILL_AT=" + std::to_string(killAt));
        variables.push_back("ASAN_OPTIONS=verify_asan_link_order=0");
    }
    return daemonStart(root, variables, "60000"); // no second cycle, which the end could break off
}

static bool cycleEnded()
{
    return fileRead(path("tk830.log")).find("] GetAllRestApiData() End") != std::string::npos;
}

// The log of one run is counted and removed.
static void logTake()
{
    std::istringstream log(fileRead(path("tk830.log")));

    for (std::string line; std::getline(log, line);) {
        tally.setAside += line.find("[restDbSetAside:") != std::string::npos;
        tally.deleted += line.find("[restDbCheck:") != std::string::npos;
    }
    (void)unlink(path("tk830.log").c_str());
}

static void killsProgress()
{
    progressSay("kills: %u of %u, %u cycles compared", tally.atWrite + tally.atInstant, tally.wanted, tally.checks);
}

static void wholeCycle(unsigned turn)
{
    double limit = steadySeconds() + HANG;
    pid_t daemon = start(turn, 0);

    while (!cycleEnded()) {
        killsProgress();
        if (steadySeconds() > limit || ended(daemon)) {
            failed("the first cycle does not end");
            break;
        }
        usleep(2000);
    }
    end(daemon, SIGTERM);
    logTake();
}

// Texts of a run that nobody disturbs; twice each, at another time of day.
static void cleanRuns()
{
    for (unsigned turn = 0; turn < 2; turn++) {
        for (int again = 0; again < 2; again++) {
            RECORDS_T records;
            (void)unlink(db.c_str());
            wholeCycle(turn);
            if (recordsRead(db, &records) != SQLITE_DONE)
                failed("a clean run leaves no cache");
            for (const auto &[name, text] : records) {
                if (again == 1 && clean[turn][name] != text)
                    clockNames.insert(name);
            }
            clean[turn] = records;
            usleep(1100 * 1000);
        }
    }
    std::string names;
    for (const std::string &name : clockNames)
        names += " " + name;
    printf("%zu documents; those with the time of day in them:%s\n", clean[0].size(), names.c_str());
}

// Kill it before its n-th write to the cache, or at a random moment after it has announced so many names.
static void killOnce(unsigned round)
{
    unsigned turn = round % 2, killAt = round % 4 < 2 ? 1 + roll(writesOfRun[turn]) : 0;
    bool atWrite = killAt != 0;
    struct stat list;
    unsigned announced = 0, wanted = 1 + roll(ANNOUNCED_MAX);
    off_t size = 0;
    bool late = false;

    (void)unlink(path("rest_db_api_delta.txt").c_str());
    pid_t daemon = start(turn, killAt);
    for (unsigned looks = 1; !ended(daemon) && announced < wanted && !late; looks++) {
        killsProgress();
        if (!atWrite && stat(path("rest_db_api_delta.txt").c_str(), &list) == 0 && list.st_size != size) {
            size = list.st_size;
            announced++;
        }
        if (atWrite)
            usleep(1000);
        late = looks % (atWrite ? 4 : 4000) == 0 && cycleEnded();
    }
    if (!atWrite) {
        double until = steadySeconds() + roll(400) / 1e6;
        while (steadySeconds() < until) {
        }
    }
    end(daemon, SIGKILL);
    if (late && atWrite)
        writesOfRun[turn] -= (writesOfRun[turn] - killAt) / 8;
    (late ? tally.late : atWrite ? tally.atWrite : tally.atInstant)++;
    logTake();
}

static std::set<std::string> announcedNames()
{
    std::istringstream list(fileRead(path("rest_db_api_delta.txt")));
    std::set<std::string> names;

    for (std::string line; std::getline(list, line);)
        names.insert(line);
    return names;
}

static void checkCycle(unsigned round)
{
    RECORDS_T before, after;
    std::string at = " after kill " + std::to_string(round);

    (void)recordsRead(db, &before); // as far as it can be read
    (void)unlink(path("rest_db_api_delta.txt").c_str());
    wholeCycle(0);
    if (recordsRead(db, &after) != SQLITE_DONE)
        failed("the cache cannot be read" + at);
    std::set<std::string> announced = announcedNames();
    for (const auto &[name, text] : clean[0]) {
        bool right =
            after.count(name) != 0 && (clockNames.count(name) != 0 ? parses(after[name]) : after[name] == text);
        if (!right)
            failed(name + " is not that of a clean run" + at);
        if (before[name] != after[name] && announced.count(name) == 0)
            failed(name + " changed and is not announced" + at);
    }
    for (const auto &[name, text] : after) {
        if (clean[0].count(name) + clean[1].count(name) == 0)
            failed(name + " is nobody's record" + at);
    }
    tally.checks++;
}

int main(int argc, char **argv)
{
    tally.wanted = argc > 1 ? static_cast<unsigned>(strtoul(argv[1], nullptr, 10)) : 1000;
    std::error_code ignored; // a temporary folder that cannot be removed harms nobody

    setvbuf(stdout, nullptr, _IOLBF, 0);
    if (!rootMake()) {
        fputs("kills: the root cannot be made\n", stderr);
        return 1;
    }
    cleanRuns();
    for (unsigned round = 1; tally.atWrite + tally.atInstant < tally.wanted && tally.failures == 0; round++) {
        killOnce(round);
        if (round % CHECK_EVERY == 0)
            checkCycle(round);
    }
    checkCycle(tally.wanted);
    printf("kills: %u before a write to the cache file, %u at a random moment after an announcement, %u more after the"
           " first cycle; the daemon set %u files aside and deleted %u records; %u whole cycles compared with a clean"
           " run: %u failures\n",
           tally.atWrite, tally.atInstant, tally.late, tally.setAside, tally.deleted, tally.checks, tally.failures);
    if (tally.failures == 0)
        std::filesystem::remove_all(root, ignored);
    else
        printf("the root stays for a look: %s\n", root.c_str());
    return tally.failures == 0 ? 0 : 1;
}
