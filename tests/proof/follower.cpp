// follower.cpp - the rule of docs/consuming.md for following the cache, in a follower that is killed at random, against
// a writer at full speed.
//
// The writer changes and deletes records and signals, and pauses after each tenth of the changes. Then what the
// follower holds must become what the table holds. While it writes, the follower is killed and another takes its place.
// The follower's clock goes by the changes that were written, so that it soon follows by the list alone, and never
// gives up a name whose record is on its way, however slow the machine is.

#include "change_list.h"
#include "progress.h"
#include "proof.h"
#include "restcache/notify.h"
#include "restcache/store.h"
#include "runtime/log.h"
#include "runtime/paths.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

constexpr unsigned SECTIONS = 10;
constexpr unsigned NAMES = 60;
constexpr double CHANGES_A_SECOND = 4; // of the follower's clock

struct SHARED_T {
    std::atomic<unsigned> changes{0}; // that the writer has made
    std::atomic<unsigned> written{0}; // sections that it has ended
    std::atomic<unsigned> allowed{1}; // sections it may write
    std::atomic<unsigned> equal{0};   // section after which the follower held what the table held
    std::atomic<unsigned> byList{0};  // ... without reading the whole table any more
    std::atomic<unsigned> errors{0};  // results of the store that none expects
    std::atomic<unsigned> lines{0};   // of the list, that all followers saw
};
static SHARED_T *shared;

static void writer(unsigned changes)
{
    for (unsigned section = 0; section < SECTIONS; section++) {
        while (shared->allowed <= section)
            usleep(1000);
        for (unsigned i = 0; i < changes / SECTIONS; i++) {
            std::string name = "doc/" + std::to_string(roll(NAMES));
            std::string text = "{\"n\":" + std::to_string(section * changes + i) + ",\"pad\":\"" +
                               std::string(roll(3000), 'p') + "\"}";
            bool erase = roll(7) == 0;
            int result = erase ? restapi_db_operation(REST_DB_DELETE, name.c_str(), nullptr)
                               : restapi_db_operation(REST_DB_WRITE, name.c_str(), text.c_str());
            shared->errors += result != (erase ? SQLITE_OK : SQLITE_DONE);
            send_signal_to_ws();
            shared->changes++;
        }
        shared->written = section + 1;
    }
    _exit(0);
}

static void idFileWrite()
{
    std::string path = PathGet(PATH_WS_PID), fresh = path + ".new";
    std::ofstream(fresh) << getpid() << " " << syscall(SYS_gettid) << "\n";
    (void)rename(fresh.c_str(), path.c_str());
}

static void look(CHANGE_LIST_T *list, bool bySignal, RECORDS_T *view)
{
    std::string cache = PathGet(PATH_REST_DB);
    double now = shared->changes / CHANGES_A_SECOND;
    bool all = changeListAllDue(list, bySignal, now);

    if (all) {
        view->clear();
        (void)recordsRead(cache, view); // what fails now is read at the next look
    }
    for (const auto &[name, lines] : changeListLook(list, bySignal, now)) {
        RECORDS_T record;
        shared->lines += lines;
        if (recordsRead(cache, &record, name) != SQLITE_DONE)
            continue;
        if (record.empty())
            view->erase(name);
        else
            (*view)[name] = record[name];
    }
    unsigned section = shared->written;
    RECORDS_T table;
    if (section > shared->equal && section == shared->allowed && recordsRead(cache, &table) == SQLITE_DONE &&
        table == *view) {
        shared->byList += !all;
        shared->equal = section;
    }
}

static void follower()
{
    CHANGE_LIST_T list;
    RECORDS_T view;
    sigset_t interrupt;
    const struct timespec second = {1, 0};
    bool bySignal = false;

    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, nullptr);
    list.path = PathGet(PATH_REST_DELTA);
    list.cache = PathGet(PATH_REST_DB);
    idFileWrite();
    for (;;) {
        look(&list, bySignal, &view);
        bySignal = sigtimedwait(&interrupt, nullptr, &second) == SIGINT;
    }
}

static pid_t spawn(void (*body)(unsigned), unsigned argument)
{
    pid_t pid = fork();

    if (pid != 0)
        return pid;
    dice().seed(std::random_device{}());
    body(argument);
    _exit(0);
}

int main(int argc, char **argv)
{
    unsigned changes = argc > 1 ? static_cast<unsigned>(strtoul(argv[1], nullptr, 10)) : 100000;
    char root[] = "/tmp/df_XXXXXX";
    unsigned restarts = 0, sections = 0;
    std::error_code ignored; // a temporary folder that cannot be removed harms nobody
    double began = steadySeconds();
    auto follow = [](unsigned) {
        follower();
    };

    shared = new (mmap(nullptr, sizeof(SHARED_T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) SHARED_T;
    if (mkdtemp(root) == nullptr || PathsInit(root, nullptr) != 0 || mkdir((std::string(root) + "/tmp").c_str(), 0755))
        return 1;
    LogInit(LOG_OPTION_FILE, 8, "proof");
    if (restapi_db_operation(REST_DB_CREATE, nullptr, nullptr) != 0)
        return 1;
    pid_t reader = spawn(follow, 0), changer = spawn(writer, changes);
    for (bool late = false; sections < SECTIONS && !late; sections += !late) {
        while (shared->written <= sections && !ended(changer)) {
            progressSay("follower: %u of %u sections of the changes", sections, SECTIONS);
            usleep(20000 + roll(1500000));
            if (shared->written > sections)
                break;
            end(reader, SIGKILL);
            reader = spawn(follow, 0);
            restarts++;
        }
        double limit = steadySeconds() + HANG;
        while (shared->equal <= sections && !late) {
            progressSay("follower: %u of %u sections of the changes", sections, SECTIONS);
            usleep(2000);
            late = steadySeconds() > limit;
        }
        shared->allowed = sections + 2;
    }
    end(reader, SIGKILL);
    end(changer, SIGKILL);
    bool good = sections == SECTIONS && shared->errors == 0 && fileRead(PathGet(PATH_LOG)).empty();
    printf("follower: %u changes in %.0f s, %u restarts, %u lines seen; equal to the table after %u of %u sections, %u "
           "times"
           " by the list alone; %u errors of the store%s\n",
           changes, steadySeconds() - began, restarts, shared->lines.load(), sections, SECTIONS, shared->byList.load(),
           shared->errors.load(), good ? "" : ": FAILED");
    std::filesystem::remove_all(root, ignored);
    return good ? 0 : 1;
}
