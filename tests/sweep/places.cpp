#include "sweep.h"

// What the daemon opens stands in folders where anybody may put things. In the place of each of its files stands, one
// after the other, a link, a folder, a pipe and a foreign file while everything is built: nothing waits, nothing
// outside the root is made or changed, documents that do not need the file are as they were, and all recover once it
// has gone.

#include "restcache/cycle.h"
#include "restcache/store.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "switch/session.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

enum PLACE_KIND : int {
    PLACE_LINK_DANGLING,
    PLACE_LINK_FILE,
    PLACE_LINK_FOLDER,
    PLACE_FOLDER,
    PLACE_PIPE,
    PLACE_GARBAGE,
    PLACE_FOREIGN,   // of another user
    PLACE_HARD_LINK, // to a file outside
    PLACE_COUNT
};
static const char *const kindNames[PLACE_COUNT] = {
    "a link to nothing",
    "a link to a file outside",
    "a link to a folder outside",
    "a folder",
    "a pipe",
    "garbage",
    "a foreign file",
    "a hard link",
};

// Files whose place decides what documents hold.
struct NEEDED_T {
    PATH_ID path;
    const char *documents; // records that may differ, each between blanks; "*": all, unless it is foreign
};
static const NEEDED_T neededTable[] = {
    // what root has put there is not taken away
    {PATH_REST_DB, "*"},
    {PATH_LOCK_DIR, "*"},
    {PATH_BOOTVAR_LOCK, " imageInfo "},
    {PATH_VLANINFO_DB, " profile/list_ex swcfg_ports_settings swcfg_ports_status vlan_list "},
    {PATH_TEMPLATE_DIR, " profile "},
    {PATH_EXPORT_DIR, " profile/list_ex "},
    {PATH_CLOCK_CONFIG, " device_time "},
    {PATH_MANUAL_TRUNK, " sw_manual_trunk_cfg "},
};

// Further places, named after a path: where SQLite looks beside a database, and the lock of a document.
static const struct {
    PATH_ID path;
    const char *end;
} besideTable[] = {
    {PATH_REST_DB, "-journal"},           {PATH_REST_DB, "-wal"},     {PATH_REST_DB, "-shm"},
    {PATH_VLANINFO_DB, "-journal"},       {PATH_VLANINFO_DB, "-wal"}, {PATH_VLANINFO_DB, "-shm"},
    {PATH_LOCK_DIR, "/system_info.lock"},
};

struct PLACE_T {
    std::string path;
    std::string kept; // where what stood there waits; "" when nothing did
    OWNED_FD_T lock;  // held by the other user on its file
};

static std::string outsideMake();
static NAMES_T outsideLook(const std::string &outside);
static void placeTake(PLACE_T *place, const std::string &path);
static void placeFill(PLACE_T *place, PLACE_KIND kind, const std::string &outside);
static void placeRestore(PLACE_T *place);
static void placesOf(SWEEP_T *sweep, const std::string &path, const NEEDED_T *needed, const SNAPSHOT_T &clean);
static void placeRun(SWEEP_T *sweep, const std::string &path, const NEEDED_T *needed, PLACE_KIND kind,
                     const SNAPSHOT_T &clean);
static void recordsJudge(SWEEP_T *sweep, const NEEDED_T *needed, PLACE_KIND kind, const SNAPSHOT_T &clean);
static void allRunSilent();
static void daemonBegin();
static const NEEDED_T *neededBy(PATH_ID id);

void placesFailures(SWEEP_T *sweep, unsigned part, unsigned parts)
{
    coldBegin();
    documentsRunAll();
    SNAPSHOT_T clean = snapshotTake();

    for (unsigned id = part; id < PATH_COUNT; id += parts)
        placesOf(sweep, PathGet(static_cast<PATH_ID>(id)), neededBy(static_cast<PATH_ID>(id)), clean);
    for (unsigned i = part; i < std::size(besideTable); i += parts)
        placesOf(sweep, std::string(PathGet(besideTable[i].path)) + besideTable[i].end,
                 besideTable[i].path == PATH_LOCK_DIR ? neededBy(PATH_LOCK_DIR) : nullptr, clean);
}

