#include "stores/vlan_info.h"

// The VLAN profile database. The file is opened for one operation, or for the reads of one build, so that one which
// another program replaces is picked up soon. Opening never creates the file, and is read-only where
// nothing is written. Uses SQLite, and the logger and paths of runtime/.

#include "runtime/database.h"
#include "runtime/log.h"
#include "runtime/paths.h"
#include "runtime/sql.h"
#include "switch/columns.h"

#include <algorithm>
#include <climits>
#include <sys/mman.h>

namespace {
constexpr int COLUMNS = 5; // id, vlanType, profileName, profileType, color
constexpr size_t ENTRIES_SIZE = VLAN_INFO_CAPACITY * sizeof(VLAN_INFO_ENTRY_T);

// SQLite's code; a failure is logged under the caller's name.
int replaceOpen(const char *caller, OWNED_DB *db);
int failureLog(const char *caller, const char *title, const char *reason, int result);

// Run one query and give its rows, one by one, until row() has enough. SQLite's code; a failure is logged, naming the
// statement by `title`. `reads` may be null.
template <typename ROW>
int rowsRead(const char *caller, const char *title, const char *statement, VLAN_INFO_READS_T *reads, ROW row);

int cellNumber(sqlite3_stmt *row, int column);
const char *cellText(sqlite3_stmt *row, int column);
void textTake(char *out, size_t size, sqlite3_stmt *row, int column);
bool idLess(const VLAN_INFO_ENTRY_T &entry, int id);
} // namespace

void vlanInfoListFree(VLAN_INFO_LIST_T *list)
{
    if (list == nullptr)
        return;
    if (list->entries != nullptr)
        (void)munmap(list->entries, ENTRIES_SIZE); // the whole of what was mapped: cannot fail
    free(list);
}

int vlanInfoReplace(int id, int vlanType, const char *profileName, const char *profileType, const char *color)
{
    OWNED_DB db;
    int result = replaceOpen(__func__, &db);
    if (result != SQLITE_OK)
        return result;

    OWNED_SQLITE_TEXT statement(
        sqlite3_mprintf("replace into vlanInfo values(    %d,    %d,    '%q',    '%q',    '%q'    )", id, vlanType,
                        profileName, profileType, color));
    if (statement == nullptr) {
        LOG_ERROR("%s error: %s\r\n", "replace into vlanInfo", sqlite3_errstr(SQLITE_NOMEM));
        return SQLITE_NOMEM;
    }
    result = sqlite3_exec(db.get(), statement.get(), nullptr, nullptr, nullptr);
    if (result != SQLITE_OK)
        LOG_ERROR("%s error: %s\r\n", statement.get(), sqlite3_errmsg(db.get()));
    return result;
}

int vlanInfoSelectById(int id, int32_t *vlanType, char *profileName, char *profileType, char *color,
                       VLAN_INFO_READS_T *reads)
{
    char statement[256];
    int found = 0;

    snprintf(statement, sizeof statement, "select * from vlanInfo where id = %d", id);
    int result = rowsRead(__func__, statement, statement, reads, [&](sqlite3_stmt *row) {
        if (vlanType != nullptr)
            *vlanType = cellNumber(row, 1);
        textTake(profileName, sizeof VLAN_INFO_ENTRY_T::profileName, row, 2);
        textTake(profileType, sizeof VLAN_INFO_ENTRY_T::profileType, row, 3);
        textTake(color, sizeof VLAN_INFO_ENTRY_T::color, row, 4);
        found = 1;
        return false;
    });
    return result == SQLITE_OK ? found : 0;
}

