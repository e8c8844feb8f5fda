// sql.h - a prepared statement on the owned handles: prepare, bind, step, text. All results are SQLite's codes.
#pragma once

#include "runtime/owned.h"

#include <initializer_list>
#include <string_view>

// Prepare a statement; it is null when that fails.
[[nodiscard]] inline int sqlPrepare(sqlite3 *db, const char *sql, OWNED_STATEMENT *statement)
{
    sqlite3_stmt *prepared = nullptr;
    int result = sqlite3_prepare_v2(db, sql, -1, &prepared, nullptr);

    statement->reset(prepared);
    return result;
}

// Bind texts to the parameters 1, 2, ...; they are not copied.
[[nodiscard]] inline int sqlBind(const OWNED_STATEMENT &statement, std::initializer_list<const char *> texts)
{
    int result = SQLITE_OK;
    int parameter = 0;

    for (const char *text : texts) {
        if (result == SQLITE_OK)
            result = sqlite3_bind_text(statement.get(), ++parameter, text, -1, SQLITE_STATIC);
    }
    return result;
}

// SQLITE_ROW, SQLITE_DONE, or what went wrong.
[[nodiscard]] inline int sqlStep(const OWNED_STATEMENT &statement)
{
    return sqlite3_step(statement.get());
}

// A column of the current row, valid until the next step. A zero byte follows it; data() is null for NULL.
[[nodiscard]] inline std::string_view sqlText(const OWNED_STATEMENT &statement, int column)
{
    const unsigned char *text = sqlite3_column_text(statement.get(), column);

    if (text == nullptr)
        return {};
    return {reinterpret_cast<const char *>(text), static_cast<size_t>(sqlite3_column_bytes(statement.get(), column))};
}
