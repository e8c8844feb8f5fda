#include "devmgrctl.h"

// The words about documents: list, get, watch, diff.

#include "cache/cache.h"
#include "cache/json_difference.h"
#include "runtime/paths.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>

// All documents of the cache; a cache that is locked just now is asked again.
static bool documentsTake(CACHE_DOCUMENTS_T *documents)
{
    CACHE_T cache;
    CACHE_LOOK_T look = {CACHE_MISSING, 0, ""};
    std::vector<CACHE_CHANGE_T> changes;

    if (!cacheOpen(&cache)) {
        trouble(std::string(PathGet(PATH_REST_DB)) + ": " + strerror(errno));
        return false;
    }
    for (int tries = 0; tries < 3; tries++) {
        look = cacheLook(&cache, &changes);
        if (look.state != CACHE_BUSY)
            break;
    }
    if (look.state != CACHE_READ) {
        trouble(look.trouble);
        return false;
    }
    documents->swap(cache.documents);
    return true;
}

int listWord(const WORDS_T &)
{
    CACHE_DOCUMENTS_T documents;

    if (!documentsTake(&documents))
        return CTL_TROUBLE;
    for (const auto &document : documents)
        puts(document.first.c_str());
    return CTL_OK;
}

// The pointer counts from the document, or from its payload.
static const cJSON *valueFind(const cJSON *document, const std::string &pointer)
{
    const cJSON *value = jsonPointed(document, pointer);

    return value != nullptr ? value : jsonPointed(document->child, pointer);
}

int getWord(const WORDS_T &arguments)
{
    CACHE_DOCUMENTS_T documents;

    if (!documentsTake(&documents))
        return CTL_TROUBLE;
    auto found = documents.find(arguments[0]);
    if (found == documents.end()) {
        bool chunked = documents.count(arguments[0] + "/0") != 0;
        trouble("the cache has no document '" + arguments[0] + "'" +
                (chunked ? "; it stands in chunks: " + arguments[0] + "/0 ..." : ""));
        return CTL_FOUND;
    }
    if (arguments.size() == 1) {
        puts(found->second.c_str());
        return CTL_OK;
    }
    OWNED_JSON tree(cJSON_ParseWithLength(found->second.data(), found->second.size()));
    if (tree == nullptr)
        return trouble(arguments[0] + " is no JSON");
    const cJSON *value = valueFind(tree.get(), arguments[1]);
    OWNED_TEXT text(value == nullptr ? nullptr : cJSON_Print(value));
    if (text == nullptr) {
        trouble(arguments[0] + " has no value at '" + arguments[1] + "'");
        return CTL_FOUND;
    }
    puts(text.get());
    return CTL_OK;
}

// The payload's own key is left out of a place, as "get" takes it.
static size_t fieldsPrint(const CACHE_CHANGE_T &change)
{
    std::vector<JSON_CHANGE_T> fields = jsonChanges(change.was, change.now);

    for (const JSON_CHANGE_T &field : fields) {
        bool payload = field.path.size() > 1 && field.path[0] != "resp";
        const std::string &now = field.now.front();
        printf("%s %s ", change.name.c_str(), jsonPointer(field.path, payload ? 1 : 0).c_str());
        if (now == "gone" || field.was.empty())
            printf("%s%s\n", now.c_str(),
                   now == "gone" && !field.was.empty() ? (": " + field.was.front()).c_str() : "");
        else
            printf("%s -> %s\n", field.was.front().c_str(), now.c_str());
    }
    return fields.size();
}

static const char *changeWord(const CACHE_CHANGE_T &change)
{
    return change.now.empty() ? "deleted" : change.was.empty() ? "new" : "changed";
}

static void changePrint(const CACHE_CHANGE_T &change, bool fields)
{
    time_t now = time(nullptr);
    struct tm local;
    char stamp[16];

    if (fields && fieldsPrint(change) != 0)
        return;
    localtime_r(&now, &local);
    strftime(stamp, sizeof(stamp), "%H:%M:%S", &local);
    printf("%s %s %s, %zu bytes\n", stamp, change.name.c_str(), changeWord(change), change.now.size());
}

int watchWord(const WORDS_T &arguments)
{
    CACHE_T cache;
    bool fields = false;
    bool known = false; // what was there at the first look is no change
    std::string told;

    for (const std::string &argument : arguments) {
        if (argument == "--fields")
            fields = true;
        else if (argument.compare(0, 2, "--") == 0)
            return trouble("watch: option " + argument + " is unknown (see watch --help)");
        else
            cache.wanted.insert(argument);
    }
    if (!cacheOpen(&cache))
        return trouble(std::string(PathGet(PATH_REST_DB)) + ": " + strerror(errno));
    signal(SIGPIPE, SIG_DFL);
    for (;;) {
        std::vector<CACHE_CHANGE_T> changes;
        CACHE_LOOK_T look = cacheLook(&cache, &changes);
        if (look.state == CACHE_REFUSED)
            return trouble(look.trouble);
        if (look.state == CACHE_MISSING && told != look.trouble)
            trouble((told = look.trouble) + "; waiting for it");
        for (const CACHE_CHANGE_T &change : changes)
            if (known)
                changePrint(change, fields);
        known = known || look.state == CACHE_READ;
        if (look.state == CACHE_READ)
            told.clear();
        fflush(stdout);
        cacheWait(&cache, look.waitMilliseconds);
    }
}

int diffWord(const WORDS_T &arguments)
{
    CACHE_DOCUMENTS_T documents[2];
    bool same = true;

    for (size_t i = 0; i < 2; i++) {
        CACHE_LOOK_T look = cacheFileRead(arguments[i].c_str(), &documents[i]);
        if (look.state != CACHE_READ)
            return trouble(look.trouble);
    }
    for (const CACHE_CHANGE_T &change : cacheCompare(documents[0], documents[1])) {
        same = false;
        if (fieldsPrint(change) == 0)
            printf("%s %s\n", change.name.c_str(),
                   change.now.empty()   ? "deleted"
                   : change.was.empty() ? "new"
                                        : "the same values as another text");
    }
    return same ? CTL_OK : CTL_FOUND;
}
