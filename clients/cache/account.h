// account.h - the daemon's account of itself, /tmp/devmgr_status.json (docs/status.md), as a reader sees it.
#pragma once

#include "runtime/owned.h"

#include <cstdint>
#include <string>

enum ACCOUNT_STATE : int {
    ACCOUNT_ALIVE, // the process that wrote it is there, and keeps it up to date
    ACCOUNT_STALE, // the process is there, but has written nothing for longer than it may
    ACCOUNT_DEAD,  // the process is gone: what the account says is how it was
    ACCOUNT_NONE,  // no file, not to be read, not the daemon's, or no account
};

struct ACCOUNT_T {
    ACCOUNT_STATE state = ACCOUNT_NONE;
    std::string trouble; // in words, "" for ACCOUNT_ALIVE
    OWNED_JSON tree;     // null for ACCOUNT_NONE
    int64_t now = 0;     // the daemon's time of day, by which ages are counted: seconds since 1970
};

// Read the account of the chosen root (runtime/paths.h). The account belongs to the daemon's user or root; the process
// is known by its id and the time of its start, so that another one with its number does not count.
ACCOUNT_T accountRead();

// A number below the tree by two member names ("" for none), or `missing` where there is none (null counts as none).
double accountNumber(const cJSON *object, const char *member, double missing);

// A text member, "" where there is none.
std::string accountText(const cJSON *object, const char *member);

// What is wrong with a document of the account at this time of day, in a word: "failed", "overdue", or "" for nothing.
std::string accountDocumentTrouble(const ACCOUNT_T &account, const cJSON *document);

// Whether a show command gave a text in which no row was recognised, or failed: "no rows", "failed", or "".
std::string accountCommandTrouble(const cJSON *command);
