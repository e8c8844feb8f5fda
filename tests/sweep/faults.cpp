#include "sweep.h"

// Faults from outside: what a document asks the platform for is recorded while it is built cold, then each call fails
// for its first key, its last key and always, and each show command in each way a command can fail. Each file that
// another program leaves is missing, and cut in half.
//
// Cold means that every cache of the process is empty. So a document that lives off a cache asks for what fills it
// itself, and counts among those that a failure of that call may change.

#include "runtime/paths.h"

#include <algorithm>
#include <unistd.h>

// Names with their keys, both in the order of their first use.
struct ASKED_T {
    std::vector<std::string> calls;
    std::map<std::string, std::vector<std::string>> keys; // by call
    std::vector<std::string> commands;
};

struct COMMAND_MODE_T {
    const char *label;
    VS_FAULT_KIND kind;
    uint32_t bytes;
    bool wide;
};
static const COMMAND_MODE_T commandModes[] = {
    {"fails", VS_FAIL, 0, false},
    {"leaves no file", VS_NO_FILE, 0, false},
    {"empty", VS_EMPTY, 0, false},
    {"cut at a third", VS_CUT_PART, 333, false},
    {"CRLF", VS_CRLF, 0, false},
    {"cut at two thirds", VS_CUT_PART, 667, true},
    {"garbage bytes", VS_GARBAGE, 0, true},
};

static ASKED_T askedRecord(const DOCUMENT_T &document);
static void askedNote(void *context, const char *name, const char *key, bool isCommand);
static std::vector<CASE_T> askedCases(const ASKED_T &asked, bool wide, bool keys);
static CASE_T callCase(const std::string &name, const std::string &key, const char *label);
static std::vector<CASE_T> fileCases(const SNAPSHOT_T &clean);
static void cycleRun(SWEEP_T *sweep, const SNAPSHOT_T &clean, const VS_FAULT_T &fault, const NAMES_T &mayDiffer);

void documentFaults(SWEEP_T *sweep, const DOCUMENT_T &document)
{
    CLEAN_T clean = cleanTake(sweep, document);

    for (const CASE_T &one : casesOf(sweep, document, clean)) {
        if (!runWanted(sweep, std::string(document.name) + ", " + one.label))
            continue;
        caseRun(one, document);
        (void)faultCheck(sweep, clean.snapshot, clean.own);
        recoveryCheck(sweep, document, clean, !one.file.empty());
    }
}

std::vector<CASE_T> casesOf(SWEEP_T *sweep, const DOCUMENT_T &document, const CLEAN_T &clean)
{
    std::vector<CASE_T> cases = askedCases(askedRecord(document), sweep->wide, true);
    std::vector<CASE_T> files = fileCases(clean.snapshot);

    cases.insert(cases.end(), files.begin(), files.end());
    return cases;
}

void caseRun(const CASE_T &one, const DOCUMENT_T &document)
{
    coldBegin();
    if (one.file.empty()) {
        vsFaultAdd(one.fault);
        documentRun(document);
        vsFaultsClear();
        return;
    }
    std::string text = textRead(one.file);
    if (one.cut)
        textWrite(one.file, text.substr(0, text.size() / 2));
    else
        unlink(one.file.c_str());
    documentRun(document);
    textWrite(one.file, text);
}

void cycleFaults(SWEEP_T *sweep, unsigned part, unsigned parts)
{
    std::map<std::string, VS_FAULT_T> faults; // by label
    std::map<std::string, NAMES_T> askers;    // records that may differ, likewise
    unsigned number = 0;

    for (const DOCUMENT_T &document : documentsListed()) {
        NAMES_T own = cleanTake(sweep, document).own;
        for (const CASE_T &one : askedCases(askedRecord(document), sweep->wide, false)) {
            faults[one.label] = one.fault;
            askers[one.label].insert(own.begin(), own.end());
        }
    }
    coldBegin();
    documentsRunAll();
    SNAPSHOT_T clean = snapshotTake();
    for (const auto &[label, fault] : faults) {
        if (number++ % parts == part && runWanted(sweep, "all, " + label))
            cycleRun(sweep, clean, fault, askers[label]);
    }
}

// Everything with a fault; then everything as when it is due next.
static void cycleRun(SWEEP_T *sweep, const SNAPSHOT_T &clean, const VS_FAULT_T &fault, const NAMES_T &mayDiffer)
{
    coldBegin();
    vsFaultAdd(fault);
    documentsRunAll();
    vsFaultsClear();
    (void)faultCheck(sweep, clean, mayDiffer);
    for (const DOCUMENT_T &document : documentsListed())
        documentRun(document);
    if (faultCheck(sweep, clean, {}) != clean.records)
        recordsWrite(clean.records);
}

static ASKED_T askedRecord(const DOCUMENT_T &document)
{
    ASKED_T asked;

    coldBegin();
    vsObserverSet(askedNote, &asked);
    documentRun(document);
    vsObserverSet(nullptr, nullptr);
    return asked;
}

static void askedNote(void *context, const char *name, const char *key, bool isCommand)
{
    ASKED_T *asked = static_cast<ASKED_T *>(context);
    auto add = [](std::vector<std::string> *texts, const char *text) {
        if (std::find(texts->begin(), texts->end(), text) == texts->end())
            texts->push_back(text);
    };

    add(isCommand ? &asked->commands : &asked->calls, name);
    if (!isCommand)
        add(&asked->keys[name], key);
}

// A call without keys, or with one, can only fail always.
static std::vector<CASE_T> askedCases(const ASKED_T &asked, bool wide, bool keys)
{
    std::vector<CASE_T> cases;

    for (const std::string &call : asked.calls) {
        const std::vector<std::string> &used = asked.keys.at(call);
        if (keys && used.size() > 1) {
            cases.push_back(callCase(call, used.front(), " fails for its first key "));
            cases.push_back(callCase(call, used.back(), " fails for its last key "));
        }
        cases.push_back(callCase(call, "", " fails"));
    }
    for (const std::string &command : asked.commands) {
        for (const COMMAND_MODE_T &mode : commandModes) {
            CASE_T one = {"\"" + command + "\" " + mode.label, {}, "", false};
            one.fault.name = command;
            one.fault.kind = mode.kind;
            one.fault.bytes = mode.bytes;
            if (wide || !mode.wide)
                cases.push_back(one);
        }
    }
    return cases;
}

static CASE_T callCase(const std::string &name, const std::string &key, const char *label)
{
    CASE_T one = {name + label + key, {}, "", false};

    one.fault.name = name;
    one.fault.key = key;
    return one;
}

static std::vector<CASE_T> fileCases(const SNAPSHOT_T &clean)
{
    std::vector<CASE_T> cases;

    for (const std::string &file : clean.files) {
        if (file == PathGet(PATH_REST_DB))
            continue;
        cases.push_back({file + " is missing", {}, file, false});
        cases.push_back({file + " is cut in half", {}, file, true});
    }
    return cases;
}
