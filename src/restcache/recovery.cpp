#include "restcache/recovery.h"

// Checks the cache file and sets a damaged one aside. A reader that has the old file open goes on reading it until it
// opens the cache again; no file is changed under its feet.

#include "restcache/connection.h"
#include "restcache/notify.h"
#include "runtime/account.h"
#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/paths.h"
#include "runtime/sql.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

constexpr size_t REASON_SIZE = 128;

// SQLITE_CORRUPT with the reason when the check finds damage. Only damage counts: a check that another process's lock
// or missing memory kept from running says nothing, and would only wait again.
static int checkRun(sqlite3 *db, const char *sql, char reason[REASON_SIZE])
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

bool restDbFileSound()
{
    // Each gives "ok", or what is wrong. The index is checked too: without it a name could have two records, or none.
    static const char *const checks[] = {
        "PRAGMA integrity_check(1);",
        // a column that another program has added is nobody's damage, unless a write of ours would have to fill it
        "SELECT CASE WHEN count(*) = 0 OR (sum(name = 'api_name' AND pk = 1) = 1 AND sum(name = 'data' AND pk = 0) = 1"
        " AND sum(name NOT IN ('api_name', 'data') AND (pk > 0 OR (\"notnull\" AND dflt_value IS NULL))) = 0)"
        " THEN 'ok' ELSE 'the table has other columns' END FROM pragma_table_info('restapi_db');",
    };
    char reason[REASON_SIZE] = "";
    struct stat status;
    OWNED_DB db;

    if (stat(PathGet(PATH_REST_DB), &status) != 0 || !S_ISREG(status.st_mode) ||
        restDbOpen(SQLITE_OPEN_READWRITE, &db) != SQLITE_OK)
        return false;
    for (const char *sql : checks) {
        int result = checkRun(db.get(), sql, reason);
        if (result == SQLITE_OK)
            continue;
        db.reset();
        if (restDbDamaged(result))
            (void)restDbSetAside(reason); // what stays is met again by the operations
        return false;
    }
    return true;
}

static bool isJson(std::string_view text)
{
    return text.data() != nullptr && strlen(text.data()) == text.size() &&
           OWNED_JSON(cJSON_ParseWithOpts(text.data(), nullptr, 1)) != nullptr;
}

bool restDbBadRecord(RESTDB_NAME_T isOurs, char *name)
{
    const char *sql = "SELECT api_name, data FROM restapi_db WHERE api_name > ? ORDER BY api_name;";
    OWNED_DB db;
    OWNED_STATEMENT select;

    if (restDbOpen(SQLITE_OPEN_READWRITE, &db) != SQLITE_OK || sqlPrepare(db.get(), sql, &select) != SQLITE_OK)
        return false; // no table yet
    if (sqlBind(select, {name}) != SQLITE_OK)
        return false;
    while (sqlStep(select) == SQLITE_ROW) {
        std::string_view record = sqlText(select, 0);

        if (isListable(record) && isOurs(record.data()) && !isJson(sqlText(select, 1))) {
            snprintf(name, RESTDB_NAME_SIZE, "%s", record.data());
            return true;
        }
    }
    return false;
}

bool restDbDamaged(int result)
{
    return result == SQLITE_CORRUPT || result == SQLITE_NOTADB;
}

// An older file at the target never stays: it would not belong to what is moved beside it.
static bool moveAside(PATH_ID from, PATH_ID to)
{
    if (fileRename(PathGet(from), PathGet(to)))
        return true;
    (void)unlink(PathGet(to));
    return false;
}

bool restDbSetAside(const char *reason)
{
    const char *path = PathGet(PATH_REST_DB);
    const char *aside = PathGet(PATH_REST_DB_BAD);

    char why[REASON_SIZE + 32];

    snprintf(why, sizeof(why), "the file was damaged: %s", reason);
    accountCacheReason(why);
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
