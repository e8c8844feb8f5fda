#include "sweep.h"

// What must hold after each run, whatever the fault was: the checks look at the cache, the root and the process from
// outside and share nothing with the code that they judge but the paths.

#include "restcache/cycle.h"
#include "runtime/owned.h"
#include "runtime/paths.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sstream>
#include <sys/file.h>
#include <unistd.h>

constexpr unsigned RUN_LIMIT = 600; // seconds, under sanitizers on a busy machine; beyond it the run hangs

static std::string notRecovered(const CLEAN_T &clean, const RECORDS_T &now);
static void recordCheck(SWEEP_T *sweep, const std::string &name, const std::string &text);
static void locksCheck(SWEEP_T *sweep);

bool runWanted(SWEEP_T *sweep, const std::string &label)
{
    if (sweep->turn++ % sweep->every != 0)
        return false;
    snprintf(sweep->tally->at, sizeof(sweep->tally->at), "%s", label.c_str());
    sweep->tally->runs++;
    alarm(RUN_LIMIT);
    return true;
}

void runDetail(SWEEP_T *sweep, const std::string &detail)
{
    size_t length = strlen(sweep->tally->at);

    snprintf(sweep->tally->at + length, sizeof(sweep->tally->at) - length, "%s", detail.c_str());
}

void finding(SWEEP_T *sweep, const char *format, ...)
{
    char text[512];
    va_list arguments;

    va_start(arguments, format);
    vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    sweep->tally->findings++;
    printf("%s: %s\n", sweep->tally->at, text);
    fflush(stdout);
}

SNAPSHOT_T snapshotTake()
{
    std::filesystem::directory_iterator descriptors("/proc/self/fd");

    return {recordsRead(), rootFiles(), static_cast<size_t>(std::distance(begin(descriptors), end(descriptors)))};
}

RECORDS_T faultCheck(SWEEP_T *sweep, const SNAPSHOT_T &clean, const NAMES_T &mayDiffer)
{
    SNAPSHOT_T now = snapshotTake();
    NAMES_T announced = changesRead();

    for (const auto &[name, text] : now.records) {
        recordCheck(sweep, name, text);
        auto before = clean.records.find(name);
        if (before != clean.records.end() && before->second == text)
            continue;
        sweep->tally->changes++;
        if (announced.count(name) == 0)
            finding(sweep, "%s changed and was not announced", name.c_str());
        if (mayDiffer.count(name) == 0)
            finding(sweep, "%s changed: %s", name.c_str(),
                    before == clean.records.end() ? "new" : difference(text, before->second));
    }
    for (const auto &[name, text] : clean.records) {
        if (now.records.count(name) == 0 && mayDiffer.count(name) == 0)
            finding(sweep, "%s is gone", name.c_str());
    }
    for (const std::string &file : now.files) {
        if (clean.files.count(file) == 0)
            finding(sweep, "left behind: %s", file.c_str());
    }
    if (now.descriptors != clean.descriptors)
        finding(sweep, "%zu descriptors, %zu before", now.descriptors, clean.descriptors);
    locksCheck(sweep);
    return now.records;
}

NAMES_T changesRead()
{
    std::istringstream changes(textRead(PathGet(PATH_REST_DELTA)));
    NAMES_T names;
    std::string name;

    while (std::getline(changes, name))
        names.insert(name);
    return names;
}