VLAN_INFO_LIST_T *vlanInfoListCreate()
{
    OWNED_VLAN_INFO_LIST list(static_cast<VLAN_INFO_LIST_T *>(calloc(1, sizeof(VLAN_INFO_LIST_T))));
    if (list == nullptr)
        return nullptr;
    // Pages are zero when they are first touched: a list of a dozen rows does not clear 2 MB in every build.
    void *pages = mmap(nullptr, ENTRIES_SIZE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        return nullptr;
    list->entries = static_cast<VLAN_INFO_ENTRY_T *>(pages);
    list->capacity = VLAN_INFO_CAPACITY;
    return list.release();
}

static int allSelect(VLAN_INFO_LIST_T *list, VLAN_INFO_READS_T *reads, bool typesOnly)
{
    static const char caller[] = "vlanInfoSelectAll";

    if (list == nullptr || list->entries == nullptr)
        return -1;
    list->count = 0;
    int result = rowsRead(caller, caller, "SELECT id, vlanType, profileName, profileType, color FROM vlanInfo", reads,
                          [list, typesOnly](sqlite3_stmt *row) {
                              VLAN_INFO_ENTRY_T *entry = &list->entries[list->count++];
                              entry->id = cellNumber(row, 0);
                              textTake(entry->profileType, sizeof entry->profileType, row, 3);
                              if (!typesOnly) {
                                  entry->vlanType = cellNumber(row, 1);
                                  textTake(entry->profileName, sizeof entry->profileName, row, 2);
                                  textTake(entry->color, sizeof entry->color, row, 4);
                              }
                              return list->count < list->capacity;
                          });
    if (result != SQLITE_OK)
        list->count = 0;
    return result == SQLITE_OK ? static_cast<int>(list->count) : -1;
}

int vlanInfoSelectAll(VLAN_INFO_LIST_T *list, VLAN_INFO_READS_T *reads)
{
    return allSelect(list, reads, false);
}

int vlanInfoSelectTypes(VLAN_INFO_LIST_T *list)
{
    return allSelect(list, nullptr, true);
}

OWNED_VLAN_INFO_LIST vlanInfoSortedLoad(VLAN_INFO_READS_T *reads)
{
    OWNED_VLAN_INFO_LIST list(vlanInfoListCreate());

    if (list == nullptr || vlanInfoSelectAll(list.get(), reads) < 0)
        return nullptr;
    vlanInfoListSortById(list.get());
    return list;
}

void vlanInfoListSortById(VLAN_INFO_LIST_T *list)
{
    std::sort(list->entries, list->entries + list->count,
              [](const VLAN_INFO_ENTRY_T &a, const VLAN_INFO_ENTRY_T &b) { return idLess(a, b.id); });
}

const VLAN_INFO_ENTRY_T *vlanInfoListFindById(const VLAN_INFO_LIST_T *list, int id)
{
    const VLAN_INFO_ENTRY_T *begin = list->entries;
    const VLAN_INFO_ENTRY_T *end = begin + list->count;
    const VLAN_INFO_ENTRY_T *entry = std::lower_bound(begin, end, id, idLess);
    return entry != end && entry->id == id ? entry : nullptr;
}

namespace {
int replaceOpen(const char *caller, OWNED_DB *db)
{
    int result = databaseOpen(DATABASE_SHARED, PathGet(PATH_VLANINFO_DB), SQLITE_OPEN_READWRITE, db);

    if (result != SQLITE_OK)
        LOG_ERROR_AS(caller, "Can't open database: %s\r\n", sqlite3_errmsg(db->get()));
    return result;
}

int failureLog(const char *caller, const char *title, const char *reason, int result)
{
    LOG_ERROR_AS(caller, "%s error: %s\r\n", title, reason);
    return result;
}

template <typename ROW> int rowsGive(sqlite3 *db, const char *caller, const char *title, const char *statement, ROW row)
{
    OWNED_STATEMENT select;
    int result = sqlPrepare(db, statement, &select);
    if (result != SQLITE_OK)
        return failureLog(caller, title, sqlite3_errmsg(db), result);
    while ((result = sqlStep(select)) == SQLITE_ROW) {
        if (sqlite3_column_count(select.get()) < COLUMNS)
            return failureLog(caller, title, sqlite3_errstr(SQLITE_MISMATCH), SQLITE_MISMATCH);
        if (!row(select.get()))
            return SQLITE_OK;
    }
    return result == SQLITE_DONE ? SQLITE_OK : failureLog(caller, title, sqlite3_errmsg(db), result);
}

template <typename ROW>
int rowsRead(const char *caller, const char *title, const char *statement, VLAN_INFO_READS_T *reads, ROW row)
{
    VLAN_INFO_READS_T alone = {};
    if (reads == nullptr)
        reads = &alone;
    reads->failed = true; // until it has succeeded

    OWNED_DB db = std::move(reads->db); // back only after a success: after a failure the next read opens anew
    int result = db != nullptr ? SQLITE_OK : databaseOpenRead(PathGet(PATH_VLANINFO_DB), &db);
    if (result != SQLITE_OK) {
        LOG_ERROR_AS(caller, "Can't open database: %s\r\n", sqlite3_errmsg(db.get()));
        return result;
    }
    if (reads->gaveUp)
        (void)sqlite3_busy_timeout(db.get(), 0); // fails for a null handle only
    result = rowsGive(db.get(), caller, title, statement, row);
    reads->failed = result != SQLITE_OK;
    reads->gaveUp = reads->gaveUp || result == SQLITE_BUSY;
    if (result == SQLITE_OK)
        reads->db = std::move(db);
    return result;
}

int cellNumber(sqlite3_stmt *row, int column)
{
    if (sqlite3_column_type(row, column) == SQLITE_INTEGER)
        return static_cast<int>(std::clamp<sqlite3_int64>(sqlite3_column_int64(row, column), INT_MIN, INT_MAX));
    return columnStrtol(cellText(row, column), 0);
}

// A NULL is ""; so is a text there is no memory for.
const char *cellText(sqlite3_stmt *row, int column)
{
    const unsigned char *text = sqlite3_column_text(row, column);
    return text != nullptr ? reinterpret_cast<const char *>(text) : "";
}

void textTake(char *out, size_t size, sqlite3_stmt *row, int column)
{
    if (out != nullptr)
        textCopy(out, size, cellText(row, column));
}

bool idLess(const VLAN_INFO_ENTRY_T &entry, int id)
{
    return entry.id < id;
}
} // namespace
