// golden.cpp - every document of every scenario, at a frozen time, and what faults change in it, against golden texts.
//
// A golden is the stored text with a line end, in tests/golden/<scenario>/<API name>.json, '/' in the name as %2F. A
// document that differs, has no golden, or a golden that has no document any more is a failure; --update rewrites. Of a
// text too large to be read by anybody the golden holds the length and a checksum.
//
// Scenarios under tests/golden/faults are made for faults: there <scenario>/<API name>.txt holds what each fault of
// what the document asks for changes in it and in the log (fault_golden.h).
//
// tests/collectors/cases/<name>.json holds a switch and what is different on it case by case, mostly texts that the
// virtual switch does not print; <name>.txt the document and what each case changes (case_golden.h).

#include "case_golden.h"
#include "documents.h"
#include "fault_golden.h"
#include "harness.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <set>
#include <spawn.h>
#include <sys/wait.h>

struct OPTIONS_T {
    bool update = false;
    bool documents = false;
    bool faults = false;
    bool cases = false;
    std::string kept;                   // folder that receives the whole texts, "" for none
    std::vector<std::string> scenarios; // paths; none: all
    std::set<std::string> names;        // API names; none: all
};

struct TALLY_T {
    unsigned texts = 0;
    unsigned different = 0;
};

// Texts by API name, and the files that hold them.
struct GOLDENS_T {
    std::string folder;
    const char *extension;
    RECORDS_T now;
};

static const char USAGE[] =
    "usage: golden [--update] [--documents] [--faults] [--cases] [--keep FOLDER] [--scenario FILE]... [NAME]...\n"
    "Compares the documents of the scenarios (default: all) with tests/golden, what faults change in them with\n"
    "tests/golden/faults, and what cases change with tests/collectors/cases; --documents, --faults and --cases do "
    "these\n"
    "only. NAMEs (API names, or those of files of cases) leave the others alone.\n"
    "--keep puts each whole document into FOLDER/<scenario>/.\n";
static constexpr size_t READABLE = 90000; // bytes
static const char GOLDENS[] = DEVMGR_SOURCE_DIR "/tests/golden";
static const char SCENARIOS[] = DEVMGR_SOURCE_DIR "/platform/virtual/scenarios";
static const char FAULT_GOLDENS[] = DEVMGR_SOURCE_DIR "/tests/golden/faults";
static const char CASES[] = DEVMGR_SOURCE_DIR "/tests/collectors/cases";

static bool optionsTake(int argc, char **argv, OPTIONS_T *options)
{
    for (int i = 1; i < argc; i++) {
        if (strcmp(argv[i], "--update") == 0)
            options->update = true;
        else if (strcmp(argv[i], "--documents") == 0)
            options->documents = true;
        else if (strcmp(argv[i], "--faults") == 0)
            options->faults = true;
        else if (strcmp(argv[i], "--cases") == 0)
            options->cases = true;
        else if (strcmp(argv[i], "--scenario") == 0 && i + 1 < argc)
            options->scenarios.push_back(argv[++i]);
        else if (strcmp(argv[i], "--keep") == 0 && i + 1 < argc)
            options->kept = argv[++i];
        else if (argv[i][0] == '-')
            return false;
        else
            options->names.insert(argv[i]);
    }
    if (!options->documents && !options->faults && !options->cases)
        options->documents = options->faults = options->cases = true;
    return true;
}

