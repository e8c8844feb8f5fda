// change_list.h - following the daemon's change list without losing a change.
//
// The daemon appends a name, then writes the record, then signals. It opens the list anew for each line, so a reader
// that empties the file can lose one, and a reader that is quick can see the record before it changed. So the list is
// renamed away and its descriptor kept: a line that a writer with the old file open still appends is found at a later
// look, and the names of a batch are given out again at every look until a signal has come after it and SETTLE_SECONDS
// have passed.
#pragma once

#include "runtime/owned.h"

#include <list>
#include <map>
#include <string>

// Longer than a writer waits for a locked database between announcing a name and writing its record (3 seconds for each
// of its statements).
constexpr double SETTLE_SECONDS = 10.0;

struct CHANGE_BATCH_T {
    OWNED_FD_T fd;                         // of the renamed and unlinked list
    std::string partial;                   // start of a line whose end is not written yet
    std::map<std::string, unsigned> names; // read so far, with how often each stood there
    double takenAt = 0;                    // seconds
    bool signalled = false;                // a signal came at a look after the one that took it
};

struct CHANGE_LIST_T {
    std::string path;
    std::string cache;                 // path of the database
    std::list<CHANGE_BATCH_T> batches; // oldest first
    ino_t inode = 0;                   // of the database whose table is, or was, read as a whole
    double beganAt = 0;                // seconds; its first reading
    bool signalled = false;            // a signal came at a later look
    bool settled = false;              // it need not be read as a whole any more
};

// Whether the whole table is to be read at this look, before the list. So it is at the first one, and, as for a batch,
// until a signal has come after it and SETTLE_SECONDS have passed: an earlier reader may have taken names whose records
// are not written yet. And so it is when the daemon has put another database in the place of a damaged one.
bool changeListAllDue(CHANGE_LIST_T *list, bool bySignal, double now);

// One look at the list. `bySignal`: a signal caused it. `now`: seconds on any steady clock. Names whose records are to
// be read now, each with the number of lines that are new since the last look (0: read again).
std::map<std::string, unsigned> changeListLook(CHANGE_LIST_T *list, bool bySignal, double now);
