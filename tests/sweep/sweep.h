// sweep.h - failing everything in turn, without knowing a builder: what the passes share.
//
// A run is one document (or everything) built cold with one fault, checked, and built again without it. Passes run in
// jobs, processes of their own with their own root, so that a crash costs one job and is told by its last run.
#pragma once

#include "faults.h"

#include <string>
#include <vector>

// What a job tells its parent, in shared memory.
struct TALLY_T {
    unsigned runs;
    unsigned findings;
    unsigned changes; // records that a fault changed
    char at[256];     // the run that is going on
};

struct SWEEP_T {
    TALLY_T *tally;
    bool wide;      // further modes of show commands
    unsigned every; // only each so-many-th run
    unsigned turn;  // of the next run; where a job begins differs, so that a share meets all modes
};

// Whether the next run belongs to the share; begins it then, with a limit on its time.
bool runWanted(SWEEP_T *sweep, const std::string &label);

// Say more of the run that is going on.
void runDetail(SWEEP_T *sweep, const std::string &detail);

// Report something that is wrong in the run that is going on.
void finding(SWEEP_T *sweep, const char *format, ...) __attribute__((format(printf, 2, 3)));

// What the daemon leaves outside its memory.
struct SNAPSHOT_T {
    RECORDS_T records;
    NAMES_T files; // under the root, but for logs, locks and the change list
    size_t descriptors;
};
SNAPSHOT_T snapshotTake();

// Everything as a good fault leaves it: each record parses as a response, those that are not in `mayDiffer` are as they
// were, each change is in the change list, no file or descriptor more, every lock free. The records after the fault.
RECORDS_T faultCheck(SWEEP_T *sweep, const SNAPSHOT_T &clean, const NAMES_T &mayDiffer);

// Names that the change list announces.
NAMES_T changesRead();

// The first line in which two texts differ, as a short text that the next call overwrites.
const char *difference(const std::string &now, const std::string &clean);

// A document built cold and alone, twice.
struct CLEAN_T {
    SNAPSHOT_T snapshot; // after everything was built once
    NAMES_T own;         // records that the document writes
    RECORDS_T again;     // ... as its second build leaves them
    // own records that each build writes; not one with a schedule of its own, as that of a document beside a link watch
    std::vector<std::string> due;
};
CLEAN_T cleanTake(SWEEP_T *sweep, const DOCUMENT_T &document);

// The document without the records that are due and without the fault: the clean text again, else a finding, and the
// cache put right. What is read once in a process's life (the vendor table) may need a restart, where that is allowed;
// it is told then.
void recoveryCheck(SWEEP_T *sweep, const DOCUMENT_T &document, const CLEAN_T &clean, bool restartAllowed);

// What can fail from outside for a document: all that the platform is asked for, and all files.
std::vector<CASE_T> casesOf(SWEEP_T *sweep, const DOCUMENT_T &document, const CLEAN_T &clean);

// The passes: each call and command of a document; each of everything, a part of many; each allocation of a document;
// each file operation of a document; the store, with each allocation and file operation of each of its operations.
void documentFaults(SWEEP_T *sweep, const DOCUMENT_T &document);
void cycleFaults(SWEEP_T *sweep, unsigned part, unsigned parts);
void documentAllocations(SWEEP_T *sweep, const DOCUMENT_T &document);
void documentFiles(SWEEP_T *sweep, const DOCUMENT_T &document);
void storeFailures(SWEEP_T *sweep);