CLEAN_T cleanTake(SWEEP_T *sweep, const DOCUMENT_T &document)
{
    CLEAN_T clean;

    snprintf(sweep->tally->at, sizeof(sweep->tally->at), "%s, clean", document.name);
    alarm(RUN_LIMIT);
    coldBegin();
    documentsRunAll();
    clean.snapshot = snapshotTake();
    recordsWrite({});
    coldBegin();
    documentRun(document);
    for (const auto &[name, text] : recordsRead()) {
        clean.own.insert(name);
        recordCheck(sweep, name, text);
        const std::string &among = clean.snapshot.records[name];
        if (among != text)
            finding(sweep, "%s built alone differs: %s", name.c_str(), difference(text, among));
    }
    if (clean.own.empty())
        finding(sweep, "writes no record");
    clean.due.assign(clean.own.begin(), clean.own.end());
    for (const DOCUMENT_T &other : documentsListed()) {
        if (strcmp(other.name, document.name) != 0)
            clean.due.erase(std::remove(clean.due.begin(), clean.due.end(), other.name), clean.due.end());
    }
    documentRun(document);
    clean.again = recordsRead();
    recordsWrite(clean.snapshot.records);
    return clean;
}

void recoveryCheck(SWEEP_T *sweep, const DOCUMENT_T &document, const CLEAN_T &clean, bool restartAllowed)
{
    recordsDelete(clean.due);
    documentRun(document);
    RECORDS_T now = recordsRead();
    std::string lacking = notRecovered(clean, now);
    if (!lacking.empty() && restartAllowed) {
        std::string before = lacking;
        coldBegin();
        documentRun(document);
        now = recordsRead();
        lacking = notRecovered(clean, now);
        if (lacking.empty()) {
            printf("%s: %s recovers with the next start only\n", sweep->tally->at, before.c_str());
            fflush(stdout);
        }
    }
    if (!lacking.empty())
        finding(sweep, "%s does not recover: %s", lacking.c_str(),
                difference(now[lacking], clean.snapshot.records.at(lacking)));
    if (!lacking.empty() || now.size() != clean.snapshot.records.size())
        recordsWrite(clean.snapshot.records);
}

// Name of a record that is neither as the first nor as the second clean build leaves it; "" when there is none.
static std::string notRecovered(const CLEAN_T &clean, const RECORDS_T &now)
{
    for (const std::string &name : clean.own) {
        auto text = now.find(name);
        auto again = clean.again.find(name);
        if (text == now.end() || (text->second != clean.snapshot.records.at(name) &&
                                  (again == clean.again.end() || text->second != again->second)))
            return name;
    }
    return "";
}

// A response: an object to the text's end, which carries its result.
static void recordCheck(SWEEP_T *sweep, const std::string &name, const std::string &text)
{
    OWNED_JSON tree(cJSON_ParseWithOpts(text.c_str(), nullptr, 1));

    if (tree == nullptr)
        finding(sweep, "%s does not parse: %.200s", name.c_str(), text.c_str());
    else if (cJSON_GetObjectItem(cJSON_GetObjectItem(tree.get(), "resp"), "respCode") == nullptr)
        finding(sweep, "%s is no response: %.200s", name.c_str(), text.c_str());
}

static void locksCheck(SWEEP_T *sweep)
{
    std::error_code none;

    for (const auto &entry : std::filesystem::directory_iterator(PathGet(PATH_LOCK_DIR), none)) {
        OWNED_FD_T lock(open(entry.path().c_str(), O_RDWR | O_CLOEXEC));
        if (lock.fd < 0 || flock(lock.fd, LOCK_EX | LOCK_NB) != 0)
            finding(sweep, "%s is still locked", entry.path().filename().c_str());
    }
}

const char *difference(const std::string &now, const std::string &clean)
{
    static char text[300];
    std::istringstream nowLines(now);
    std::istringstream cleanLines(clean);
    std::string nowLine;
    std::string cleanLine;

    if (now.empty() || clean.empty())
        return now.empty() ? "no record" : "no clean record";
    do {
        nowLine.clear();
        cleanLine.clear();
        std::getline(nowLines, nowLine);
        std::getline(cleanLines, cleanLine);
    } while (nowLine == cleanLine && nowLines && cleanLines);
    snprintf(text, sizeof(text), "\"%.120s\" instead of \"%.120s\"", nowLine.c_str(), cleanLine.c_str());
    return text;
}
