#include "case_golden.h"

#include "differences.h"
#include "faults.h"
#include "runtime/owned.h"
#include "runtime/paths.h"

#include <algorithm>
#include <control.h>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

// What one build left.
struct MADE_T {
    RECORDS_T records;
    LOG_T log;
};

static std::string caseSeed(const cJSON *scenario);
static bool caseMake(const std::string &seeded, const cJSON *file, const cJSON *one, const LINES_T &documents,
                     MADE_T *made);
static bool given(const cJSON *what);
static void filePut(const cJSON *file);
static bool databaseRun(const char *path, const cJSON *sql);
static void merge(cJSON *into, const cJSON *changes);
static const cJSON *member(const cJSON *object, const char *name);

bool caseText(const std::string &file, const std::string &document, std::string *text)
{
    OWNED_JSON tree(cJSON_Parse(textRead(file).c_str()));
    LINES_T documents;
    const cJSON *one;
    MADE_T clean;

    cJSON_ArrayForEach(one, member(tree.get(), "documents")) documents.push_back(one->valuestring);
    if (documents.empty())
        documents.push_back(document);
    std::string seeded = caseSeed(member(tree.get(), "scenario"));
    bool good = !seeded.empty() && caseMake(seeded, tree.get(), nullptr, documents, &clean);
    for (const auto &[name, record] : clean.records)
        *text += name + " " + record + "\n";
    for (const std::string &line : logDifference({}, clean.log))
        *text += "      " + line + "\n";
    cJSON_ArrayForEach(one, member(tree.get(), "cases"))
    {
        MADE_T made;
        good = good && caseMake(seeded, tree.get(), one, documents, &made);
        *text += std::string("when ") + one->string + "\n";
        for (const std::string &line : recordsDifference(documents[0], clean.records, made.records))
            *text += "  " + line + "\n";
        for (const std::string &line : logDifference(clean.log, made.log))
            *text += "      " + line + "\n";
    }
    rootRemove(seeded);
    if (!good)
        fprintf(stderr, "%s: cannot be run\n", file.c_str());
    return good;
}

// A root that is seeded for the scenario.
static std::string caseSeed(const cJSON *scenario)
{
    char file[] = "/tmp/case_XXXXXX";
    OWNED_TEXT text(cJSON_Print(scenario));
    int fd = mkstemp(file);

    if (!text || fd < 0)
        return "";
    close(fd);
    textWrite(file, text.get());
    std::string root = rootSeed(file);
    unlink(file);
    return root;
}

// Null for `one`: the scenario itself.
static bool caseMake(const std::string &seeded, const cJSON *file, const cJSON *one, const LINES_T &documents,
                     MADE_T *made)
{
    OWNED_JSON scenario(cJSON_Duplicate(member(file, "scenario"), true));
    std::string root = rootCopy(seeded);

    merge(scenario.get(), one);
    cJSON_DeleteItemFromObjectCaseSensitive(scenario.get(), "given");
    OWNED_TEXT text(cJSON_Print(scenario.get()));
    if (root.empty() || !text || !switchUse(root, ""))
        return false;
    std::string error = vsLoadText(text.get(), one == nullptr ? "scenario" : one->string);
    if (!error.empty())
        fprintf(stderr, "%s\n", error.c_str());
    timeSet(FROZEN_AT);
    bool ready = given(member(file, "given")) && given(member(one, "given"));
    processBegin();
    (void)logTake();
    for (const std::string &document : documents) {
        if (documentFind(document.c_str()) == nullptr)
            error = document;
        else
            documentRun(*documentFind(document.c_str()));
    }
    made->records = recordsRead();
    made->log = logTake();
    rootRemove(root);
    return ready && error.empty();
}

static bool given(const cJSON *what)
{
    const cJSON *file;

    if (member(what, "at") != nullptr)
        timeSet(member(what, "at")->valuedouble);
    cJSON_ArrayForEach(file, member(what, "files")) filePut(file);
    return databaseRun(PathGet(PATH_VLANINFO_DB), member(what, "vlanInfo")) &&
           databaseRun(PathGet(PATH_OUI_DB), member(what, "oui"));
}

static void filePut(const cJSON *file)
{
    std::string path = rootName() + "/" + file->string;
    OWNED_TEXT text(cJSON_PrintUnformatted(file));
    size_t arrow = path.find(" -> ");
    std::string name = path.substr(0, std::min(arrow, path.find_last_not_of("/|") + 1));

    std::filesystem::remove_all(name);
    if (arrow != std::string::npos)
        std::filesystem::create_symlink(path.substr(arrow + strlen(" -> ")), name);
    else if (path.back() == '/')
        std::filesystem::create_directory(name);
    else if (path.back() == '|')
        (void)!mkfifo(name.c_str(), 0666); // the document then lacks it
    else if (cJSON_IsString(file))
        textWrite(name, file->valuestring);
    else if (!cJSON_IsNull(file))
        textWrite(name, text.get());
}

static bool databaseRun(const char *path, const cJSON *sql)
{
    sqlite3 *opened = nullptr;

    if (sql == nullptr)
        return true;
    int result = sqlite3_open(path, &opened);
    OWNED_DB db(opened);
    (void)sqlite3_exec(db.get(), "PRAGMA synchronous = OFF;", nullptr, nullptr, nullptr);
    if (result == SQLITE_OK && sqlite3_exec(db.get(), sql->valuestring, nullptr, nullptr, nullptr) == SQLITE_OK)
        return true;
    fprintf(stderr, "%s: %s\n", sql->valuestring, sqlite3_errmsg(db.get()));
    return false;
}

static void merge(cJSON *into, const cJSON *changes)
{
    const cJSON *one;

    cJSON_ArrayForEach(one, changes)
    {
        cJSON *old = cJSON_GetObjectItemCaseSensitive(into, one->string);
        if (cJSON_IsObject(one) && cJSON_IsObject(old))
            merge(old, one);
        else if (cJSON_IsNull(one))
            cJSON_DeleteItemFromObjectCaseSensitive(into, one->string);
        else if (old != nullptr)
            cJSON_ReplaceItemInObjectCaseSensitive(into, one->string, cJSON_Duplicate(one, true));
        else
            cJSON_AddItemToObject(into, one->string, cJSON_Duplicate(one, true));
    }
}

static const cJSON *member(const cJSON *object, const char *name)
{
    return cJSON_GetObjectItemCaseSensitive(object, name);
}
