// root.cpp - a fresh root for one test, and what tests look at in it: log lines, stored documents, the change list.
#include "support/root.h"

#include "runtime/clock.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "support/alloc.h"

#include <atomic>
#include <cstring>
#include <filesystem>

static void testNow(struct timespec *now);
static void testSleep(uint32_t milliseconds);
static int logHeader(const char *text, std::string *out);

static constexpr int64_t TEST_EPOCH_MS = 1772352000000; // 2026-03-01 08:00:00 UTC
static std::atomic<int64_t> sleptMilliseconds{0};
static const CLOCK_SOURCE_T testClock = {testNow, testSleep};
static size_t logOffset = 0;

TEST_ROOT_T::TEST_ROOT_T()
{
    char name[] = "/tmp/dm_XXXXXX";
    if (mkdtemp(name) == nullptr || PathsInit(name, nullptr) != 0) {
        perror("test root");
        abort();
    }
    dir = name;
    for (const char *folder :
         {"tmp/kelo/kelo_ex", "mnt/application/kelo/tmp", "mnt/fastpath", "usr/local/appmgr/usr/share/kelo/oui",
          "usr/local/appmgr/usr/share/kelo/profileTemplate"})
        std::filesystem::create_directories(dir + "/" + folder);
    allocInstall();
    sleptMilliseconds = 0;
    ClockSourceSet(&testClock);
    processStateReset();
    logOffset = 0;
    LogInit(LOG_OPTION_FILE, 8, "kelo_cgi");
}

TEST_ROOT_T::~TEST_ROOT_T()
{
    allocFailStop();
    LogInit(0, 8, "kelo_cgi"); // closes the log file; the root stays current, so nothing outside is ever touched
    ClockSourceSet(nullptr);
    std::error_code ignored; // a test may have taken the rights away; the folder then stays
    std::filesystem::remove_all(dir, ignored);
}

void fileWrite(const std::string &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

bool fileExists(const std::string &path)
{
    return access(path.c_str(), F_OK) == 0;
}

std::string logText()
{
    std::string text = fileRead(PathGet(PATH_LOG));
    const char *at = text.c_str() + (logOffset <= text.size() ? logOffset : 0);
    std::string out;
    while (*at != '\0') {
        std::string header;
        int length = logHeader(at, &header);
        if (length > 0) {
            // a message without a line end runs on into the next header
            if (!out.empty() && out.back() != '\n')
                out += '\n';
            out += header;
            at += length;
        } else {
            if (!(at[0] == '\r' && at[1] == '\n'))
                out += *at;
            at++;
        }
    }
    return out;
}

void logClear()
{
    logOffset = fileRead(PathGet(PATH_LOG)).size();
}

void logLevelSet(char digit)
{
    OWNED_FILE level(fopen(PathGet(PATH_LOG_LEVEL), "r+"));
    if (level)
        fputc(digit, level.get());
}

std::string cacheRead(const std::string &apiName)
{
    RECORDS_T record;
    (void)recordsRead(PathGet(PATH_REST_DB), &record, apiName, 0); // a cache that cannot be read holds none
    return record[apiName];
}

std::string changeList()
{
    return fileRead(PathGet(PATH_REST_DELTA));
}

std::string compact(const std::string &json)
{
    OWNED_JSON tree(cJSON_Parse(json.c_str()));
    if (!tree)
        return "(not JSON)";
    OWNED_TEXT text(cJSON_PrintUnformatted(tree.get()));
    return text ? text.get() : "(not JSON)";
}

unsigned sleptSeconds()
{
    return static_cast<unsigned>(sleptMilliseconds.load() / 1000);
}

static void testNow(struct timespec *now)
{
    int64_t milliseconds = TEST_EPOCH_MS + sleptMilliseconds.load();
    now->tv_sec = static_cast<time_t>(milliseconds / 1000);
    now->tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
}

static void testSleep(uint32_t milliseconds)
{
    sleptMilliseconds += milliseconds;
}

// Length of the header at the begin of the text, with its short form in *out; 0 when there is none.
// 2026-03-01 08:15:02.042 (INFO): kelo_cgi: [DmInit:91] Successfully created thread <TMR>
static int logHeader(const char *text, std::string *out)
{
    int year, month, day, hour, minute, second, milliseconds, line;
    char level[16] = "";
    char name[128] = "";
    int end = 0;
    if (text[0] < '0' || text[0] > '9' ||
        sscanf(text, "%4d-%2d-%2d %2d:%2d:%2d.%3d (%15[A-Z]): %*63[^:]: [%127[^]:]:%d]%n", &year, &month, &day, &hour,
               &minute, &second, &milliseconds, level, name, &line, &end) != 10 ||
        end == 0)
        return 0;
    *out = std::string("(") + level + ") " + name + ": ";
    return end + (text[end] == ' ' ? 1 : 0);
}
