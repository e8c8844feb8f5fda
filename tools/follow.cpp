// follow.cpp - plays the websocket server's part: follows the cache as a neighbouring program sees it.
//
// Leaves its process and thread id where the daemon looks, waits for SIGINT (sent to the thread: a change; any other
// ends it), follows the change list, reads the changed records, and shows them: a live table on a terminal, plain lines
// when piped. With --check it waits for the end of the first refresh cycle, prints the table once and says whether
// every expected document is there, parses and reports success.

#include "change_list.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/sql.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <getopt.h>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

// What the table shows of one document.
struct SHOWN_T {
    std::string text;      // the record as last read
    std::string result;    // its result message, or what is wrong with it
    bool good = false;     // parses and says success
    unsigned changes = 0;  // lines of the change list
    double changedAt = -1; // steady clock; -1: not since this program started
};

struct FOLLOW_T {
    std::map<std::string, SHOWN_T> documents;
    CHANGE_LIST_T list;
    pid_t daemon = 0; // 0: not known
    bool terminal = false;
    std::string expected; // file of --check, "" without
    std::string messages; // file of --messages, "" without
    size_t messagesRead = 0;
    std::string message; // its last line
    double limit = 600;  // seconds of --check
    double started = 0;
};

constexpr double LOOK_SECONDS = 1.0;       // look without a signal
constexpr double CHECK_LOOK_SECONDS = 0.2; // the same for --check
constexpr double PAGE_SECONDS = 4.0;       // a table longer than the terminal turns its pages
constexpr int BUSY_MILLISECONDS = 3000;

static const char usageText[] =
    "usage: follow --root DIR [--daemon PID] [--messages FILE] [--check FILE [--limit SECONDS]]\n"
    "Shows the REST cache under DIR live: a table on a terminal, plain lines when piped. Ctrl-C ends it.\n"
    "\n"
    "  --root DIR       root that the daemon was given\n"
    "  --daemon PID     end with status 1 when this process ends\n"
    "  --messages FILE  what the daemon writes to its terminal: its last line stands below the table\n"
    "  --check FILE     wait for the end of the first cycle, print the table once; status 0 only when each name of "
    "FILE\n"
    "                   (one a line) has a document that parses and says success\n"
    "  --limit SECONDS  how long --check waits (default 600)\n";

static bool optionsTake(int argc, char **argv, FOLLOW_T *follow);
static int follow(FOLLOW_T *follow, int signals);
static int check(FOLLOW_T *follow, int signals);
static void look(FOLLOW_T *follow, bool bySignal);
static void messagesLook(FOLLOW_T *follow);
static OWNED_DB cacheOpen();
static void readAll(FOLLOW_T *follow);
static void namesAll(const FOLLOW_T *follow, sqlite3 *db, std::map<std::string, unsigned> *names);
static void readOne(FOLLOW_T *follow, sqlite3 *db, const std::string &name, unsigned announced);
static void tableDraw(FOLLOW_T *follow);
static void tablePrint(const FOLLOW_T *follow, size_t first, size_t count, int columns);

