// fuzz_files: what other programs leave in files and databases, and rows on their way into chunks. The first line names
// the kind, the rest is the file, or rows of a table: one a line, its fields apart by tabs.

#include "target.h"

#include "restcache/chunks.h"
#include "restcache/notify.h"
#include "restcache/store.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/paths.h"

#include <cstring>
#include <unistd.h>

namespace {
using TEXT_T = std::string_view;

struct KIND_T {
    const char *name;
    PATH_ID file;
    const char *inFolder; // file name behind a path that is a folder
    void (*put)(const std::string &path, TEXT_T text);
    void (*use)(); // besides the documents
    std::vector<const char *> documents;
};
} // namespace

static void filePut(const std::string &path, TEXT_T text);
static void vlanInfoPut(const std::string &path, TEXT_T text);
static void ouiPut(const std::string &path, TEXT_T text);
static void rowsPut(const std::string &path, TEXT_T text, const char *statement, int fields);
static void chunksPut(const std::string &path, TEXT_T text);
static void logUse();
static const KIND_T &kindNamed(TEXT_T name);

static const std::vector<const char *> profileDocuments = {"vlan_list", "profile/list_ex", "port_vendor_detect"};
static const KIND_T kinds[] = {
    {"level", PATH_LOG_LEVEL, "", filePut, logUse, {}},
    {"id", PATH_WS_PID, "", filePut, send_signal_to_ws, {}},
    {"fiber request", PATH_FIBER_REQUEST, "", filePut, nullptr, {"fiberOptics"}},
    {"manual trunk", PATH_MANUAL_TRUNK, "", filePut, nullptr, {"sw_manual_trunk_cfg"}},
    {"shure", PATH_SHURE_CONFIG, "", filePut, nullptr, {"swcfg_port"}},
    {"clock", PATH_CLOCK_CONFIG, "", filePut, nullptr, {"device_time"}},
    {"template", PATH_TEMPLATE_DIR, "Audio_Dante", filePut, nullptr, {"profile", "vlan_list"}},
    {"export", PATH_EXPORT_DIR, "Audio_Dante", filePut, nullptr, {"profile/list_ex"}},
    {"vlanInfo rows", PATH_VLANINFO_DB, "", vlanInfoPut, nullptr, profileDocuments},
    {"vlanInfo file", PATH_VLANINFO_DB, "", filePut, nullptr, profileDocuments},
    {"OUI rows", PATH_OUI_DB, "", ouiPut, nullptr, {"neighbor_ex", "port_vendor_detect"}},
    {"OUI file", PATH_OUI_DB, "", filePut, nullptr, {"neighbor_ex"}},
    {"chunk rows", PATH_SHURE_CONFIG, "", chunksPut, nullptr, {}},
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    targetBegin();
    INPUT_T input = inputSplit(data, size);
    const KIND_T &kind = kindNamed(input.head);
    std::string path = PathGet(kind.file) + std::string(kind.inFolder);
    bool wasThere = access(path.c_str(), F_OK) == 0;
    std::string before = textRead(path);

    kind.put(path, input.rest);
    targetCold();
    if (kind.use != nullptr)
        kind.use();
    for (const char *document : kind.documents)
        documentCheck(documentNamed(document));
    if (wasThere)
        textWrite(path, before);
    else
        unlink(path.c_str());
    return 0;
}

