#include "stores/oui.h"

// The vendor table: some 36,000 rows of the OUI database, read once and kept sorted for binary search. The database is
// shipped with the web interface and only read. Uses SQLite and the paths of runtime/.

#include "runtime/database.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "runtime/sql.h"
#include "switch/columns.h"

#include <algorithm>
#include <cstring>

namespace {
constexpr size_t FIRST_CAPACITY = 36864; // a little more than there are rows

struct OUI_ENTRY_T {
    char oui[OUI_TEXT_SIZE];
    char vendor[OUI_VENDOR_SIZE];
};
struct OUI_TABLE_T {
    OWNED_ARRAY<OUI_ENTRY_T> entries;
    size_t count = 0, capacity = 0;
};
OUI_TABLE_T ouiTable;
bool loadTried = false;
void ouiTableReset();
const PROCESS_STATE_T ouiTableState(ouiTableReset);

bool rowsLoad(OUI_TABLE_T *table);
bool rowAdd(sqlite3_stmt *statement, OUI_TABLE_T *table);
void columnCopy(sqlite3_stmt *statement, int column, char *out, size_t size);
bool entryLess(const OUI_ENTRY_T &entry, const char *oui);
} // namespace

bool ouiOfMac(const char *mac, char oui[OUI_TEXT_SIZE])
{
    constexpr size_t LENGTH = OUI_TEXT_SIZE - 1;
    oui[0] = '\0';
    if (strnlen(mac, LENGTH) < LENGTH)
        return false;
    textCopy(oui, OUI_TEXT_SIZE, mac);
    strToUpper(oui);
    return true;
}

void ouiTableLoad()
{
    if (loadTried)
        return;
    loadTried = true;
    OUI_TABLE_T table;
    if (!rowsLoad(&table))
        return;
    // The database's order is that of its column's collation; the search needs that of the bytes.
    std::sort(table.entries.get(), table.entries.get() + table.count,
              [](const OUI_ENTRY_T &a, const OUI_ENTRY_T &b) { return entryLess(a, b.oui); });
    ouiTable = std::move(table);
}

const char *ouiVendorOfMac(const char *mac)
{
    char oui[OUI_TEXT_SIZE];
    if (!ouiOfMac(mac, oui))
        return "";
    const OUI_ENTRY_T *begin = ouiTable.entries.get();
    const OUI_ENTRY_T *end = begin + ouiTable.count;
    const OUI_ENTRY_T *entry = std::lower_bound(begin, end, oui, entryLess);
    return entry != end && strcmp(entry->oui, oui) == 0 ? entry->vendor : "";
}

namespace {
void ouiTableReset()
{
    ouiTable = {};
    loadTried = false;
}

// False on any failure.
bool rowsLoad(OUI_TABLE_T *table)
{
    OWNED_DB db;
    int result = databaseOpen(DATABASE_SHARED, PathGet(PATH_OUI_DB), SQLITE_OPEN_READONLY, &db);
    if (result != SQLITE_OK)
        return false;
    OWNED_STATEMENT statement;
    if (sqlPrepare(db.get(), "SELECT mac, vendor FROM oui ORDER BY mac", &statement) != SQLITE_OK)
        return false;

    table->capacity = FIRST_CAPACITY;
    table->entries = ownedArray<OUI_ENTRY_T>(table->capacity);
    if (table->entries == nullptr)
        return false;
    while ((result = sqlStep(statement)) == SQLITE_ROW) {
        if (!rowAdd(statement.get(), table))
            return false;
    }
    return result == SQLITE_DONE;
}

bool rowAdd(sqlite3_stmt *statement, OUI_TABLE_T *table)
{
    if (table->count == table->capacity && !ownedArrayDouble(&table->entries, &table->capacity))
        return false;
    OUI_ENTRY_T *entry = &table->entries[table->count++];
    columnCopy(statement, 0, entry->oui, sizeof entry->oui);
    columnCopy(statement, 1, entry->vendor, sizeof entry->vendor);
    return true;
}

// Cut between characters: half a UTF-8 sequence would spoil the document it ends up in. A NULL is "".
void columnCopy(sqlite3_stmt *statement, int column, char *out, size_t size)
{
    const unsigned char *text = sqlite3_column_text(statement, column);
    const char *from = text != nullptr ? reinterpret_cast<const char *>(text) : "";
    size_t length = strnlen(from, size);
    if (length == size) {
        length--;
        while (length > 0 && (static_cast<unsigned char>(from[length]) & 0xC0U) == 0x80U)
            length--;
    }
    textCopy(out, length + 1, from);
}

bool entryLess(const OUI_ENTRY_T &entry, const char *oui)
{
    return strcmp(entry.oui, oui) < 0;
}
} // namespace
