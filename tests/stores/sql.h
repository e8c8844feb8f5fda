// sql.h - what other programs do to the databases that the daemon reads.
#pragma once

#include "runtime/owned.h"
#include "runtime/paths.h"

#include <gtest/gtest.h>
#include <string>

// A connection that creates the file when it is missing.
inline OWNED_DB sqlOpen(PATH_ID file)
{
    sqlite3 *db = nullptr;
    EXPECT_EQ(sqlite3_open(PathGet(file), &db), SQLITE_OK);
    return OWNED_DB(db);
}

inline void sqlRun(PATH_ID file, const std::string &statements)
{
    OWNED_DB db = sqlOpen(file);
    EXPECT_EQ(sqlite3_exec(db.get(), statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(db.get());
}

inline void vlanInfoTableMake()
{
    sqlRun(PATH_VLANINFO_DB, "create table vlanInfo(id int primary key, vlanType int, profileName varchar(256),"
                             "profileType varchar(256), color varchar(8))");
}

inline void ouiTableMake()
{
    sqlRun(PATH_OUI_DB, "create table oui(mac text, vendor text)");
}