static void placesOf(SWEEP_T *sweep, const std::string &path, const NEEDED_T *needed, const SNAPSHOT_T &clean)
{
    for (int kind = 0; kind < PLACE_COUNT; kind++) {
        if (kind == PLACE_FOREIGN && geteuid() != 0)
            continue; // only root can give a file away
        if (runWanted(sweep, "in place of " + path + " " + kindNames[kind]))
            placeRun(sweep, path, needed, static_cast<PLACE_KIND>(kind), clean);
    }
}

// Everything is built from nothing, so that a change that gets lost is seen.
static void placeRun(SWEEP_T *sweep, const std::string &path, const NEEDED_T *needed, PLACE_KIND kind,
                     const SNAPSHOT_T &clean)
{
    std::string outside = outsideMake();
    NAMES_T before = outsideLook(outside);
    PLACE_T place;

    recordsWrite({});
    coldBegin();
    LogInit(0, 8, "devmgr"); // lets go of its files
    placeTake(&place, path);
    placeFill(&place, kind, outside);
    allRunSilent();
    if (outsideLook(outside) != before)
        finding(sweep, "something outside the root was made or changed");
    recordsJudge(sweep, needed, kind, clean);
    LogInit(0, 8, "devmgr");
    placeRestore(&place);
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

static void recordsJudge(SWEEP_T *sweep, const NEEDED_T *needed, PLACE_KIND kind, const SNAPSHOT_T &clean)
{
    RECORDS_T now = recordsRead();
    if (needed != nullptr && needed->documents[0] == '*' && kind != PLACE_FOREIGN)
        return;
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

static void placeTake(PLACE_T *place, const std::string &path)
{
    place->path = path;
    if (place->path.back() == '/')
        place->path.pop_back();
    std::filesystem::create_directories(std::filesystem::path(place->path).parent_path());
    if (std::filesystem::exists(std::filesystem::symlink_status(place->path))) {
        place->kept = place->path + ".kept";
        std::filesystem::rename(place->path, place->kept);
    }
}

static void placeFill(PLACE_T *place, PLACE_KIND kind, const std::string &outside)
{
    const std::string &path = place->path;
    static const char garbage[] = "\x7f\0{[\"%s%n\xff garbage\n";

    switch (kind) {
    case PLACE_LINK_DANGLING:
        std::filesystem::create_symlink(outside + "/none", path);
        break;
    case PLACE_LINK_FILE:
        std::filesystem::create_symlink(outside + "/file", path);
        break;
    case PLACE_LINK_FOLDER:
        std::filesystem::create_symlink(outside + "/folder", path);
        break;
    case PLACE_FOLDER:
        std::filesystem::create_directory(path);
        textWrite(path + "/file", "holds the folder\n"); // an empty one could be removed
        break;
    case PLACE_PIPE:
        (void)mkfifo(path.c_str(), 0666); // the run then finds nothing
        break;
    case PLACE_HARD_LINK:
        std::filesystem::create_hard_link(outside + "/file", path);
        break;
    case PLACE_FOREIGN:
        textWrite(path, std::string(garbage, sizeof(garbage) - 1));
        place->lock.fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
        (void)flock(place->lock.fd, LOCK_EX);        // for as long as the run lasts
        (void)!fchown(place->lock.fd, 65534, 65534); // as root
        std::filesystem::remove_all(path + ".bad");
        std::filesystem::create_hard_link(path, path + ".bad"); // where it would be moved to
        break;
    case PLACE_GARBAGE:
    case PLACE_COUNT:
        textWrite(path, std::string(garbage, sizeof(garbage) - 1));
        break;
    }
}

static void placeRestore(PLACE_T *place)
{
    if (place->lock.fd >= 0)
        close(place->lock.release());
    std::filesystem::remove_all(place->path);
    std::filesystem::remove_all(place->path + ".bad");
    if (!place->kept.empty())
        std::filesystem::rename(place->kept, place->path);
}

static const NEEDED_T *neededBy(PATH_ID id)
{
    const NEEDED_T *end = std::end(neededTable);
    const NEEDED_T *found =
        std::find_if(std::begin(neededTable), end, [id](const NEEDED_T &row) { return row.path == id; });

    return found == end ? nullptr : found;
}
