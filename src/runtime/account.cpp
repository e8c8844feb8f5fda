#include "runtime/account.h"

// Counters behind one lock, held for moments only: the timer's task prints them while a build that does not end is out.
// Moments are kept by the steady clock and told as times of day.

#include "runtime/clock.h"
#include "runtime/json_escape.h"
#include "runtime/owned.h"
#include "runtime/process_state.h"
#include "runtime/service.h"

#include <cstring>
#include <ctime>
#include <iterator>
#include <mutex>
#include <unistd.h>

static constexpr int64_t NEVER = -1;
static constexpr size_t REASON_SIZE = 128;

struct DOCUMENT_ACCOUNT_T {
    const char *name;
    const char *due;
    int64_t built = NEVER; // microseconds of the steady clock, like all moments here
    int64_t took = 0;
    int64_t changed = NEVER;
    int64_t began = NEVER;
    int64_t dueAt = NEVER;
    int result = 0;
    int lastFailure = 0;
    uint32_t failures = 0;
};

struct COMMAND_ACCOUNT_T {
    char command[ACCOUNT_NAME_SIZE];
    char file[ACCOUNT_NAME_SIZE];
    int64_t ran;
    int64_t took;
    int result;
    ACCOUNT_TEXT_T text;
    uint32_t rows;
};

struct ACCOUNT_STATE_T {
    DOCUMENT_ACCOUNT_T documents[ACCOUNT_DOCUMENTS_MAX];
    size_t documentCount = 0;
    COMMAND_ACCOUNT_T commands[ACCOUNT_COMMANDS_MAX];
    size_t commandCount = 0;
    ACCOUNT_DOING doing = ACCOUNT_STARTING;
    char doingName[ACCOUNT_NAME_SIZE] = "";
    int64_t doingSince = NEVER;
    int64_t started = NEVER;
    uint32_t cycleTicks = 0;
    unsigned long long processStart = 0; // clock ticks since the machine's start, as /proc tells it
    uint32_t cycle = 0;
    int64_t cycleBegan = NEVER;
    int64_t cycleEnded = NEVER;
    int64_t cycleTook = NEVER;
    bool recordChanged = false; // in the build that is under way
    bool registered = false;
    int tries = 0;
    bool reasonTold = false;
    uint32_t begunAnew = 0;
    char lastReason[REASON_SIZE] = "";
};
static ACCOUNT_STATE_T account;
static std::mutex accountLock;
static void (*accountWriter)();
static unsigned lateTicks; // of the timer's task alone

static void accountReset()
{
    account = ACCOUNT_STATE_T();
    accountWriter = nullptr;
    lateTicks = 0;
}
static PROCESS_STATE_T accountState(accountReset);

static void doingSet(ACCOUNT_DOING doing, const char *name)
{
    account.doing = doing;
    account.doingSince = ClockSteady();
    snprintf(account.doingName, sizeof(account.doingName), "%s", name == nullptr ? "" : name);
}

// The 22nd field of a process's state; the second one, its name, may hold blanks and parentheses.
static unsigned long long processStartRead()
{
    char text[1024];
    OWNED_FILE file(fopen("/proc/self/stat", "re"));
    unsigned long long start = 0;

    if (file == nullptr)
        return 0;
    text[fread(text, 1, sizeof(text) - 1, file.get())] = '\0';
    const char *at = strrchr(text, ')');
    for (int field = 3; at != nullptr && field <= 22; field++)
        at = strchr(at + 1, ' ');
    return at != nullptr && sscanf(at, "%llu", &start) == 1 ? start : 0;
}

void accountStart(void (*writer)(), uint32_t cycleTicks)
{
    unsigned long long processStart = processStartRead();
    std::lock_guard<std::mutex> guard(accountLock);

    account.started = ClockSteady();
    account.processStart = processStart;
    account.cycleTicks = cycleTicks;
    accountWriter = writer;
    doingSet(ACCOUNT_STARTING, nullptr);
}

void accountDoing(ACCOUNT_DOING doing, const char *name)
{
    std::lock_guard<std::mutex> guard(accountLock);

    doingSet(doing, name);
}

