#include "floor.h"

// The floor is written against cJSON and SQLite alone, with nothing of the daemon's code in between: what a document
// costs above it is what gathering its values, its show texts and the daemon's own layers cost.

#include <cstring>

static cJSON *treeBuild(const cJSON *ready)
{
    switch (ready->type & 0xFF) {
    case cJSON_Number:
        return cJSON_CreateNumber(ready->valuedouble);
    case cJSON_String:
        return cJSON_CreateString(ready->valuestring);
    case cJSON_Object: {
        cJSON *object = cJSON_CreateObject();
        for (const cJSON *child = ready->child; child != nullptr; child = child->next)
            cJSON_AddItemToObject(object, child->string, treeBuild(child));
        return object;
    }
    case cJSON_Array: {
        cJSON *array = cJSON_CreateArray();
        for (const cJSON *child = ready->child; child != nullptr; child = child->next)
            cJSON_AddItemToArray(array, treeBuild(child));
        return array;
    }
    case cJSON_NULL:
        return cJSON_CreateNull();
    default:
        return cJSON_CreateBool(cJSON_IsTrue(ready));
    }
}

static OWNED_TEXT envelopePrint(const char *key, const char *payload)
{
    OWNED_JSON root(cJSON_CreateObject());

    cJSON_AddItemToObject(root.get(), key, cJSON_Parse(payload));
    cJSON *resp = cJSON_AddObjectToObject(root.get(), "resp");
    cJSON_AddNumberToObject(resp, "respCode", 0);
    cJSON_AddStringToObject(resp, "respMsg", "Success");
    cJSON_AddStringToObject(resp, "status", "success");
    return OWNED_TEXT(cJSON_Print(root.get()));
}

static OWNED_TEXT documentPrint(const FLOOR_T &document)
{
    OWNED_JSON tree(treeBuild(document.payload.get()));
    OWNED_TEXT payload(document.formatted ? cJSON_Print(tree.get()) : cJSON_PrintUnformatted(tree.get()));

    tree.reset();
    return document.enveloped ? envelopePrint(document.key.c_str(), payload.get()) : std::move(payload);
}

bool floorPrepare(const std::string &name, const std::string &text, bool formatted, FLOOR_T *document)
{
    OWNED_JSON tree(cJSON_Parse(text.c_str()));

    if (tree == nullptr || tree->child == nullptr || strcmp(tree->child->string, "resp") == 0)
        return false;
    document->name = name;
    document->text = text;
    document->key = tree->child->string;
    document->payload.reset(cJSON_DetachItemViaPointer(tree.get(), tree->child));
    document->formatted = formatted;
    document->enveloped = true;
    document->enveloped = documentPrint(*document).get() == text;
    if (!document->enveloped)
        document->payload.reset(cJSON_Parse(text.c_str()));
    return true;
}

static bool recordSame(const char *database, const char *name, const char *text)
{
    sqlite3 *opened = nullptr;
    sqlite3_stmt *prepared = nullptr;

    (void)sqlite3_open(database, &opened); // a failure shows in the comparison
    OWNED_DB db(opened);
    (void)sqlite3_busy_timeout(opened, 3000);
    for (const char *setting : {"PRAGMA cache_size = -2000;", "PRAGMA temp_store = MEMORY;",
                                "PRAGMA journal_mode = MEMORY;", "PRAGMA synchronous = OFF;"})
        (void)sqlite3_exec(opened, setting, nullptr, nullptr, nullptr);
    (void)sqlite3_prepare_v2(opened, "SELECT data FROM restapi_db WHERE api_name = ?;", -1, &prepared, nullptr);
    OWNED_STATEMENT select(prepared);
    if (sqlite3_bind_text(prepared, 1, name, -1, SQLITE_STATIC) != SQLITE_OK || sqlite3_step(prepared) != SQLITE_ROW)
        return false;
    const void *stored = sqlite3_column_text(prepared, 0);
    size_t length = static_cast<size_t>(sqlite3_column_bytes(prepared, 0));
    return length == strlen(text) && memcmp(stored, text, length) == 0;
}

bool floorRun(const FLOOR_T &document, const char *database)
{
    OWNED_TEXT text = documentPrint(document);

    return recordSame(database, document.name.c_str(), document.enveloped ? text.get() : document.text.c_str());
}
