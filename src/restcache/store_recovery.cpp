#include "restcache/store_recovery.h"

// Checks the cache file and sets a damaged one aside. A reader that has the old file open goes on reading it until it
// opens the cache again; no file is changed under its feet.

#include "restcache/store.h"
#include "restcache/store_access.h"
#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/paths.h"
#include "runtime/sql.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

// Each gives "ok", or what is wrong. The index is checked too: without it a name could have two records, or none.
static const char *const checks[] = {
    "PRAGMA integrity_check(1);",
    // a column that another program has added is nobody's damage, unless a write of ours would have to fill it
    "SELECT CASE WHEN count(*) = 0 OR (sum(name = 'api_name' AND pk = 1) = 1 AND sum(name = 'data' AND pk = 0) = 1 AND"
    " sum(name NOT IN ('api_name', 'data') AND (pk > 0 OR (\"notnull\" AND dflt_value IS NULL))) = 0)"
    " THEN 'ok' ELSE 'the table has other columns' END FROM pragma_table_info('restapi_db');",
};

// A damaged file may give anything: no index, and an end.
constexpr char namesLeft[] = "SELECT api_name FROM restapi_db NOT INDEXED LIMIT 10000;";
constexpr char recordsFrom[] = "SELECT api_name, data FROM restapi_db WHERE api_name > ? ORDER BY api_name;";

constexpr size_t NAME_SIZE = 256;
constexpr size_t REASON_SIZE = 128;

static bool isFile(const char *path);
static int checkRun(sqlite3 *db, const char *sql, char *reason);
static bool isListable(std::string_view name);
static bool moveAside(PATH_ID from, PATH_ID to);
static bool recordBadFind(RESTDB_NAME_T isOurs, char *name);
static bool isJson(std::string_view text);

void restDbCheck(RESTDB_NAME_T isOurs)
{
    char reason[REASON_SIZE] = "";
    char name[NAME_SIZE] = "";
    OWNED_DB db;

    if (!isFile(PathGet(PATH_REST_DB)) || restDbOpen(SQLITE_OPEN_READWRITE, &db) != SQLITE_OK)
        return;
    for (const char *sql : checks) {
        int result = checkRun(db.get(), sql, reason);
        if (result == SQLITE_OK)
            continue;
        db.reset();
        if (restDbDamaged(result))
            (void)restDbSetAside(reason); // what stays is met again by the operations
        return;
    }
    db.reset();
    while (recordBadFind(isOurs, name)) {
        LOG_ERROR("REST cache: record '%s' is damaged, deleted\n", name);
        if (restapi_db_operation(REST_DB_DELETE, name, nullptr) != SQLITE_OK)
            return; // it says why
    }
}

bool restDbDamaged(int result)
{
    return result == SQLITE_CORRUPT || result == SQLITE_NOTADB;
}

bool restDbSetAside(const char *reason)
{
    const char *path = PathGet(PATH_REST_DB);
    const char *aside = PathGet(PATH_REST_DB_BAD);

    restDbNamesAnnounce();
    restDbChanged = 1;
    (void)moveAside(PATH_REST_JOURNAL, PATH_REST_JOURNAL_BAD); // seldom there: other programs may keep one
    if (moveAside(PATH_REST_DB, PATH_REST_DB_BAD)) {
        LOG_ERROR("REST cache %s is damaged (%s): set aside as %s, begun anew\n", path, reason, aside);
        return true;
    }
    bool removed = unlink(path) == 0;
    LOG_ERROR("REST cache %s is damaged (%s): %s\n", path, reason, removed ? "removed, begun anew" : strerror(errno));
    return removed;
}

static bool isFile(const char *path)
{
    struct stat status;

    return stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

// SQLITE_CORRUPT with the reason when the check finds damage. Only damage counts: a check that another process's lock
// or missing memory kept from running says nothing, and would only wait again.
static int checkRun(sqlite3 *db, const char *sql, char *reason)
{
    OWNED_STATEMENT check;
    int result = sqlPrepare(db, sql, &check);

    if (result == SQLITE_OK)
        result = sqlStep(check);
    if (result != SQLITE_ROW) {
        snprintf(reason, REASON_SIZE, "%s", sqlite3_errmsg(db));
        return result;
    }
    std::string_view text = sqlText(check, 0);
    if (text.data() == nullptr || text == "ok")
        return SQLITE_OK;
    snprintf(reason, REASON_SIZE, "%s", text.data());
    for (char *end = strchr(reason, '\n'); end != nullptr; end = strchr(end, '\n'))
        *end = ' ';
    return SQLITE_CORRUPT;
}

void restDbNamesAnnounce()
{
    OWNED_DB db;
    OWNED_STATEMENT select;

    if (restDbOpen(SQLITE_OPEN_READONLY, &db) != SQLITE_OK || sqlPrepare(db.get(), namesLeft, &select) != SQLITE_OK)
        return; // often there is nothing left to read
    while (sqlStep(select) == SQLITE_ROW) {
        if (isListable(sqlText(select, 0)))
            (void)restDbAnnounce(sqlText(select, 0).data());
    }
}

// Whether a name can stand on a line of the change list.
static bool isListable(std::string_view name)
{
    return !name.empty() && name.size() < NAME_SIZE &&
           std::all_of(name.begin(), name.end(), [](char character) { return character > ' ' && character <= '~'; });
}

// An older one at the target never stays: it would not belong to what is moved beside it.
static bool moveAside(PATH_ID from, PATH_ID to)
{
    if (fileRename(PathGet(from), PathGet(to)))
        return true;
    (void)unlink(PathGet(to));
    return false;
}

// The next damaged record after *name, in the order of names; into *name. Nothing is open when it returns, so that the
// record can be deleted.
static bool recordBadFind(RESTDB_NAME_T isOurs, char *name)
{
    OWNED_DB db;
    OWNED_STATEMENT select;

    if (restDbOpen(SQLITE_OPEN_READWRITE, &db) != SQLITE_OK || sqlPrepare(db.get(), recordsFrom, &select) != SQLITE_OK)
        return false; // no table yet
    if (sqlBind(select, {name}) != SQLITE_OK)
        return false;
    while (sqlStep(select) == SQLITE_ROW) {
        std::string_view record = sqlText(select, 0);

        if (isListable(record) && isOurs(record.data()) && !isJson(sqlText(select, 1))) {
            snprintf(name, NAME_SIZE, "%s", record.data());
            return true;
        }
    }
    return false;
}

static bool isJson(std::string_view text)
{
    return text.data() != nullptr && strlen(text.data()) == text.size() &&
           OWNED_JSON(cJSON_ParseWithOpts(text.data(), nullptr, 1)) != nullptr;
}
