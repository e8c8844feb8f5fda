#include "sweep.h"

// What the daemon opens stands in folders where anybody may put things. In the place of each of its files stands, one
// after the other, a link, a folder, a pipe and a foreign file while everything is built: nothing waits, nothing
// outside the root is made or changed, documents that do not need the file are as they were, and all recover once it
// has gone.

#include "restcache/monitor.h"
#include "restcache/store.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "switch/session.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

enum PLACE_KIND : int {
    PLACE_LINK_DANGLING,
    PLACE_LINK_FILE,
    PLACE_LINK_FOLDER,
    PLACE_FOLDER,
    PLACE_PIPE,
    PLACE_GARBAGE,
    PLACE_COUNT
};
static const char *const kindNames[PLACE_COUNT] = {
    "a link to nothing", "a link to a file outside", "a link to a folder outside", "a folder", "a pipe", "garbage",
};

// Files whose place decides what documents hold.
struct NEEDED_T {
    PATH_ID path;
    const char *documents; // records that may differ, each between blanks; "*": all, for what is the cache itself
};
static const NEEDED_T neededTable[] = {
    {PATH_REST_DB, "*"},
    {PATH_REST_JOURNAL, "*"}, // a folder cannot be put out of the way
    {PATH_VLANINFO_DB, " profile/list_ex swcfg_ports_settings swcfg_ports_status vlan_list "},
    {PATH_TEMPLATE_DIR, " profile "},
    {PATH_EXPORT_DIR, " profile/list_ex "},
    {PATH_CLOCK_CONFIG, " device_time "},
    {PATH_MANUAL_TRUNK, " sw_manual_trunk_cfg "},
    {PATH_BOOTVAR_LOCK, " imageInfo "},
    // a folder that holds something stays, and the platform cannot write
    {PATH_SHOW_BOOTVAR, " imageInfo "},
    {PATH_SHOW_PORT_STATUS, " swcfg_port "},
    {PATH_SHOW_COUNTERS, " swcfg_port "},
    {PATH_SHOW_STACK_CAPABLE, " swcfg_port "},
    {PATH_SHOW_INTERFACES_STATUS, " swcfg_ports_settings swcfg_ports_status "},
    {PATH_SHOW_FEC, " swcfg_ports_settings swcfg_ports_status "},
    {PATH_SHOW_ADVERTISE, " swcfg_ports_status "},
    {PATH_SHOW_STP_SUMMARY, " swcfg_ports_status "},
    {PATH_SHOW_DOT1AS, " vlan_list "},
    {PATH_SHOW_VLAN_PORT, " swcfg_ports_status "},
    {PATH_SHOW_VLAN_FAST, " swcfg_port "},
};

struct PLACE_T {
    std::string path;
    std::string kept; // where what stood there waits; "" when nothing did
};

static std::string outsideMake();
static NAMES_T outsideLook(const std::string &outside);
static PLACE_T placeTake(const std::string &path);
static void placeFill(const PLACE_T &place, PLACE_KIND kind, const std::string &outside);
static void placeRestore(const PLACE_T &place);
static void placeRun(SWEEP_T *sweep, PATH_ID id, PLACE_KIND kind, const SNAPSHOT_T &clean);
static void recordsJudge(SWEEP_T *sweep, PATH_ID id, const SNAPSHOT_T &clean);
static void allRunSilent();
static void daemonBegin();
static const NEEDED_T *neededBy(PATH_ID id);

void placesFailures(SWEEP_T *sweep, unsigned part, unsigned parts)
{
    coldBegin();
    documentsRunAll();
    SNAPSHOT_T clean = snapshotTake();

    for (unsigned id = part; id < PATH_COUNT; id += parts) {
        for (int kind = 0; kind < PLACE_COUNT; kind++) {
            std::string path = PathGet(static_cast<PATH_ID>(id));
            if (runWanted(sweep, "in place of " + path + " " + kindNames[kind]))
                placeRun(sweep, static_cast<PATH_ID>(id), static_cast<PLACE_KIND>(kind), clean);
        }
    }
}

static void placeRun(SWEEP_T *sweep, PATH_ID id, PLACE_KIND kind, const SNAPSHOT_T &clean)
{
    std::string outside = outsideMake();
    NAMES_T before = outsideLook(outside);

    recordsWrite(clean.records);
    coldBegin();
    LogInit(0, 8, "devmgr"); // lets go of its files
    PLACE_T place = placeTake(PathGet(id));
    placeFill(place, kind, outside);
    allRunSilent();
    if (outsideLook(outside) != before)
        finding(sweep, "something outside the root was made or changed");
    recordsJudge(sweep, id, clean);
    LogInit(0, 8, "devmgr");
    placeRestore(place);
    coldBegin();
    documentsRunAll();
    SNAPSHOT_T now = snapshotTake();
    for (const auto &[name, text] : clean.records) {
        if (now.records[name] != text)
            finding(sweep, "%s does not recover: %s", name.c_str(), difference(now.records[name], text));
    }
    if (now.descriptors != clean.descriptors)
        finding(sweep, "%zu descriptors, %zu before", now.descriptors, clean.descriptors);
    rootRemove(outside);
}

