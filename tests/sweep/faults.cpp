#include "sweep.h"

// Faults from outside: what a document asks the platform for fails, one thing at a time (tools/faults.h). Each file
// that another program leaves is missing, and cut in half.
//
// A document that lives off a cache of the process asks for what fills it itself when it is built cold, and counts
// among those that a failure of that call may change.

static void cycleRun(SWEEP_T *sweep, const SNAPSHOT_T &clean, const VS_FAULT_T &fault, const NAMES_T &mayDiffer);

void documentFaults(SWEEP_T *sweep, const DOCUMENT_T &document)
{
    CLEAN_T clean = cleanTake(sweep, document);

    for (const CASE_T &one : casesOf(sweep, document, clean)) {
        if (!runWanted(sweep, std::string(document.name) + ", " + one.subject + " " + one.mode))
            continue;
        coldBegin();
        caseRun(one, document);
        (void)faultCheck(sweep, clean.snapshot, clean.own);
        recoveryCheck(sweep, document, clean, !one.file.empty());
    }
}

std::vector<CASE_T> casesOf(SWEEP_T *sweep, const DOCUMENT_T &document, const CLEAN_T &clean)
{
    std::vector<CASE_T> cases = platformCases(document, sweep->wide, true);
    std::vector<CASE_T> files = fileCases(clean.snapshot.files);

    cases.insert(cases.end(), files.begin(), files.end());
    return cases;
}

void cycleFaults(SWEEP_T *sweep, unsigned part, unsigned parts)
{
    std::map<std::string, VS_FAULT_T> faults; // by label
    std::map<std::string, NAMES_T> askers;    // records that may differ, likewise
    unsigned number = 0;

    for (const DOCUMENT_T &document : documentsListed()) {
        NAMES_T own = cleanTake(sweep, document).own;
        for (const CASE_T &one : platformCases(document, sweep->wide, false)) {
            const std::string label = one.subject + " " + one.mode;
            faults[label] = one.fault;
            askers[label].insert(own.begin(), own.end());
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
