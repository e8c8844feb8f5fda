#include "target.h"

// Setting up and judging. The store is replaced by one that looks at each text and forgets it (the linker's --wrap), so
// a run writes no database; signals to the websocket server are swallowed, since their target comes from the input.

#include "documents.h"
#include "restcache/store.h"
#include "runtime/clock.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"

#include <algorithm>
#include <control.h>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <iconv.h>
#include <model.h>
#include <sys/syscall.h>
#include <unistd.h>

static std::string root;
static bool storeReplaced; // the table is made in the real store

static void rootEnd();
static void timeNow(struct timespec *now);
static void timeSleep(uint32_t milliseconds);
static const char *jsonFault(const char *name, const char *text);
static bool utf8Throughout(const char *text);
static bool controlsEscaped(const char *text);
static int nextDescriptor();

// Waiting takes no time, so a request of another process never grows old.
static const CLOCK_SOURCE_T stillClock = {timeNow, timeSleep};

// Reports of undefined behaviour end the run that caused them.
extern "C" const char *__ubsan_default_options()
{
    return "halt_on_error=1:print_stacktrace=1";
}

void targetBegin()
{
    if (!root.empty())
        return;
    const std::string scenario = FUZZ_DIR "/switch.json";
    root = rootSeed(scenario);
    documentsRegister();
    if (root.empty() || !switchUse(root, scenario))
        abort();
    ClockSourceSet(&stillClock);
    atexit(rootEnd);
    processBegin();
    storeReplaced = true;
}

INPUT_T inputSplit(const uint8_t *data, size_t size)
{
    std::string_view text(reinterpret_cast<const char *>(data), size);
    size_t end = std::min(text.find('\n'), size);

    return {text.substr(0, end), text.substr(std::min(end + 1, size))};
}

size_t nameIndex(std::string_view name, const std::vector<std::string> &names)
{
    auto found = std::find(names.begin(), names.end(), name);
    if (found != names.end())
        return static_cast<size_t>(found - names.begin());
    uint32_t sum = 0;
    for (char c : name)
        sum = sum * 31 + static_cast<unsigned char>(c);
    return sum % names.size();
}

const std::vector<std::string> &documentNames()
{
    static std::vector<std::string> names;

    if (names.empty()) {
        for (const DOCUMENT_T &document : documentsListed())
            names.emplace_back(document.name);
    }
    return names;
}

const DOCUMENT_T &documentNamed(std::string_view name)
{
    static const std::vector<DOCUMENT_T> documents = documentsListed();

    return documents[nameIndex(name, documentNames())];
}

void targetCold()
{
    processStateReset();
    LogInit(LOG_OPTION_FILE, 8, "fuzz");
}

void documentCheck(const DOCUMENT_T &document)
{
    targetCold();
    int before = nextDescriptor();
    documentRun(document);
    if (nextDescriptor() == before)
        return;
    fprintf(stderr, "%s leaves a descriptor open\n", document.name);
    abort();
}

std::vector<std::pair<std::string, std::string>> folderRead(const std::string &folder)
{
    std::vector<std::pair<std::string, std::string>> texts;

    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file())
            texts.emplace_back(entry.path().filename(), textRead(entry.path()));
    }
    std::sort(texts.begin(), texts.end());
    return texts;
}

std::vector<std::string> shippedScenarios()
{
    std::vector<std::string> paths;

    for (const auto &entry : std::filesystem::directory_iterator(SCENARIO_DIR)) {
        if (entry.path().extension() == ".json")
            paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

// ---- what takes the place of the daemon's own ----

extern "C" int __real__Z20restapi_db_operationiPKcS0_(int operation, const char *apiName, const char *data);
extern "C" int __wrap__Z20restapi_db_operationiPKcS0_(int operation, const char *apiName, const char *data);
extern "C" long __real_syscall(long number, ...);
extern "C" long __wrap_syscall(long number, ...);

extern "C" int __wrap__Z20restapi_db_operationiPKcS0_(int operation, const char *apiName, const char *data)
{
    constexpr int WRITTEN = 101;

    if (!storeReplaced)
        return __real__Z20restapi_db_operationiPKcS0_(operation, apiName, data);
    if (operation != REST_DB_WRITE && operation != REST_DB_WRITE2)
        return 0;
    const char *fault = apiName == nullptr || data == nullptr ? "has no name or no text" : jsonFault(apiName, data);
    if (fault == nullptr)
        return WRITTEN;
    fprintf(stderr, "%s %s: %s\n", apiName == nullptr ? "record" : apiName, fault, data == nullptr ? "" : data);
    abort();
}

extern "C" long __wrap_syscall(long number, ...)
{
    long a[3];
    va_list arguments;

    va_start(arguments, number);
    for (long &one : a)
        one = va_arg(arguments, long);
    va_end(arguments);
    return number == SYS_tgkill ? 0 : __real_syscall(number, a[0], a[1], a[2]);
}

static void rootEnd()
{
    rootRemove(root);
}

static void timeNow(struct timespec *now)
{
    *now = {static_cast<time_t>(vsState().epoch + static_cast<int64_t>(FROZEN_AT)), 0};
}

static void timeSleep(uint32_t)
{
}

// Why a text is no document for a reader who goes by the letter; null when it is one. Log entries are copied byte for
// byte, so their document is as good as what was logged.
static const char *jsonFault(const char *name, const char *text)
{
    OWNED_JSON tree(cJSON_ParseWithOpts(text, nullptr, 1));

    if (tree == nullptr)
        return "does not parse";
    if (!utf8Throughout(text) && strcmp(name, "bufferedLog") != 0)
        return "is not UTF-8";
    return controlsEscaped(text) ? nullptr : "has a raw control character in a text";
}

// By the C library's decoder, which shares nothing with the daemon's.
static bool utf8Throughout(const char *text)
{
    static const iconv_t decoder = iconv_open("UTF-16LE", "UTF-8");
    char *in = const_cast<char *>(text);
    size_t left = strlen(text);

    while (left > 0) {
        char out[4096];
        char *to = out;
        size_t room = sizeof(out);
        if (iconv(decoder, &in, &left, &to, &room) == static_cast<size_t>(-1) && errno != E2BIG) {
            (void)iconv(decoder, nullptr, nullptr, nullptr, nullptr); // forgets the broken sequence
            return false;
        }
    }
    return true;
}

// The parser lets control characters pass inside texts; a browser's does not.
static bool controlsEscaped(const char *text)
{
    bool inside = false;

    for (; *text != '\0'; text++) {
        if (inside && *text == '\\')
            text++;
        else if (*text == '"')
            inside = !inside;
        else if (inside && static_cast<unsigned char>(*text) < ' ')
            return false;
    }
    return true;
}

static int nextDescriptor()
{
    int next = dup(STDERR_FILENO);

    close(next);
    return next;
}