ACCOUNT_SCOPE_T::ACCOUNT_SCOPE_T(ACCOUNT_DOING now, const char *nowName)
{
    std::lock_guard<std::mutex> guard(accountLock);

    doing = account.doing;
    since = account.doingSince;
    memcpy(name, account.doingName, sizeof(name));
    doingSet(now, nowName);
}

ACCOUNT_SCOPE_T::~ACCOUNT_SCOPE_T()
{
    std::lock_guard<std::mutex> guard(accountLock);

    account.doing = doing;
    account.doingSince = since;
    memcpy(account.doingName, name, sizeof(name));
}

// ---- cycles and documents ----

static DOCUMENT_ACCOUNT_T *documentFind(const char *name)
{
    for (size_t i = 0; i < account.documentCount; i++) {
        if (strcmp(account.documents[i].name, name) == 0)
            return &account.documents[i];
    }
    return nullptr;
}

void accountDocumentAdd(const char *name, const char *due)
{
    std::lock_guard<std::mutex> guard(accountLock);

    if (documentFind(name) == nullptr && account.documentCount < std::size(account.documents)) {
        DOCUMENT_ACCOUNT_T *document = &account.documents[account.documentCount++];
        document->name = name;
        document->due = due;
    }
}

void accountCycleBegin(uint32_t number)
{
    std::lock_guard<std::mutex> guard(accountLock);

    account.cycle = number;
    account.cycleBegan = ClockSteady();
}

void accountCycleEnd()
{
    std::lock_guard<std::mutex> guard(accountLock);

    account.cycleEnded = ClockSteady();
    account.cycleTook = account.cycleEnded - account.cycleBegan;
    doingSet(ACCOUNT_IDLE, nullptr);
}

void accountDocumentBegin(const char *name)
{
    std::lock_guard<std::mutex> guard(accountLock);
    DOCUMENT_ACCOUNT_T *document = documentFind(name);

    doingSet(ACCOUNT_BUILDING, name);
    account.recordChanged = false;
    if (document != nullptr)
        document->began = account.doingSince;
}

void accountDocumentEnd(const char *name, int result)
{
    std::lock_guard<std::mutex> guard(accountLock);
    DOCUMENT_ACCOUNT_T *document = documentFind(name);

    if (document == nullptr)
        return;
    document->built = ClockSteady();
    document->took = document->built - document->began;
    document->result = result;
    document->failures = result == 0 ? 0 : document->failures + 1;
    if (result != 0)
        document->lastFailure = result;
    if (account.recordChanged)
        document->changed = document->built;
}

void accountRecordChanged()
{
    std::lock_guard<std::mutex> guard(accountLock);

    account.recordChanged = true;
}

unsigned accountFailing()
{
    std::lock_guard<std::mutex> guard(accountLock);
    unsigned failing = 0;

    for (size_t i = 0; i < account.documentCount; i++)
        failing += account.documents[i].failures > 0 ? 1 : 0;
    return failing;
}

static int64_t cycleMicroseconds()
{
    return static_cast<int64_t>(account.cycleTicks) * ClockTick() * 1000;
}

void accountDocumentDue(const char *name, int cycles)
{
    std::lock_guard<std::mutex> guard(accountLock);
    DOCUMENT_ACCOUNT_T *document = documentFind(name);

    if (document != nullptr)
        document->dueAt = cycles == ACCOUNT_NOT_DUE ? NEVER : account.cycleBegan + cycles * cycleMicroseconds();
}

// ---- the rest ----

void accountSession(bool registered, int tries)
{
    std::lock_guard<std::mutex> guard(accountLock);

    account.registered = registered;
    account.tries = tries;
}

void accountCacheReason(const char *reason)
{
    std::lock_guard<std::mutex> guard(accountLock);

    account.reasonTold = true;
    snprintf(account.lastReason, sizeof(account.lastReason), "%s", reason);
}

void accountCacheBegun()
{
    std::lock_guard<std::mutex> guard(accountLock);

    account.begunAnew += account.reasonTold ? 1 : 0;
    account.reasonTold = false;
}

