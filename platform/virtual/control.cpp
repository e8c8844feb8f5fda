#include "control.h"

#include "engine.h"
#include "vswitch.h"

#include <call_table.h>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>
#include <unordered_map>

// The engine behind every client call and show command: one scenario, one lock, the clock, faults, latency, call
// counts, and the re-reading of scenario files that change. The state itself is model.cpp's, scenario text is
// loader.cpp's.

namespace {

constexpr int64_t LOOK_EVERY_NS = 100'000'000; // how often files are looked at

// What tells one content of a file from the next.
struct STAMP_T {
    ino_t inode = 0;
    off_t size = -1; // no file
    int64_t modified = 0;
    bool operator==(const STAMP_T &other) const
    {
        return inode == other.inode && size == other.size && modified == other.modified;
    }
};

struct USE_T {
    uint64_t count = 0;
    uint32_t latency = 0;       // microseconds
    uint32_t room = UINT32_MAX; // least that was offered for a text
};

struct ENGINE_T {
    std::recursive_mutex lock;
    uint32_t depth = 0; // of calls within calls; a scenario is replaced between calls only

    bool loaded = false;
    VS_SCENARIO_T scenario;
    std::vector<uint32_t> faultUses; // beside scenario.faults

    std::deque<std::string> names; // what the views in `uses` point to
    std::unordered_map<std::string_view, USE_T> uses;
    uint64_t calls = 0;
    VS_OBSERVER_T observer = nullptr;
    void *context = nullptr;

    bool frozen = false;
    double frozenAt = 0;

