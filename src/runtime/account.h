// account.h - what the daemon can say of itself: when each document was last built and what came of it, what each show
// command gave, and what the daemon is doing right now. docs/status.md describes the file that restcache makes of it.
//
// Any floor and any thread may count here. Nothing fails, nothing is allocated: a document or command beyond the
// tables' room is left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

constexpr size_t ACCOUNT_DOCUMENTS_MAX = 64;
constexpr size_t ACCOUNT_COMMANDS_MAX = 128;
constexpr size_t ACCOUNT_NAME_SIZE = 96;

// The process begins. `writer` puts the account into its file; the timer's task calls it when a build is late.
// `cycleTicks`: from one refresh cycle to the next.
void accountStart(void (*writer)(), uint32_t cycleTicks);

// What the monitor is doing. All but the idle wait for the next cycle is expected to end.
enum ACCOUNT_DOING : int {
    ACCOUNT_STARTING,
    ACCOUNT_REGISTERING, // with the platform's server
    ACCOUNT_BUILDING,    // the document named
    ACCOUNT_LOCK_WAIT,   // for the lock file named, held by another process
    ACCOUNT_FILE_WAIT,   // for the file named, which is not there
    ACCOUNT_REFUSED,     // the platform's server did not answer: nothing will be built
    ACCOUNT_IDLE,
};

// Say what is being done from now on. `name` is copied; null for none.
void accountDoing(ACCOUNT_DOING doing, const char *name);

// The same until the end of a scope, where what was said before holds again.
struct ACCOUNT_SCOPE_T {
    ACCOUNT_SCOPE_T(ACCOUNT_DOING doing, const char *name);
    ~ACCOUNT_SCOPE_T();
    ACCOUNT_SCOPE_T(const ACCOUNT_SCOPE_T &) = delete;
    ACCOUNT_SCOPE_T &operator=(const ACCOUNT_SCOPE_T &) = delete;
    ACCOUNT_DOING doing;
    char name[ACCOUNT_NAME_SIZE];
    int64_t since;
};

// ---- cycles and documents ----

constexpr int ACCOUNT_NOT_DUE = -1; // on no schedule, or built already and not to be built again

// A document of this build: its name and when it is due, in words ("every 2 cycles"); both stay the caller's and are
// kept by reference. Its place in the account is the order of these calls.
void accountDocumentAdd(const char *name, const char *due);

void accountCycleBegin(uint32_t number);
void accountCycleEnd();

// One build of a document. A record that changes meanwhile is its.
void accountDocumentBegin(const char *name);
void accountDocumentEnd(const char *name, int result);
void accountRecordChanged();

// Documents whose last build failed.
[[nodiscard]] unsigned accountFailing();

// Cycles until a document is due again, counted from the current one; ACCOUNT_NOT_DUE.
void accountDocumentDue(const char *name, int cycles);

// ---- the rest ----

void accountSession(bool registered, int tries);

// Why the cache is not what it was (copied); told again before it counts, that is still one beginning.
void accountCacheReason(const char *reason);
void accountCacheBegun();

// A show command ended that was to write this file: result 0 or the platform's, duration in microseconds.
void accountCommandRun(const char *command, const char *file, int result, int64_t microseconds);

// Index of the command that was the last to write a file; -1 for none. The functions below do nothing for -1.
[[nodiscard]] int accountCommandOf(const char *file);

// What was read of its text. `data`: lines behind the rule under the column titles that are not blank and do not say
// that nothing is configured.
struct ACCOUNT_TEXT_T {
    uint64_t bytes;
    uint32_t lines;
    uint32_t data;
};
void accountCommandText(int index, const ACCOUNT_TEXT_T &text);

// One more line of that text was recognised.
void accountCommandRow(int index);

// Write the account as a JSON text. Times of day are seconds since 1970, counted back from now by the clock that nobody
// sets.
void accountPrint(FILE *out, const char *version);

// What the monitor is doing in words ("building swcfg_poe"), and since how many seconds.
struct ACCOUNT_TELL_T {
    ACCOUNT_DOING doing;
    char text[ACCOUNT_NAME_SIZE + 64];
    int64_t seconds;
};
void accountTell(ACCOUNT_TELL_T *tell);

// Called by the timer's task once a tick: runs the writer every ACCOUNT_LATE_TICKS while the monitor has been at
// something else than waiting for the next cycle for longer than ACCOUNT_LATE_SECONDS. A wait for a lock or a file may
// last, so the service manager is told of it, and that the daemon is not stuck.
constexpr int ACCOUNT_LATE_SECONDS = 5;
constexpr unsigned ACCOUNT_LATE_TICKS = 5;
void accountTick();