// Files with an extension in a folder, in the order of their names.
static std::vector<std::string> filesOf(const std::string &folder, const char *extension)
{
    std::vector<std::string> files;
    std::error_code none;

    for (const auto &entry : std::filesystem::directory_iterator(folder, none)) {
        if (entry.path().extension() == extension)
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

static bool forFaults(const std::string &scenario)
{
    std::error_code none;

    return std::filesystem::equivalent(std::filesystem::absolute(scenario).parent_path(), FAULT_GOLDENS, none);
}

static std::string apiName(const std::string &fileStem)
{
    std::string name = fileStem;
    size_t at;

    while ((at = name.find("%2F")) != std::string::npos)
        name.replace(at, 3, "/");
    return name;
}

static std::string fileName(const std::string &apiName)
{
    std::string file;

    for (char character : apiName)
        file += character == '/' ? std::string("%2F") : std::string(1, character);
    return file;
}

// Of an earlier run nothing stays.
static void textsKeep(const std::string &folder, const RECORDS_T &records)
{
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    for (const auto &[name, text] : records)
        textWrite(folder + "/" + fileName(name) + ".json", text);
}

// The records of a document in chunks, "name/0" and on, go with their name.
static bool wanted(const OPTIONS_T &options, const std::string &name)
{
    return options.names.empty() || options.names.count(name) != 0 ||
           options.names.count(name.substr(0, name.rfind('/'))) != 0;
}

// An empty text removes the golden.
static void goldenUpdate(const std::string &path, const std::string &now)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    if (now.empty())
        std::filesystem::remove(path);
    else
        textWrite(path, now);
    printf("%s %s\n", now.empty() ? "removed" : "written", path.c_str());
}

static void goldenDifference(const std::string &path, const std::string &golden, const std::string &now)
{
    char fresh[] = "/tmp/golden_XXXXXX";
    int fd = mkstemp(fresh);
    int status;
    pid_t child;

    if (golden.empty())
        printf("no golden: %s\n", path.c_str());
    else if (now.empty())
        printf("stale golden, no such document: %s\n", path.c_str());
    if (golden.empty() || now.empty() || fd < 0)
        return;
    textWrite(fresh, now);
    const char *arguments[] = {"diff", "-u", "--label", path.c_str(), "--label", "now", path.c_str(), fresh, nullptr};
    fflush(stdout);
    if (posix_spawnp(&child, arguments[0], nullptr, nullptr, const_cast<char **>(arguments), environ) == 0)
        waitpid(child, &status, 0);
    else
        printf("different: %s\n", path.c_str());
    close(fd);
    unlink(fresh);
}

static void goldensCompare(const OPTIONS_T &options, GOLDENS_T goldens, TALLY_T *tally)
{
    RECORDS_T before;

    for (const std::string &file : filesOf(goldens.folder, goldens.extension)) {
        std::string name = apiName(std::filesystem::path(file).stem());
        before[name] = textRead(file);
        goldens.now.insert({name, ""});
    }
    for (const auto &[name, text] : goldens.now) {
        if (!wanted(options, name))
            continue;
        std::string path = goldens.folder + "/" + fileName(name) + goldens.extension;
        tally->texts += text.empty() ? 0 : 1;
        if (before[name] == text)
            continue;
        tally->different++;
        if (options.update)
            goldenUpdate(path, text);
        else
            goldenDifference(path, before[name], text);
    }
}

static std::string goldenText(const std::string &text)
{
    if (text.size() <= READABLE)
        return text + "\n";
    uint64_t sum = 0xCBF29CE484222325; // FNV-1a
    char line[80];
    for (char character : text)
        sum = (sum ^ static_cast<unsigned char>(character)) * 0x100000001B3;
    snprintf(line, sizeof line, "%zu bytes, FNV-1a %016" PRIx64 "\n", text.size(), sum);
    return line;
}

static GOLDENS_T documentGoldens(const std::string &scenario, const RECORDS_T &records)
{
    GOLDENS_T goldens = {std::string(GOLDENS) + "/" + scenario, ".json", {}};

    for (const auto &[name, text] : records)
        goldens.now[name] = goldenText(text);
    return goldens;
}

// False when the scenario cannot be run at all.
static bool scenarioCompare(const OPTIONS_T &options, const std::string &scenario, TALLY_T *tally)
{
    std::string name = std::filesystem::path(scenario).stem().string();

    if (!options.documents && !(options.faults && forFaults(scenario)))
        return true;
    std::string root = scenarioBegin(scenario);
    if (root.empty())
        return false;
    RECORDS_T now = recordsRead();
    if (!options.kept.empty())
        textsKeep(options.kept + "/" + name, now);
    if (options.documents)
        goldensCompare(options, documentGoldens(name, now), tally);
    if (options.faults && forFaults(scenario))
        goldensCompare(options, {std::string(FAULT_GOLDENS) + "/" + name, ".txt", faultTexts(options.names)}, tally);
    rootRemove(root);
    return true;
}

// False when a file of cases cannot be run at all.
static bool casesCompare(const OPTIONS_T &options, TALLY_T *tally)
{
    GOLDENS_T goldens = {CASES, ".txt", {}};

    for (const std::string &file : filesOf(CASES, ".json")) {
        std::string name = apiName(std::filesystem::path(file).stem());
        if (wanted(options, name) && !caseText(file, name, &goldens.now[name]))
            return false;
    }
    goldensCompare(options, goldens, tally);
    return true;
}

int main(int argc, char **argv)
{
    OPTIONS_T options;
    TALLY_T tally;

    if (!optionsTake(argc, argv, &options)) {
        fputs(USAGE, stderr);
        return 2;
    }
    if (options.scenarios.empty()) {
        options.scenarios = filesOf(SCENARIOS, ".json");
        for (const std::string &scenario : filesOf(FAULT_GOLDENS, ".json"))
            options.scenarios.push_back(scenario);
    }
    documentsRegister();
    for (const std::string &scenario : options.scenarios) {
        if (!scenarioCompare(options, scenario, &tally))
            return 2;
    }
    if (options.cases && !casesCompare(options, &tally))
        return 2;
    printf("golden: %zu scenarios, %u texts, %u %s\n", options.scenarios.size(), tally.texts, tally.different,
           options.update ? "rewritten" : "different");
    return tally.texts > 0 && (tally.different == 0 || options.update) ? 0 : 1;
}