static double steadySeconds()
{
    struct timespec now;

    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// ---- the id file ----

// Written beside and renamed, so that the daemon never reads half of it.
static bool idFileWrite()
{
    std::string path = PathGet(PATH_WS_PID);
    std::string fresh = path + ".new";
    OWNED_FILE file(fopen(fresh.c_str(), "w"));

    if (!file)
        return false;
    fprintf(file.get(), "%d %d\n", getpid(), static_cast<int>(syscall(SYS_gettid)));
    file.reset();
    return rename(fresh.c_str(), path.c_str()) == 0;
}

// Only one's own: a successor may have put its ids there.
static void idFileRemove()
{
    int pid = 0;
    OWNED_FILE file(fopen(PathGet(PATH_WS_PID), "r"));

    if (file && fscanf(file.get(), "%d", &pid) == 1 && pid == getpid())
        (void)unlink(PathGet(PATH_WS_PID));
}

// ---- waiting ----

enum WAKE_T { WAKE_CHANGE, WAKE_TIME, WAKE_RESIZE, WAKE_END };

// Whether an interrupt is pending for this very thread, as the daemon sends it, and not for the process. Kernels differ
// in what si_code says of the two, so the pending set is what tells them apart; the thread's own signals are taken
// first.
static bool threadInterrupted()
{
    std::ifstream status("/proc/thread-self/status");
    std::string line;

    while (std::getline(status, line))
        if (line.compare(0, 7, "SigPnd:") == 0)
            return (strtoull(line.c_str() + 7, nullptr, 16) >> (SIGINT - 1) & 1) != 0;
    return false;
}

static WAKE_T waitFor(int signals, double seconds)
{
    struct pollfd ready[] = {{signals, POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
    struct signalfd_siginfo info;

    if (poll(ready, 2, static_cast<int>(seconds * 1000)) < 1)
        return WAKE_TIME;
    if ((ready[1].revents & POLLERR) != 0)
        return WAKE_END; // a pipe that nobody reads any more
    bool change = threadInterrupted();
    if (read(signals, &info, sizeof(info)) != sizeof(info))
        return WAKE_TIME;
    if (info.ssi_signo == SIGWINCH)
        return WAKE_RESIZE;
    return info.ssi_signo == SIGINT && change ? WAKE_CHANGE : WAKE_END;
}

// A child that ended but was not waited for yet counts as ended.
static bool daemonEnded(const FOLLOW_T *follow)
{
    if (follow->daemon == 0)
        return false;
    std::ifstream stat("/proc/" + std::to_string(follow->daemon) + "/stat");
    std::string text;
    if (!std::getline(stat, text))
        return true;
    size_t state = text.rfind(')');
    return state == std::string::npos || state + 2 >= text.size() || strchr("ZX", text[state + 2]) != nullptr;
}

int main(int argc, char **argv)
{
    FOLLOW_T state;
    sigset_t blocked;

    if (!optionsTake(argc, argv, &state))
        return 2;
    sigemptyset(&blocked);
    for (int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGWINCH})
        sigaddset(&blocked, number);
    (void)signal(SIGPIPE, SIG_IGN);
    sigprocmask(SIG_BLOCK, &blocked, nullptr); // before the daemon can know of this process
    OWNED_FD_T signals(signalfd(-1, &blocked, SFD_CLOEXEC | SFD_NONBLOCK));
    state.list.path = PathGet(PATH_REST_DELTA);
    state.list.cache = PathGet(PATH_REST_DB);
    state.terminal = isatty(STDOUT_FILENO) && state.expected.empty();
    state.started = steadySeconds();
    if (!idFileWrite()) {
        perror(PathGet(PATH_WS_PID));
        return 1;
    }
    int status = state.expected.empty() ? follow(&state, signals.fd) : check(&state, signals.fd);
    idFileRemove();
    return status;
}

static bool optionsTake(int argc, char **argv, FOLLOW_T *follow)
{
    static const struct option options[] = {
        {"root", required_argument, nullptr, 'r'},
        {"daemon", required_argument, nullptr, 'd'},
        {"check", required_argument, nullptr, 'c'},
        {"limit", required_argument, nullptr, 'l'},
        {"messages", required_argument, nullptr, 'm'},
        {"help", no_argument, nullptr, 'h'},
        {nullptr, 0, nullptr, 0},
    };
    const char *root = nullptr;
    int option;

    while ((option = getopt_long(argc, argv, "", options, nullptr)) != -1) {
        switch (option) {
        case 'r':
            root = optarg;
            break;
        case 'd':
            follow->daemon = static_cast<pid_t>(strtol(optarg, nullptr, 10));
            break;
        case 'c':
            follow->expected = optarg;
            break;
        case 'm':
            follow->messages = optarg;
            break;
        case 'l':
            follow->limit = strtod(optarg, nullptr);
            break;
        default:
            fputs(usageText, stderr);
            return false;
        }
    }
    if (root == nullptr || optind < argc) {
        fputs(usageText, stderr);
        return false;
    }
    if (PathsInit(root, nullptr) != 0) {
        fprintf(stderr, "follow: --root %s: longer than 18 characters\n", root);
        return false;
    }
    return true;
}

// ---- following ----

static int follow(FOLLOW_T *follow, int signals)
{
    WAKE_T wake = WAKE_TIME;

    readAll(follow);
    while (wake != WAKE_END) {
        look(follow, wake == WAKE_CHANGE);
        messagesLook(follow);
        if (follow->terminal)
            tableDraw(follow);
        fflush(stdout);
        if (daemonEnded(follow)) {
            fputs("follow: the daemon has ended\n", stderr);
            return 1;
        }
        wake = waitFor(signals, LOOK_SECONDS);
    }
    if (follow->terminal)
        putchar('\n');
    return 0;
}

static void look(FOLLOW_T *follow, bool bySignal)
{
    bool all = changeListAllDue(&follow->list, bySignal, steadySeconds());
    std::map<std::string, unsigned> names = changeListLook(&follow->list, bySignal, steadySeconds());

    if (names.empty() && !all)
        return;
    OWNED_DB db = cacheOpen();
    if (all)
        namesAll(follow, db.get(), &names);
    for (const auto &name : names)
        readOne(follow, db.get(), name.first, name.second);
}

// ---- records ----

static OWNED_DB cacheOpen()
{
    sqlite3 *db = nullptr;
    int result = sqlite3_open_v2(PathGet(PATH_REST_DB), &db, SQLITE_OPEN_READONLY, nullptr);
    OWNED_DB owned(db);

    if (result != SQLITE_OK)
        return OWNED_DB(); // not made yet
    sqlite3_busy_timeout(owned.get(), BUSY_MILLISECONDS);
    return owned;
}

static OWNED_STATEMENT prepared(sqlite3 *db, const char *sql)
{
    OWNED_STATEMENT statement;

    (void)sqlPrepare(db, sql, &statement); // none: there is no table yet
    return statement;
}

static std::string columnText(sqlite3_stmt *statement, int column)
{
    const unsigned char *text = sqlite3_column_text(statement, column);

    return text == nullptr ? "" : reinterpret_cast<const char *>(text);
}

// Result message of a document, and whether it says success.
static void judge(SHOWN_T *shown)
{
    OWNED_JSON document(cJSON_Parse(shown->text.c_str()));
    const cJSON *resp = cJSON_GetObjectItemCaseSensitive(document.get(), "resp");
    const cJSON *code = cJSON_GetObjectItemCaseSensitive(resp, "respCode");
    const cJSON *message = cJSON_GetObjectItemCaseSensitive(resp, "respMsg");
    const cJSON *status = cJSON_GetObjectItemCaseSensitive(resp, "status");

    shown->good = false;
    if (!document)
        shown->result = "not JSON";
    else if (!cJSON_IsNumber(code) || !cJSON_IsString(message) || !cJSON_IsString(status))
        shown->result = "no result";
    else {
        shown->result = message->valuestring;
        shown->good = code->valueint == 0 && strcmp(status->valuestring, "success") == 0;
    }
}

static std::string clockText()
{
    time_t now = time(nullptr);
    struct tm local;
    char stamp[16];

    localtime_r(&now, &local);
    strftime(stamp, sizeof(stamp), "%H:%M:%S", &local);
    return stamp;
}

static void linePrint(const std::string &name, const SHOWN_T &shown, const char *what)
{
    printf("%s %s %s %zu %s\n", clockText().c_str(), what, name.c_str(), shown.text.size(), shown.result.c_str());
}

// Whole lines that have been added since the last look.
static void messagesLook(FOLLOW_T *follow)
{
    std::ifstream file(follow->messages);
    std::string line;

    file.seekg(static_cast<std::streamoff>(follow->messagesRead));
    while (!follow->messages.empty() && std::getline(file, line) && !file.eof()) {
        follow->messagesRead += line.size() + 1;
        follow->message = line;
        if (!follow->terminal)
            printf("%s says %s\n", clockText().c_str(), line.c_str());
    }
}

static void readAll(FOLLOW_T *follow)
{
    OWNED_DB db = cacheOpen();
    OWNED_STATEMENT statement = db ? prepared(db.get(), "SELECT api_name, data FROM restapi_db") : OWNED_STATEMENT();

    while (statement && sqlite3_step(statement.get()) == SQLITE_ROW) {
        SHOWN_T &shown = follow->documents[columnText(statement.get(), 0)];
        shown.text = columnText(statement.get(), 1);
        judge(&shown);
    }
    if (!follow->terminal && follow->expected.empty())
        for (const auto &document : follow->documents)
            linePrint(document.first, document.second, "holds");
}

// Names of the whole table, and those that may have left it.
static void namesAll(const FOLLOW_T *follow, sqlite3 *db, std::map<std::string, unsigned> *names)
{
    OWNED_STATEMENT statement = db != nullptr ? prepared(db, "SELECT api_name FROM restapi_db") : OWNED_STATEMENT();

    for (const auto &document : follow->documents)
        (*names)[document.first] += 0;
    while (statement && sqlite3_step(statement.get()) == SQLITE_ROW)
        (*names)[columnText(statement.get(), 0)] += 0;
}

// The record of an announced name; a record that is gone leaves the table.
static void readOne(FOLLOW_T *follow, sqlite3 *db, const std::string &name, unsigned announced)
{
    OWNED_STATEMENT statement =
        db != nullptr ? prepared(db, "SELECT data FROM restapi_db WHERE api_name = ?") : OWNED_STATEMENT();

    if (!statement)
        return;
    sqlite3_bind_text(statement.get(), 1, name.c_str(), -1, SQLITE_TRANSIENT);
    int result = sqlite3_step(statement.get());
    auto known = follow->documents.find(name);
    bool lines = !follow->terminal && follow->expected.empty();

    if (result == SQLITE_ROW) {
        SHOWN_T &shown = follow->documents[name];
        std::string text = columnText(statement.get(), 0);
        shown.changes += announced;
        if (text == shown.text)
            return; // announced, not written yet; or read before
        shown.text = text;
        shown.changedAt = steadySeconds();
        judge(&shown);
        if (lines)
            linePrint(name, shown, "changed");
    } else if (result == SQLITE_DONE && known != follow->documents.end()) {
        if (lines)
            linePrint(name, known->second, "removed");
        follow->documents.erase(known);
    }
}

// ---- the table ----

constexpr int COLUMN_SIZE = 8, COLUMN_CHANGES = 8, COLUMN_AGE = 7, COLUMN_RESULT = 24;

// Redraws from the top left corner; rows beyond the terminal's height come on the next page.
static void tableDraw(FOLLOW_T *follow)
{
    struct winsize size = {};

    (void)ioctl(STDOUT_FILENO, TIOCGWINSZ, &size); // a terminal that does not say counts as 24x80
    int height = size.ws_row > 4 ? size.ws_row : 24;
    int columns = size.ws_col > 60 ? size.ws_col : 80;
    size_t rows = static_cast<size_t>(height - (follow->message.empty() ? 3 : 4));
    size_t pages = (follow->documents.size() + rows - 1) / rows;
    auto turn = static_cast<size_t>((steadySeconds() - follow->started) / PAGE_SECONDS);
    size_t page = pages > 1 ? turn % pages : 0;

    fputs("\033[H", stdout);
    tablePrint(follow, page * rows, rows, columns);
    printf("%zu documents", follow->documents.size());
    if (pages > 1)
        printf(", page %zu of %zu", page + 1, pages);
    fputs(" - Ctrl-C ends\033[K\033[J", stdout);
    if (!follow->message.empty())
        printf("\n%.*s\033[K", columns, follow->message.c_str());
}

static std::string ageText(double seconds)
{
    if (seconds < 120)
        return std::to_string(static_cast<int>(seconds)) + " s";
    if (seconds < 7200)
        return std::to_string(static_cast<int>(seconds / 60)) + " min";
    return std::to_string(static_cast<int>(seconds / 3600)) + " h";
}

static void tablePrint(const FOLLOW_T *follow, size_t first, size_t count, int columns)
{
    const char *lineEnd = follow->terminal ? "\033[K\n" : "\n";
    int name = columns - COLUMN_SIZE - COLUMN_CHANGES - COLUMN_AGE - COLUMN_RESULT - 5;
    size_t row = 0;

    printf("%-*.*s %*s %-*s %*s %*s%s", name, name, "document", COLUMN_SIZE, "bytes", COLUMN_RESULT, "result",
           COLUMN_CHANGES, "changes", COLUMN_AGE, "age", lineEnd);
    for (const auto &document : follow->documents) {
        const SHOWN_T &shown = document.second;
        if (row >= first && row < first + count) {
            std::string age = shown.changedAt < 0 ? "-" : ageText(steadySeconds() - shown.changedAt);
            printf("%-*.*s %*zu %-*.*s %*u %*s%s", name, name, document.first.c_str(), COLUMN_SIZE, shown.text.size(),
                   COLUMN_RESULT, COLUMN_RESULT, shown.result.c_str(), COLUMN_CHANGES, shown.changes, COLUMN_AGE,
                   age.c_str(), lineEnd);
        }
        row++;
    }
}

// ---- --check ----

static bool fileHas(const std::string &path, const char *what)
{
    std::ifstream file(path);
    std::string line;

    while (std::getline(file, line))
        if (line.find(what) != std::string::npos)
            return true;
    return false;
}

// The daemon says so at debug level.
static bool cycleEnded()
{
    static const char end[] = "] GetAllRestApiData() End";

    return fileHas(PathGet(PATH_LOG), end) || fileHas(PathGet(PATH_LOG_OLD), end);
}

// Number of expected documents that are missing or not well; each is named.
static int verdict(const FOLLOW_T *follow)
{
    std::ifstream names(follow->expected);
    std::string name;
    int bad = 0, all = 0;

    while (std::getline(names, name)) {
        auto document = follow->documents.find(name);
        all++;
        if (document != follow->documents.end() && document->second.good)
            continue;
        bad++;
        printf("%s: %s\n", name.c_str(),
               document == follow->documents.end() ? "missing" : document->second.result.c_str());
    }
    if (all == 0) {
        printf("%s names no document\n", follow->expected.c_str());
        return 1;
    }
    printf("%d of %d expected documents are there and say success\n", all - bad, all);
    return bad;
}

static int check(FOLLOW_T *follow, int signals)
{
    WAKE_T wake = WAKE_TIME;
    const char *trouble = nullptr;

    while (trouble == nullptr && !cycleEnded()) {
        wake = waitFor(signals, CHECK_LOOK_SECONDS);
        look(follow, wake == WAKE_CHANGE);
        if (wake == WAKE_END)
            trouble = "interrupted";
        else if (daemonEnded(follow))
            trouble = "the daemon has ended";
        else if (steadySeconds() - follow->started > follow->limit)
            trouble = "the first cycle did not end in time";
    }
    look(follow, true);
    readAll(follow);
    tablePrint(follow, 0, follow->documents.size(), 80);
    int bad = verdict(follow);
    if (trouble != nullptr)
        printf("%s\n", trouble);
    return bad == 0 && trouble == nullptr ? 0 : 1;
}