// The files as they are in a seeded root, and texts that none of them should hold.
std::vector<std::string> targetSeeds()
{
    static const std::string texts[] = {
        "",
        "0",
        "7",
        "1234 1235\n",
        "{}",
        "[]",
        "[[[[{\"a\":[null,true,-1.5e300,\"\\u0000\\ud83d\"]}]]]]",
        "{\"shureDevicePort\":[1,-1,99999999999,\"x\"],\"physicalPort\":[1],\"lagPort\":{\"a\":null}}",
        "{\"switchConfig\":{\"clock\":{\"timezone\":\"" + std::string(300, 'Z') + "\"}}}",
        "10\t2\tStage \"A\"\tAudio Dante\t#43A047\n20\t-1\t" + std::string(300, '\xe2') + "\t../x\t#\nx\t\t\t\t\n",
        "00:1D:C1\t" + std::string(31, 'a') + "\xc3\xa9\n00:0E:14\t\"\n\t\n",
    };
    std::vector<std::string> seeds;

    targetBegin();
    for (const KIND_T &kind : kinds) {
        std::string path = PathGet(kind.file) + std::string(kind.inFolder);
        if (kind.put == filePut)
            seeds.push_back(kind.name + ("\n" + textRead(path)));
        for (const std::string &text : texts)
            seeds.push_back(kind.name + ("\n" + text));
    }
    return seeds;
}

static const KIND_T &kindNamed(TEXT_T name)
{
    static std::vector<std::string> names;

    if (names.empty()) {
        for (const KIND_T &kind : kinds)
            names.emplace_back(kind.name);
    }
    return kinds[nameIndex(name, names)];
}

static void filePut(const std::string &path, TEXT_T text)
{
    textWrite(path, std::string(text));
}

static void vlanInfoPut(const std::string &path, TEXT_T text)
{
    rowsPut(path, text, "REPLACE INTO vlanInfo VALUES (?, ?, ?, ?, ?);", 5);
}

static void ouiPut(const std::string &path, TEXT_T text)
{
    rowsPut(path, text, "REPLACE INTO oui VALUES (?, ?);", 2);
}

// A field that is not there is NULL.
static void rowsPut(const std::string &path, TEXT_T text, const char *statement, int fields)
{
    sqlite3 *opened = nullptr;
    sqlite3_stmt *prepared = nullptr;

    (void)sqlite3_open(path.c_str(), &opened);
    OWNED_DB db(opened);
    sqlite3_exec(opened, "PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY; BEGIN;", nullptr, nullptr, nullptr);
    if (sqlite3_prepare_v2(opened, statement, -1, &prepared, nullptr) != SQLITE_OK) {
        fprintf(stderr, "%s: %s\n", path.c_str(), sqlite3_errmsg(opened));
        abort(); // the table is our own
    }
    OWNED_STATEMENT row(prepared);
    while (!text.empty()) {
        TEXT_T line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        for (int i = 1; i <= fields && !line.empty(); i++) {
            TEXT_T field = line.substr(0, line.find('\t'));
            line.remove_prefix(std::min(field.size() + 1, line.size()));
            sqlite3_bind_text(prepared, i, field.data(), static_cast<int>(field.size()), SQLITE_TRANSIENT);
        }
        (void)sqlite3_step(prepared); // a key that is there already, and the like
        sqlite3_reset(prepared);
        sqlite3_clear_bindings(prepared);
    }
    sqlite3_exec(opened, "COMMIT;", nullptr, nullptr, nullptr);
}

// Each pair of bytes is a row of so many bytes, times 7, so that a chunk's limits are met; ten chunks are enough.
static void chunksPut(const std::string &, TEXT_T text)
{
    for (CHUNK_KIND kind : {CHUNK_NEIGHBORS, CHUNK_MULTICAST_GROUPS}) {
        CHUNK_SINK_T sink;
        if (chunkBegin(&sink, kind) != 0)
            continue;
        size_t total = 0;
        for (size_t at = 0; at + 1 < text.size() && total < 10 * CHUNK_BUFFER_SIZE; at += 2) {
            size_t length = static_cast<unsigned char>(text[at]) * 256U + static_cast<unsigned char>(text[at + 1]);
            total += length * 7;
            std::string row = "\"" + std::string(length * 7, 'r') + "\"";
            chunkRowAdd(&sink, row.data(), row.size());
        }
        (void)chunkEnd(&sink); // a row too large fails the push
    }
}

static void logUse()
{
    for (int level : {LOG_LEVEL_ERROR, LOG_LEVEL_WARN, LOG_LEVEL_INFO, LOG_LEVEL_DEBUG})
        LogWrite(level, "%s\n", "one line");
}