    std::string path; // of the scenario; "" when it came as a text
    std::vector<STAMP_T> stamps;
    int64_t lookedAt = 0;
    std::string complaint; // the last one printed
};

// Never destroyed: tasks of a process that ends may still be calling.
ENGINE_T &engine()
{
    static ENGINE_T *const one = new ENGINE_T;
    return *one;
}

using GUARD_T = std::lock_guard<std::recursive_mutex>;

int64_t nanoseconds(clockid_t id)
{
    timespec now{};
    clock_gettime(id, &now);
    return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

double clockNow(const ENGINE_T &e)
{
    if (e.frozen)
        return e.frozenAt;
    int64_t since = nanoseconds(CLOCK_REALTIME) - e.scenario.state.epoch * 1'000'000'000;
    return since > 0 ? static_cast<double>(since) / 1e9 : 0;
}

USE_T &use(ENGINE_T &e, std::string_view name)
{
    auto found = e.uses.find(name);
    if (found != e.uses.end())
        return found->second;
    e.names.emplace_back(name);
    USE_T &made = e.uses[e.names.back()];
    auto slow = e.scenario.latency.find(e.names.back());
    made.latency = slow != e.scenario.latency.end() ? slow->second : 0;
    return made;
}

void latencyApply(ENGINE_T &e)
{
    for (auto &[name, one] : e.uses) {
        auto slow = e.scenario.latency.find(std::string(name));
        one.latency = slow != e.scenario.latency.end() ? slow->second : 0;
    }
}

STAMP_T stampOf(const std::string &path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return {};
    return {status.st_ino, status.st_size, int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
}

std::vector<STAMP_T> stampsOf(const std::vector<std::string> &files)
{
    std::vector<STAMP_T> stamps;
    for (const std::string &file : files)
        stamps.push_back(stampOf(file));
    return stamps;
}

void install(ENGINE_T &e, VS_SCENARIO_T &&scenario)
{
    e.scenario = std::move(scenario);
    if (const char *epoch = getenv("VSWITCH_EPOCH"))
        e.scenario.state.epoch = strtoll(epoch, nullptr, 10);
    e.faultUses.assign(e.scenario.faults.size(), 0);
    e.loaded = true;
    latencyApply(e);
}

void countersClear(ENGINE_T &e)
{
    e.calls = 0;
    for (auto &[name, one] : e.uses) {
        one.count = 0;
        one.room = UINT32_MAX;
    }
}

// A file that changed while it was being read is seen by its stamp from before the reading, and is read again.
void rereadIfChanged(ENGINE_T &e)
{
    int64_t now = nanoseconds(CLOCK_MONOTONIC_COARSE);
    if (e.path.empty() || now - e.lookedAt < LOOK_EVERY_NS)
        return;
    e.lookedAt = now;
    std::vector<STAMP_T> stamps = stampsOf(e.scenario.files);
    if (stamps == e.stamps)
        return;
    VS_SCENARIO_T fresh;
    std::string error = vsScenarioRead(e.path, fresh);
    if (error.empty()) {
        e.stamps = fresh.files == e.scenario.files ? stamps : stampsOf(fresh.files);
        if (!e.complaint.empty())
            fprintf(stderr, "vswitch: %s: right again, and read\n", e.path.c_str());
        e.complaint.clear();
        install(e, std::move(fresh));
        return;
    }
    e.stamps = fresh.files == e.scenario.files ? stamps : stampsOf(fresh.files);
    e.scenario.files = fresh.files;
    if (error != e.complaint)
        fprintf(stderr, "vswitch: %s (the last good scenario stays)\n", error.c_str());
    e.complaint = error;
}

bool faultMatches(const VS_FAULT_T &fault, std::string_view name, const std::string &key, bool isCommand)
{
    std::string_view plain = opencltPlainName(fault.name);
    if (isCommand && plain == name)
        return fault.key.empty();
    if (plain != "*" && plain != (isCommand ? std::string_view("openapiCliShowExecuteToFile") : name))
        return false;
    return fault.key.empty() || fault.key == key;
}

// Every matching fault counts the use; the first one that acts is it.
const VS_FAULT_T *faultOf(ENGINE_T &e, std::string_view name, const std::string &key, bool isCommand)
{
    const VS_FAULT_T *acting = nullptr;
    double now = clockNow(e);
    for (size_t i = 0; i < e.scenario.faults.size(); i++) {
        const VS_FAULT_T &fault = e.scenario.faults[i];
        if (now < fault.from || (fault.until > 0 && now >= fault.until) || !faultMatches(fault, name, key, isCommand))
            continue;
        uint32_t nth = ++e.faultUses[i];
        if (acting == nullptr && (fault.nth == 0 || fault.nth == nth))
            acting = &fault;
    }
    return acting;
}

void waitMicroseconds(uint32_t microseconds)
{
    timespec wait{static_cast<time_t>(microseconds / 1'000'000), static_cast<long>(microseconds % 1'000'000) * 1000};
    while (nanosleep(&wait, &wait) != 0)
        ;
}

// Takes the lock, counts, waits (others may go on meanwhile), looks for changed files.
const VS_FAULT_T *useBegin(std::string_view name, const std::function<std::string()> &key, bool isCommand)
{
    ENGINE_T &e = engine();
    e.lock.lock();
    USE_T &one = use(e, name);
    one.count++;
    e.calls++;
    if (isCommand)
        use(e, "openapiCliShowExecuteToFile").count++;
    if (one.latency > 0 && e.depth == 0) {
        uint32_t latency = one.latency;
        e.lock.unlock();
        waitMicroseconds(latency);
        e.lock.lock();
    }
    if (e.depth++ == 0)
        rereadIfChanged(e);
    if (e.observer == nullptr && e.scenario.faults.empty())
        return nullptr;
    std::string text = key();
    if (e.observer != nullptr)
        e.observer(e.context, std::string(name).c_str(), text.c_str(), isCommand);
    return faultOf(e, name, text, isCommand);
}

// Before main: a process whose scenario does not load does not start.
__attribute__((constructor)) void loadFromEnvironment()
{
    if (const char *time = getenv("VSWITCH_TIME"))
        vsClockSet(strtod(time, nullptr));
    const char *path = getenv("VSWITCH_SCENARIO");
    if (path == nullptr || *path == '\0')
        return;
    std::string error = vsLoadFile(path);
    if (error.empty())
        return;
    fprintf(stderr, "%s\n", error.c_str());
    _exit(2);
}

} // namespace

std::string vsLoadText(const std::string &json, const std::string &name)
{
    VS_SCENARIO_T scenario;
    std::string error = vsScenarioParse(json, name, "", scenario);
    if (!error.empty())
        return error;
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    e.path.clear();
    install(e, std::move(scenario));
    countersClear(e);
    return "";
}

std::string vsLoadFile(const std::string &path)
{
    VS_SCENARIO_T scenario;
    std::string error = vsScenarioRead(path, scenario);
    if (!error.empty())
        return error;
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    e.path = path;
    e.stamps = stampsOf(scenario.files);
    e.lookedAt = nanoseconds(CLOCK_MONOTONIC_COARSE);
    e.complaint.clear();
    install(e, std::move(scenario));
    countersClear(e);
    return "";
}

void vsUnload()
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    e.loaded = false;
    e.path.clear();
    e.scenario = VS_SCENARIO_T();
    e.faultUses.clear();
    latencyApply(e);
    countersClear(e);
}

VS_STATE_T &vsState()
{
    return engine().scenario.state;
}

void vsClockSet(double seconds)
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    e.frozen = true;
    e.frozenAt = seconds > 0 ? seconds : 0;
}

