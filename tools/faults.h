// faults.h - what can fail around the daemon while a document is built, one thing at a time: each platform call and
// show command that it asks for, each file that another program leaves. For the sweep, which holds what stays as it
// was, and the fault goldens, which hold what becomes different. Knows no builder.
#pragma once

#include "harness.h"

#include <control.h>
#include <set>

using NAMES_T = std::set<std::string>;

// A fault of the platform, or (a path in `file`) a file that is missing or cut in half.
struct CASE_T {
    std::string subject; // call, show command in quotes, or path
    std::string mode;    // "fails", "fails for its last key 5", "is empty", ...
    VS_FAULT_T fault;
    std::string file;
    bool cut;
};

// What a document asks the platform for when it is built cold: each call fails for its first key, its last key (both
// only with `keys`) and always, each show command in each way a command can fail, in further ways with `wide`.
std::vector<CASE_T> platformCases(const DOCUMENT_T &document, bool wide, bool keys);

// Each of these files but the cache.
std::vector<CASE_T> fileCases(const NAMES_T &files);

// Process state and change list as at a start; the cache stays.
void coldBegin();

// Build a document with the fault, which is lifted afterwards; cold after coldBegin.
void caseRun(const CASE_T &one, const DOCUMENT_T &document);

// Files under the root, but for logs, locks and the change list; and what stands before their paths, "/tmp/dm_abcdef".
NAMES_T rootFiles();
std::string rootName();
