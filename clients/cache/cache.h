// cache.h - looking at the cache, and at what changes in it, without taking.
//
// The change list, the id file and the locks belong to the daemon and the websocket server. A program that uses this
// only reads the database: any number of them may, and the daemon does not notice. It is woken by inotify, asks
// SQLite's data_version whether another connection has written, reads the documents it wants and compares them with
// those it has.
//
//     CACHE_T cache;
//     if (!cacheOpen(&cache)) ...                    // errno
//     for (;;) {
//         CACHE_LOOK_T look = cacheLook(&cache, &changes);
//         ... look.state, changes ...
//         cacheWait(&cache, look.waitMilliseconds);    // or poll cache.events.fd
//     }
#pragma once

#include "runtime/owned.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

// Documents by their API names, as they stand in the cache.
using CACHE_DOCUMENTS_T = std::map<std::string, std::string>;

// One document that is not what it was at the last look.
struct CACHE_CHANGE_T {
    std::string name;
    std::string was; // "" when it was not there
    std::string now; // "" when it is gone
};

enum CACHE_STATE : int {
    CACHE_READ,    // read, or known to be the same
    CACHE_BUSY,    // locked, or damaged: what was read before stays
    CACHE_MISSING, // no file, or no table in it yet: what was read before stays, too
    CACHE_REFUSED, // this user may not read it, or whoever may have put it there
};

struct CACHE_LOOK_T {
    CACHE_STATE state;
    int waitMilliseconds; // look again after so long, also when nothing has woken
    std::string trouble;  // in words, "" for CACHE_READ
};

struct CACHE_T {
    std::set<std::string> wanted; // names to read; empty: all. A chunked document is wanted by its name without number.
    OWNED_FD_T events;            // inotify, to be polled
    CACHE_DOCUMENTS_T documents;  // as last read
    // its own
    int fileWatch = -1;
    OWNED_DB db; // closed as soon as another file stands at the name
    dev_t device = 0;
    ino_t inode = 0;
    int64_t dataVersion = -1;
};

// Begin to watch the cache of the chosen root (runtime/paths.h). The file need not be there yet. False, with errno,
// when its folder cannot be watched.
[[nodiscard]] bool cacheOpen(CACHE_T *cache);

// Look once: reads only when the database has changed since the last look. `changes` becomes what differs, in the
// order of names. All is new at the first look.
CACHE_LOOK_T cacheLook(CACHE_T *cache, std::vector<CACHE_CHANGE_T> *changes);

// Wait until something happens to the cache, or so long; what has happened until then is one event.
void cacheWait(CACHE_T *cache, int milliseconds);

// Take the events away without waiting. Whether one of them was about the cache: its folder is everybody's.
bool cacheEventsTake(CACHE_T *cache);

// What became of each document from the one set to the other.
std::vector<CACHE_CHANGE_T> cacheCompare(const CACHE_DOCUMENTS_T &was, const CACHE_DOCUMENTS_T &now);

// Read any cache file once, whoever owns it. State and trouble as above.
CACHE_LOOK_T cacheFileRead(const char *path, CACHE_DOCUMENTS_T *documents);