void vsClockRun()
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    e.frozen = false;
}

double vsClock()
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    return clockNow(e);
}

void vsFaultAdd(const VS_FAULT_T &fault)
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    e.scenario.faults.push_back(fault);
    e.faultUses.push_back(0);
}

void vsFaultsClear()
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    e.scenario.faults.clear();
    e.faultUses.clear();
}

void vsTextSet(const std::string &command, const std::string &text)
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    e.scenario.texts[command] = text;
}

void vsTextsClear()
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    e.scenario.texts.clear();
}

std::string vsShowText(const std::string &command)
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    std::string text;
    return e.loaded && vsShow(command, text) ? text : "";
}

void vsObserverSet(VS_OBSERVER_T observer, void *context)
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    e.observer = observer;
    e.context = context;
}

uint64_t vsCallCount(const std::string &name)
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    if (name.empty())
        return e.calls;
    auto found = e.uses.find(opencltPlainName(name));
    return found != e.uses.end() ? found->second.count : 0;
}

uint32_t vsRoomOffered(const std::string &name)
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    return use(e, opencltPlainName(name)).room;
}

void vsCallsReset()
{
    ENGINE_T &e = engine();
    GUARD_T guard(e.lock);
    countersClear(e);
}

bool vsLiteral(const std::string &command, std::string &text)
{
    const auto &texts = engine().scenario.texts;
    auto found = texts.find(command);
    if (found == texts.end())
        return false;
    text = found->second;
    return true;
}

VS_CALL_T::VS_CALL_T(const char *name, const std::function<std::string()> &keyText, bool isCommand)
    : fault(useBegin(isCommand ? name : opencltPlainName(name), keyText, isCommand)), result(OPENCLT_OK)
{
    if (!engine().loaded)
        result = OPENCLT_FAIL;
    else if (fault != nullptr && (isCommand ? fault->kind == VS_FAIL : fault->kind != VS_ANSWER))
        result = fault->result;
}

VS_CALL_T::~VS_CALL_T()
{
    ENGINE_T &e = engine();
    e.depth--;
    e.lock.unlock();
}

void VS_CALL_T::roomNote(const char *name, uint32_t room) const
{
    uint32_t &least = use(engine(), opencltPlainName(name)).room;
    least = std::min(least, room);
}

const VS_STATE_T &VS_CALL_T::state() const
{
    return engine().scenario.state;
}

double VS_CALL_T::now() const
{
    return clockNow(engine());
}

int vsTextOut(const std::string &text, openclt_buffer_t *buffer)
{
    return vsBytesOut(text.c_str(), static_cast<uint32_t>(text.size() + 1), buffer);
}

int vsBytesOut(const void *bytes, uint32_t length, openclt_buffer_t *buffer)
{
    if (buffer == nullptr || buffer->bytes == nullptr || length > buffer->size)
        return OPENCLT_FAIL;
    memcpy(buffer->bytes, bytes, length);
    buffer->size = length;
    return OPENCLT_OK;
}

std::string vsTextIn(const openclt_buffer_t *buffer)
{
    if (buffer == nullptr || buffer->bytes == nullptr)
        return "";
    return std::string(buffer->bytes, strnlen(buffer->bytes, buffer->size));
}

std::string vsFormat(const char *format, ...)
{
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    int length = vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    std::string text;
    if (length >= static_cast<int>(sizeof line)) {
        text.resize(static_cast<size_t>(length));
        vsnprintf(text.data(), text.size() + 1, format, again);
    } else if (length > 0) {
        text.assign(line, static_cast<size_t>(length));
    }
    va_end(again);
    return text;
}
