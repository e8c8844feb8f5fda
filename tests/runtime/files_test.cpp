#include "runtime/database.h"
#include "runtime/files.h"
#include "support/root.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

// What stands in the place of a file, made at a path; <outside> holds a file and a folder of somebody else.
struct PLACE_T {
    const char *what;
    void (*make)(const std::string &path, const std::string &outside);
};
static const PLACE_T places[] = {
    {"nothing",
     [](const std::string &, const std::string &) {
     }},
    {"a link to nothing",
     [](const std::string &path, const std::string &) {
         fs::create_symlink("/nowhere/x", path);
     }},
    {"a link to a file",
     [](const std::string &path, const std::string &outside) {
         fs::create_symlink(outside + "/file", path);
     }},
    {"a link to a folder",
     [](const std::string &path, const std::string &outside) {
         fs::create_symlink(outside, path);
     }},
    {"a folder",
     [](const std::string &path, const std::string &) {
         fs::create_directory(path);
     }},
    {"a pipe",
     [](const std::string &path, const std::string &) {
         (void)!mkfifo(path.c_str(), 0666);
     }},
    {"a file",
     [](const std::string &path, const std::string &) {
         fileWrite(path, "");
     }},
    {"a foreign file",
     [](const std::string &path, const std::string &) {
         fileWrite(path, "");
         (void)!chown(path.c_str(), 65534, 65534);
     }},
    {"a foreign link",
     [](const std::string &path, const std::string &outside) {
         fs::create_symlink(outside + "/file", path);
         (void)!lchown(path.c_str(), 65534, 65534);
     }},
    {"a hard link",
     [](const std::string &path, const std::string &outside) {
         fs::create_hard_link(outside + "/file", path);
     }},
};

static char asideName[FILE_ASIDE_SIZE];

static bool readOpens(const char *path)
{
    return OWNED_FILE(fileOpenRead(path)) != nullptr;
}

static bool readOwnOpens(const char *path)
{
    return OWNED_FILE(fileOpenReadOwn(path)) != nullptr;
}

static bool ownOpens(const char *path)
{
    return OWNED_FD_T(fileOpenOwn(path, 0, 0644, asideName)).fd >= 0;
}

static bool databaseOpens(DATABASE_KIND kind, const char *path)
{
    OWNED_DB db;
    return databaseOpen(kind, path, SQLITE_OPEN_READWRITE | (kind == DATABASE_OWN ? SQLITE_OPEN_CREATE : 0), &db) ==
               SQLITE_OK &&
           sqlite3_exec(db.get(), kind == DATABASE_OWN ? "create table t(x)" : "pragma schema_version", nullptr,
                        nullptr, nullptr) == SQLITE_OK;
}

// '+' opens what stands there, '-' opens nothing, 'a' moves it aside and opens a new file.
TEST(Files, AreOpenedByWhatStandsInTheirPlace)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can give a file away";
    const struct {
        const char *opener;
        bool (*opens)(const char *path);
        const char *results;  // of each place
        const char *end = ""; // of the name, for what SQLite opens beside a database
    } cases[] = {
        {"fileOpenRead", readOpens, "--+---++++"},
        {"fileOpenReadOwn", readOwnOpens, "------+---"},
        {"fileOpenOwn", ownOpens, "+-----+aaa"},
        {"own database", [](const char *path) { return databaseOpens(DATABASE_OWN, path); }, "+-----+aaa"},
        {"shared database", [](const char *path) { return databaseOpens(DATABASE_SHARED, path); }, "--+---++++"},
        {"journal", [](const char *path) { return databaseOpens(DATABASE_OWN, path); }, "+aaaaa+aaa", "-journal"},
        {"log", [](const char *path) { return databaseOpens(DATABASE_OWN, path); }, "+aaaaa+aaa", "-wal"},
    };
    for (const auto &one : cases) {
        std::string results;
        for (const PLACE_T &place : places) {
            TEST_ROOT_T root;
            const std::string outside = root.dir + "/outside", path = root.dir + "/tmp/x", at = path + one.end;
            fs::create_directory(outside);
            fileWrite(outside + "/file", ""); // which is a database, too
            place.make(at, outside);
            const bool opened = one.opens(path.c_str()), moved = fs::exists(fs::symlink_status(at + ".bad"));
            results += moved ? 'a' : opened ? '+' : '-';
            EXPECT_TRUE(opened || !moved) << one.opener << ", " << place.what;
            EXPECT_EQ(fileRead(outside + "/file"), "") << one.opener << ", " << place.what;
            EXPECT_EQ(std::distance(fs::directory_iterator(outside), fs::directory_iterator()), 1) << place.what;
        }
        EXPECT_EQ(results, one.results) << one.opener;
    }
}

// Everything else opens through these.
TEST(Files, NothingOutsideThemOpens)
{
    const std::regex text("\"[^\"]*\"|//.*");
    const std::regex opens(R"(\b(open|openat|creat|fopen|freopen|opendir|scandir|mkstemp|sqlite3_open\w*)\()");
    std::vector<std::string> found;
    for (const auto &entry : fs::recursive_directory_iterator(DEVMGR_SOURCE_DIR "/src")) {
        std::istringstream lines(entry.is_regular_file() ? fileRead(entry.path()) : "");
        for (std::string line; std::getline(lines, line);) {
            std::smatch match;
            line = std::regex_replace(line, text, "\"\"");
            if (std::regex_search(line, match, opens))
                found.push_back(entry.path().filename().string() + " " + match[1].str());
        }
    }
    std::sort(found.begin(), found.end());
    const std::vector<std::string> known = {
        "account.cpp fopen",            // of the kernel's
        "database.cpp sqlite3_open_v2", // through a VFS of its own
        "device_time.cpp fopen",        // makes a file that is missing, never one that is there
        "files.cpp open",
        "files.cpp open",
        "log.cpp fopen", // of the kernel's
        "main.cpp open", // the null device
        "main.cpp open",
        "profile.cpp open", // looks at what it opened
        "profile.cpp scandir",
        "scratch.cpp opendir",
    };
    EXPECT_EQ(found, known);
}