static void recordsJudge(SWEEP_T *sweep, PATH_ID id, const SNAPSHOT_T &clean)
{
    const NEEDED_T *needed = neededBy(id);

    if (needed != nullptr && needed->documents[0] == '*')
        return;
    RECORDS_T now = recordsRead();
    for (const auto &[name, text] : clean.records) {
        if (now[name] == text)
            continue;
        sweep->tally->changes++;
        if (needed == nullptr || std::string(needed->documents).find(" " + name + " ") == std::string::npos)
            finding(sweep, "%s changed: %s", name.c_str(), difference(now[name], text));
    }
}

// Without a log file its lines go to standard output, which is ours.
static void allRunSilent()
{
    fflush(stdout);
    OWNED_FD_T output(dup(STDOUT_FILENO));
    OWNED_FD_T nothing(open("/dev/null", O_WRONLY | O_CLOEXEC));

    (void)dup2(nothing.fd, STDOUT_FILENO);
    daemonBegin();
    documentsRunAll();
    fflush(stdout);
    (void)dup2(output.fd, STDOUT_FILENO);
}

// As processBegin, but without writing any file of another program.
static void daemonBegin()
{
    processStateReset();
    LogInit(LOG_OPTION_FILE, 8, "devmgr");
    (void)initHandler("places", monitorClientHandle());           // a failure shows as documents that are not there
    (void)restapi_db_operation(REST_DB_CREATE, nullptr, nullptr); // likewise
}

static std::string outsideMake()
{
    char name[] = "/tmp/dm_XXXXXX";

    if (mkdtemp(name) == nullptr)
        exit(2);
    std::string outside = name;
    textWrite(outside + "/file", "of somebody else\n");
    std::filesystem::create_directory(outside + "/folder");
    textWrite(outside + "/folder/file", "of somebody else\n");
    return outside;
}

// Names with their texts.
static NAMES_T outsideLook(const std::string &outside)
{
    NAMES_T names;

    for (const auto &entry : std::filesystem::recursive_directory_iterator(outside))
        names.insert(entry.path().string() + ": " + (entry.is_regular_file() ? textRead(entry.path()) : ""));
    return names;
}

static PLACE_T placeTake(const std::string &path)
{
    PLACE_T place = {path, ""};

    if (place.path.back() == '/')
        place.path.pop_back();
    std::filesystem::create_directories(std::filesystem::path(place.path).parent_path());
    if (std::filesystem::exists(std::filesystem::symlink_status(place.path))) {
        place.kept = place.path + ".kept";
        std::filesystem::rename(place.path, place.kept);
    }
    return place;
}

static void placeFill(const PLACE_T &place, PLACE_KIND kind, const std::string &outside)
{
    static const char garbage[] = "\x7f\0{[\"%s%n\xff garbage\n";

    switch (kind) {
    case PLACE_LINK_DANGLING:
        std::filesystem::create_symlink(outside + "/none", place.path);
        break;
    case PLACE_LINK_FILE:
        std::filesystem::create_symlink(outside + "/file", place.path);
        break;
    case PLACE_LINK_FOLDER:
        std::filesystem::create_symlink(outside + "/folder", place.path);
        break;
    case PLACE_FOLDER:
        std::filesystem::create_directory(place.path);
        textWrite(place.path + "/file", "holds the folder\n"); // an empty one could be removed
        break;
    case PLACE_PIPE:
        (void)mkfifo(place.path.c_str(), 0666); // the run then finds nothing
        break;
    case PLACE_GARBAGE:
    case PLACE_COUNT:
        textWrite(place.path, std::string(garbage, sizeof(garbage) - 1));
        break;
    }
}

static void placeRestore(const PLACE_T &place)
{
    std::filesystem::remove_all(place.path);
    if (!place.kept.empty())
        std::filesystem::rename(place.kept, place.path);
}

static const NEEDED_T *neededBy(PATH_ID id)
{
    const NEEDED_T *end = std::end(neededTable);
    const NEEDED_T *found =
        std::find_if(std::begin(neededTable), end, [id](const NEEDED_T &row) { return row.path == id; });

    return found == end ? nullptr : found;
}
