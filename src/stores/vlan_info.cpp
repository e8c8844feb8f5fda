#include "stores/vlan_info.h"

// The VLAN profile database. Every operation is one opening of the file, one statement, one closing, so that a file
// which another program replaces is picked up at the next call. Opening never creates the file, and is read-only where
// nothing is written. Uses SQLite, and the logger and paths of runtime/.

#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/paths.h"
#include "switch/columns.h"

#include <algorithm>
#include <sys/mman.h>

namespace {
constexpr int BUSY_TIMEOUT_MS = 3000;
constexpr int COLUMNS = 5; // id, vlanType, profileName, profileType, color
constexpr size_t ENTRIES_SIZE = VLAN_INFO_CAPACITY * sizeof(VLAN_INFO_ENTRY_T);

// Result of sqlite3_get_table: row 0 holds the column names. A null cell is a NULL.
struct TABLE_T {
    char **cells = nullptr;
    int rows = 0, columns = 0;

    TABLE_T() = default;
    TABLE_T(const TABLE_T &) = delete;
    TABLE_T &operator=(const TABLE_T &) = delete;
    ~TABLE_T()
    {
        sqlite3_free_table(cells);
    }
};

// SQLite's code; a failure is logged under the caller's name.
int databaseOpen(const char *caller, int flags, OWNED_DB *db);

// Run one query and hand over its rows; a failure is logged, naming the statement by `title`.
int tableGet(const char *caller, const char *title, const char *statement, TABLE_T *table);

int cellNumber(const TABLE_T &table, int row, int column);
const char *cellText(const TABLE_T &table, int row, int column);
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
    int result = databaseOpen(__func__, SQLITE_OPEN_READWRITE, &db);
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

int vlanInfoSelectById(int id, int32_t *vlanType, char *profileName, char *profileType, char *color)
{
    char statement[256];
    TABLE_T table;

    snprintf(statement, sizeof statement, "select * from vlanInfo where id = %d", id);
    if (tableGet(__func__, statement, statement, &table) != SQLITE_OK || table.rows < 1)
        return 0;
    if (vlanType != nullptr)
        *vlanType = cellNumber(table, 1, 1);
    if (profileName != nullptr)
        textCopy(profileName, sizeof VLAN_INFO_ENTRY_T::profileName, cellText(table, 1, 2));
    if (profileType != nullptr)
        textCopy(profileType, sizeof VLAN_INFO_ENTRY_T::profileType, cellText(table, 1, 3));
    if (color != nullptr)
        textCopy(color, sizeof VLAN_INFO_ENTRY_T::color, cellText(table, 1, 4));
    return 1;
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

int vlanInfoSelectAll(VLAN_INFO_LIST_T *list)
{
    TABLE_T table;

    if (list == nullptr || list->entries == nullptr)
        return -1;
    list->count = 0;
    if (tableGet(__func__, __func__, "SELECT id, vlanType, profileName, profileType, color FROM vlanInfo", &table) !=
        SQLITE_OK)
        return -1;

    for (int row = 1; row <= table.rows && list->count < list->capacity; row++) {
        VLAN_INFO_ENTRY_T *entry = &list->entries[list->count++];
        entry->id = cellNumber(table, row, 0);
        entry->vlanType = cellNumber(table, row, 1);
        textCopy(entry->profileName, sizeof entry->profileName, cellText(table, row, 2));
        textCopy(entry->profileType, sizeof entry->profileType, cellText(table, row, 3));
        textCopy(entry->color, sizeof entry->color, cellText(table, row, 4));
    }
    return static_cast<int>(list->count);
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
int databaseOpen(const char *caller, int flags, OWNED_DB *db)
{
    sqlite3 *opened = nullptr;
    int result = fileOpenDatabase(PathGet(PATH_VLANINFO_DB), flags, &opened);
    db->reset(opened);
    if (result != SQLITE_OK)
        LOG_ERROR_AS(caller, "Can't open database: %s\r\n", sqlite3_errmsg(opened));
    else
        (void)sqlite3_busy_timeout(opened, BUSY_TIMEOUT_MS); // fails for a null handle only
    return result;
}

int tableGet(const char *caller, const char *title, const char *statement, TABLE_T *table)
{
    OWNED_DB db;
    int result = databaseOpen(caller, SQLITE_OPEN_READONLY, &db);
    if (result != SQLITE_OK)
        return result;

    result = sqlite3_get_table(db.get(), statement, &table->cells, &table->rows, &table->columns, nullptr);
    if (result != SQLITE_OK) {
        LOG_ERROR_AS(caller, "%s error: %s\r\n", title, sqlite3_errmsg(db.get()));
    } else if (table->rows > 0 && table->columns < COLUMNS) {
        result = SQLITE_MISMATCH;
        LOG_ERROR_AS(caller, "%s error: %s\r\n", title, sqlite3_errstr(result));
    }
    return result;
}

int cellNumber(const TABLE_T &table, int row, int column)
{
    return columnStrtol(cellText(table, row, column), 0);
}

const char *cellText(const TABLE_T &table, int row, int column)
{
    const char *cell = table.cells[static_cast<size_t>(row) * table.columns + column];
    return cell != nullptr ? cell : "";
}

bool idLess(const VLAN_INFO_ENTRY_T &entry, int id)
{
    return entry.id < id;
}
} // namespace
