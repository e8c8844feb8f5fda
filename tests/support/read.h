// read.h - whole files, and the records of a cache as a neighbouring program reads them. Needs no test framework.
#pragma once

#include "runtime/owned.h"

#include <fstream>
#include <map>
#include <sstream>
#include <string>

using RECORDS_T = std::map<std::string, std::string>; // text by API name

// Whole content of a file; "" when it is missing.
inline std::string fileRead(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// Records of a cache, on a connection of its own that waits so many milliseconds for a writer: all, or that of one
// name. SQLITE_DONE, or the code of what failed.
inline int recordsRead(const std::string &path, RECORDS_T *records, const std::string &name, int wait)
{
    const char *sql = name.empty() ? "SELECT api_name, data FROM restapi_db NOT INDEXED"
                                   : "SELECT api_name, data FROM restapi_db WHERE api_name = ?";
    sqlite3 *opened = nullptr;
    sqlite3_stmt *prepared = nullptr;
    int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
    OWNED_DB db(opened);

    if (result != SQLITE_OK)
        return result;
    sqlite3_busy_timeout(opened, wait);
    result = sqlite3_prepare_v2(opened, sql, -1, &prepared, nullptr);
    OWNED_STATEMENT select(prepared);
    if (result != SQLITE_OK)
        return result;
    if (!name.empty())
        sqlite3_bind_text(prepared, 1, name.c_str(), -1, SQLITE_STATIC);
    while ((result = sqlite3_step(prepared)) == SQLITE_ROW) {
        const unsigned char *key = sqlite3_column_text(prepared, 0);
        const unsigned char *data = sqlite3_column_text(prepared, 1);
        (*records)[key == nullptr ? "" : reinterpret_cast<const char *>(key)] =
            data == nullptr ? "" : reinterpret_cast<const char *>(data);
    }
    return result;
}