void accountCommandRun(const char *command, const char *file, int result, int64_t microseconds)
{
    std::lock_guard<std::mutex> guard(accountLock);
    size_t index = 0;

    while (index < account.commandCount &&
           strncmp(account.commands[index].command, command, ACCOUNT_NAME_SIZE - 1) != 0)
        index++;
    if (index == std::size(account.commands))
        return;
    COMMAND_ACCOUNT_T *row = &account.commands[index];
    if (index == account.commandCount) {
        account.commandCount++;
        snprintf(row->command, sizeof(row->command), "%s", command);
    }
    snprintf(row->file, sizeof(row->file), "%s", file);
    row->ran = ClockSteady();
    row->took = microseconds;
    row->result = result;
    row->text = ACCOUNT_TEXT_T();
    row->rows = 0;
}

int accountCommandOf(const char *file)
{
    std::lock_guard<std::mutex> guard(accountLock);
    int found = -1;

    for (size_t i = 0; i < account.commandCount; i++) {
        const COMMAND_ACCOUNT_T &row = account.commands[i];
        if (strcmp(row.file, file) == 0 && (found < 0 || row.ran > account.commands[found].ran))
            found = static_cast<int>(i);
    }
    return found;
}

void accountCommandText(int index, const ACCOUNT_TEXT_T &text)
{
    std::lock_guard<std::mutex> guard(accountLock);

    if (index >= 0 && static_cast<size_t>(index) < account.commandCount)
        account.commands[index].text = text;
}

void accountCommandRow(int index)
{
    std::lock_guard<std::mutex> guard(accountLock);

    if (index >= 0 && static_cast<size_t>(index) < account.commandCount)
        account.commands[index].rows++;
}

// ---- telling ----

static const char *doingWords(ACCOUNT_DOING doing)
{
    switch (doing) {
    case ACCOUNT_STARTING:
        return "starting";
    case ACCOUNT_REGISTERING:
        return "waiting for the platform's server";
    case ACCOUNT_BUILDING:
        return "building ";
    case ACCOUNT_LOCK_WAIT:
        return "waiting for a lock that another process holds: ";
    case ACCOUNT_FILE_WAIT:
        return "waiting for a file: ";
    case ACCOUNT_REFUSED:
        return "nothing: the platform's server does not answer";
    case ACCOUNT_IDLE:
        break;
    }
    return "waiting for the next cycle";
}

static void tell(ACCOUNT_TELL_T *out)
{
    out->doing = account.doing;
    snprintf(out->text, sizeof(out->text), "%s%s", doingWords(account.doing), account.doingName);
    out->seconds = account.doingSince == NEVER ? 0 : (ClockSteady() - account.doingSince) / 1000000;
}

void accountTell(ACCOUNT_TELL_T *out)
{
    std::lock_guard<std::mutex> guard(accountLock);

    tell(out);
}

// Both clocks at one moment, to tell moments of the one as those of the other.
struct PRINT_T {
    FILE *out;
    int64_t steady;
    int64_t timeOfDay;
};

static void momentPrint(const PRINT_T &print, const char *name, int64_t moment)
{
    if (moment == NEVER)
        fprintf(print.out, "\"%s\":null", name);
    else
        fprintf(print.out, "\"%s\":%lld", name,
                static_cast<long long>((print.timeOfDay - (print.steady - moment)) / 1000000));
}

static void textPrint(const PRINT_T &print, const char *name, const char *text)
{
    char escaped[6 * REASON_SIZE + 1];

    (void)jsonEscape(text, JSON_CONTROLS_DROP, escaped, sizeof(escaped));
    fprintf(print.out, "\"%s\":\"%s\"", name, escaped);
}

