#include "sweep.h"

// Each file operation of a document fails in turn, its own and SQLite's. And the store by itself: each operation on the
// cache meets the failure of each of its allocations (SQLite's too) and of each of its file operations; the record is
// then the old one or, where the operation says so, the new one.

#include "fileops.h"
#include "restcache/notify.h"
#include "restcache/store.h"
#include "runtime/paths.h"
#include "support/alloc.h"

#include <sqlite3.h>
#include <unistd.h>

static void removedAfterwards();
static void storeRun(SWEEP_T *sweep, const struct STORE_CASE_T &one);
static bool storeRunOnce(SWEEP_T *sweep, const struct STORE_CASE_T &one, int64_t n, bool memory);
static const char *storeWrong(const struct STORE_CASE_T &one, int result, bool reached, const RECORDS_T &before,
                              const RECORDS_T &now, const NAMES_T &announced);

void documentFiles(SWEEP_T *sweep, const DOCUMENT_T &document)
{
    CLEAN_T clean = cleanTake(sweep, document);
    bool reached = true;

    for (int64_t n = 0; reached; n++) {
        if (!runWanted(sweep, std::string(document.name) + ", file operation " + std::to_string(n)))
            continue;
        coldBegin();
        fileopsFailAt(n, FILEOPS_OWN | FILEOPS_SQLITE);
        documentRun(document);
        reached = fileopsFailStop();
        runDetail(sweep, std::string(" (") + fileopsFailedName() + " " + fileopsFailedPath() + ")");
        removedAfterwards();
        (void)faultCheck(sweep, clean.snapshot, clean.own);
        recoveryCheck(sweep, document, clean, true);
    }
}

// A file that could not be removed stays; that is the failure itself and no fault.
static void removedAfterwards()
{
    std::string name = fileopsFailedName();

    if (name == "remove" || name == "unlink")
        (void)unlink(fileopsFailedPath().c_str());
}

// An operation on a cache that holds "kept" and "own" with the text "old".
struct STORE_CASE_T {
    const char *label;
    int operation;
    const char *name;
    const char *data;
    int result;        // when nothing fails
    bool present;      // whether the record is there after that ...
    const char *after; // ... and its text
};

void storeFailures(SWEEP_T *sweep)
{
    static const STORE_CASE_T cases[] = {
        {"create", REST_DB_CREATE, nullptr, nullptr, 0, true, "old"},
        {"look up", REST_DB_LOOKUP, "own", nullptr, 0, true, "old"},
        {"write a new record", REST_DB_WRITE, "new", "text", SQLITE_DONE, true, "text"},
        {"write a changed record", REST_DB_WRITE, "own", "text", SQLITE_DONE, true, "text"},
        {"write the same record", REST_DB_WRITE2, "own", "old", 1, true, "old"},
        {"delete a record", REST_DB_DELETE, "own", nullptr, 0, false, ""},
        {"delete a record that is not there", REST_DB_DELETE, "new", nullptr, 0, false, ""},
    };

    for (const STORE_CASE_T &one : cases)
        storeRun(sweep, one);
}

static void storeRun(SWEEP_T *sweep, const STORE_CASE_T &one)
{
    for (bool memory : {true, false}) {
        bool reached = true;
        for (int64_t n = 0; reached; n++) {
            std::string what = memory ? ", allocation " : ", file operation ";
            if (runWanted(sweep, std::string("store, ") + one.label + what + std::to_string(n)))
                reached = storeRunOnce(sweep, one, n, memory);
        }
    }
}

static bool storeRunOnce(SWEEP_T *sweep, const STORE_CASE_T &one, int64_t n, bool memory)
{
    const RECORDS_T before = {{"kept", "old"}, {"own", "old"}};

    coldBegin();
    recordsWrite(before);
    SNAPSHOT_T clean = snapshotTake();
    sqlite3_int64 used = sqlite3_memory_used();
    if (memory)
        allocFailAt(n, ALLOC_OWN | ALLOC_SQLITE);
    else
        fileopsFailAt(n, FILEOPS_OWN | FILEOPS_SQLITE);
    int result = restapi_db_operation(one.operation, one.name, one.data);
    bool reached = memory ? allocFailStop() : fileopsFailStop();
    if (!memory)
        runDetail(sweep, std::string(" (") + fileopsFailedName() + " " + fileopsFailedPath() + ")");
    if (sqlite3_memory_used() != used)
        finding(sweep, "SQLite keeps %lld bytes", static_cast<long long>(sqlite3_memory_used() - used));
    SNAPSHOT_T now = snapshotTake();
    const char *wrong = storeWrong(one, result, reached, before, now.records, changesRead());
    if (wrong != nullptr)
        finding(sweep, "result %d: %s", result, wrong);
    if (now.descriptors != clean.descriptors || now.files != clean.files)
        finding(sweep, "%zu descriptors, %zu before; %zu files, %zu before", now.descriptors, clean.descriptors,
                now.files.size(), clean.files.size());
    recordsWrite(before);
    (void)restapi_db_operation(one.operation, one.name, one.data);
    int again = restapi_db_operation(one.operation, one.name, one.data);
    if (again != (one.result == SQLITE_DONE ? 1 : one.result))
        finding(sweep, "the next one does not recover: %d", again);
    return reached;
}

// What is wrong, if anything: the other record is as it was; a record changes only with its announcement, and to
// nothing but what was asked for; a result of success is one.
static const char *storeWrong(const STORE_CASE_T &one, int result, bool reached, const RECORDS_T &before,
                              const RECORDS_T &now, const NAMES_T &announced)
{
    const char *name = one.name == nullptr ? "own" : one.name;
    auto text = [](const RECORDS_T &records, const char *key) {
        auto record = records.find(key);
        return record == records.end() ? std::string("(none)") : record->second;
    };
    const std::string wanted = one.present ? one.after : "(none)";
    bool changed = text(now, name) != text(before, name);

    if (text(now, "kept") != "old" || now.size() > before.size() + 1)
        return "another record changed";
    if (text(now, name) != wanted && changed)
        return "the record has a text of its own";
    if (changed && one.operation != REST_DB_DELETE && announced.count(name) == 0)
        return "changed and not announced";
    if (changed && restDbChanged == 0)
        return "changed and not signalled";
    if (text(now, name) != wanted && (result == one.result && result != 0))
        return "says success";
    if (!reached && (result != one.result || text(now, name) != wanted))
        return "nothing failed, and yet it did";
    return nullptr;
}
