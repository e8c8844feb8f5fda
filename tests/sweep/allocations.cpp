#include "sweep.h"

// Each allocation of a document fails in turn, its own and those of its JSON trees. What is stored afterwards is the
// old record, the complete one, one that the document also gives when something that it asks for fails (where memory
// for a reading is short, the reading's default stands), or one that lacks whole elements of a list, as some documents
// leave out what they cannot build; those are told. A row that lacks a key or has another value is a finding.

#include "runtime/owned.h"
#include "support/alloc.h"

#include <cstring>
#include <map>

using KNOWN_T = std::map<std::string, NAMES_T>; // texts by API name

static KNOWN_T defaultsCollect(SWEEP_T *sweep, const DOCUMENT_T &document, const CLEAN_T &clean);
static bool elementsMissing(const std::string &now, const std::string &clean);
static bool thinned(const cJSON *now, const cJSON *clean);
static bool childrenThinned(const cJSON *now, const cJSON *clean);

void documentAllocations(SWEEP_T *sweep, const DOCUMENT_T &document)
{
    CLEAN_T clean = cleanTake(sweep, document);
    KNOWN_T known = defaultsCollect(sweep, document, clean);
    bool reached = true;
    unsigned thin = 0;

    for (int64_t n = 0; reached; n++) {
        if (!runWanted(sweep, std::string(document.name) + ", allocation " + std::to_string(n)))
            continue;
        coldBegin();
        allocFailAt(n, ALLOC_OWN | ALLOC_CJSON);
        documentRun(document);
        reached = allocFailStop();
        RECORDS_T now = faultCheck(sweep, clean.snapshot, clean.own);
        for (const std::string &name : clean.own) {
            const std::string &whole = clean.snapshot.records.at(name);
            if (known[name].count(now[name]) != 0)
                continue;
            if (elementsMissing(now[name], whole))
                thin++;
            else
                finding(sweep, "%s is none of its texts: %s", name.c_str(), difference(now[name], whole));
        }
        recoveryCheck(sweep, document, clean, true);
    }
    if (thin > 0)
        printf("%s: elements are left out after the failure of %u allocations\n", document.name, thin);
    fflush(stdout);
}

// Texts of a document when nothing fails, and when each thing fails that it asks for.
static KNOWN_T defaultsCollect(SWEEP_T *sweep, const DOCUMENT_T &document, const CLEAN_T &clean)
{
    KNOWN_T known;

    for (const CASE_T &one : casesOf(sweep, document, clean)) {
        coldBegin();
        caseRun(one, document);
        for (const auto &[name, text] : recordsRead())
            known[name].insert(text);
        recordsWrite(clean.snapshot.records);
    }
    for (const auto &[name, text] : clean.snapshot.records)
        known[name].insert(text);
    return known;
}

// Whether a text is another one without some elements of its lists.
static bool elementsMissing(const std::string &now, const std::string &clean)
{
    OWNED_JSON nowTree(cJSON_Parse(now.c_str()));
    OWNED_JSON cleanTree(cJSON_Parse(clean.c_str()));

    return nowTree != nullptr && cleanTree != nullptr && thinned(nowTree.get(), cleanTree.get());
}

static bool thinned(const cJSON *now, const cJSON *clean)
{
    if ((now->type & 0xFF) != (clean->type & 0xFF))
        return false;
    return cJSON_IsObject(now) || cJSON_IsArray(now) ? childrenThinned(now, clean) : cJSON_Compare(now, clean, 1) != 0;
}

// Members one by one; of a list what is there, in its order.
static bool childrenThinned(const cJSON *now, const cJSON *clean)
{
    const cJSON *whole = clean->child;

    for (const cJSON *child = now->child; child != nullptr; child = child->next, whole = whole->next) {
        while (cJSON_IsArray(now) && whole != nullptr && !thinned(child, whole))
            whole = whole->next;
        if (whole == nullptr)
            return false;
        if (cJSON_IsObject(now) && (strcmp(child->string, whole->string) != 0 || !thinned(child, whole)))
            return false;
    }
    return cJSON_IsArray(now) || whole == nullptr;
}