static void daemonPrint(const PRINT_T &print, const char *version)
{
    ACCOUNT_TELL_T doing;

    tell(&doing);
    fprintf(print.out, "\"daemon\":{");
    textPrint(print, "version", version);
    fprintf(print.out, ",\"pid\":%d,\"processStart\":%llu,", static_cast<int>(getpid()), account.processStart);
    momentPrint(print, "startedAt", account.started);
    fprintf(print.out, ",\"cycle\":%u,\"cycleSeconds\":%g,", account.cycle,
            static_cast<double>(cycleMicroseconds()) / 1e6);
    momentPrint(print, "cycleBeganAt", account.cycleBegan);
    fputc(',', print.out);
    momentPrint(print, "cycleEndedAt", account.cycleEnded);
    if (account.cycleTook == NEVER)
        fprintf(print.out, ",\"cycleMicroseconds\":null");
    else
        fprintf(print.out, ",\"cycleMicroseconds\":%lld", static_cast<long long>(account.cycleTook));
    fprintf(print.out, ",\n\"doing\":{");
    textPrint(print, "text", doing.text);
    fputc(',', print.out);
    momentPrint(print, "since", account.doingSince);
    fprintf(print.out, ",\"isIdle\":%s", doing.doing == ACCOUNT_IDLE ? "true" : "false");
    fprintf(print.out, "},\n\"session\":{\"registered\":%s,\"tries\":%d},\n\"cache\":{\"begunAnew\":%u,",
            account.registered ? "true" : "false", account.tries, account.begunAnew);
    textPrint(print, "lastReason", account.lastReason);
    fprintf(print.out, "}}");
}

static void documentPrint(const PRINT_T &print, const DOCUMENT_ACCOUNT_T &document)
{
    bool built = document.built != NEVER;

    fputc('{', print.out);
    textPrint(print, "name", document.name);
    fputc(',', print.out);
    textPrint(print, "due", document.due);
    fputc(',', print.out);
    momentPrint(print, "dueAt", document.dueAt);
    fputc(',', print.out);
    momentPrint(print, "builtAt", document.built);
    if (built)
        fprintf(print.out, ",\"microseconds\":%lld,\"result\":%d", static_cast<long long>(document.took),
                document.result);
    else
        fprintf(print.out, ",\"microseconds\":null,\"result\":null");
    fprintf(print.out, ",\"failures\":%u,", document.failures);
    if (document.lastFailure == 0)
        fprintf(print.out, "\"lastFailure\":null,");
    else
        fprintf(print.out, "\"lastFailure\":%d,", document.lastFailure);
    momentPrint(print, "changedAt", document.changed);
    fputc('}', print.out);
}

static void commandPrint(const PRINT_T &print, const COMMAND_ACCOUNT_T &command)
{
    const ACCOUNT_TEXT_T &text = command.text;

    fputc('{', print.out);
    textPrint(print, "command", command.command);
    fputc(',', print.out);
    momentPrint(print, "ranAt", command.ran);
    fprintf(print.out,
            ",\"microseconds\":%lld,\"result\":%d,\"bytes\":%llu,\"lines\":%u,\"rows\":%u,\"rowsMissed\":%s}",
            static_cast<long long>(command.took), command.result, static_cast<unsigned long long>(text.bytes),
            text.lines, command.rows, text.data > 0 && command.rows == 0 ? "true" : "false");
}

void accountPrint(FILE *out, const char *version)
{
    std::lock_guard<std::mutex> guard(accountLock);
    PRINT_T print = {out, ClockSteady(), ClockMicroseconds()};

    fprintf(out, "{\"writtenAt\":%lld,\"writtenMonotonic\":%.3f,\n", static_cast<long long>(print.timeOfDay / 1000000),
            static_cast<double>(print.steady) / 1e6);
    daemonPrint(print, version);
    fprintf(out, ",\n\"documents\":[");
    for (size_t i = 0; i < account.documentCount; i++) {
        fputs(i == 0 ? "\n" : ",\n", out);
        documentPrint(print, account.documents[i]);
    }
    fprintf(out, "],\n\"commands\":[");
    for (size_t i = 0; i < account.commandCount; i++) {
        fputs(i == 0 ? "\n" : ",\n", out);
        commandPrint(print, account.commands[i]);
    }
    fprintf(out, "]}\n");
}

// ---- the timer's task ----

void accountTick()
{
    ACCOUNT_TELL_T doing;

    accountTell(&doing);
    if (doing.doing == ACCOUNT_IDLE || doing.seconds < ACCOUNT_LATE_SECONDS) {
        lateTicks = 0;
        return;
    }
    if (lateTicks++ % ACCOUNT_LATE_TICKS != 0)
        return;
    if (doing.doing == ACCOUNT_LOCK_WAIT || doing.doing == ACCOUNT_FILE_WAIT) {
        serviceStatus(doing.text);
        serviceAlive();
    }
    if (accountWriter != nullptr)
        accountWriter();
}
