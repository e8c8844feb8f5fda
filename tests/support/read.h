// read.h - whole files, and the records of a cache as a neighbouring program reads them. Needs no test framework.
#pragma once

#include "runtime/owned.h"
#include "runtime/sql.h"

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
    int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
    OWNED_DB db(opened);

    if (result != SQLITE_OK)
        return result;
    sqlite3_busy_timeout(opened, wait);
    OWNED_STATEMENT select;
    result = sqlPrepare(opened, sql, &select);
    if (result == SQLITE_OK && !name.empty())
        result = sqlBind(select, {name.c_str()});
    if (result != SQLITE_OK)
        return result;
    while ((result = sqlStep(select)) == SQLITE_ROW)
        (*records)[std::string(sqlText(select, 0))] = sqlText(select, 1);
    return result;
}
