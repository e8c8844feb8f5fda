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

// While it lives: another connection has the database for itself, and SQLite's waiting is counted instead of slept.
struct SQL_LOCKED_T {
    explicit SQL_LOCKED_T(PATH_ID file) : holder(sqlOpen(file))
    {
        EXPECT_EQ(sqlite3_exec(holder.get(), "begin exclusive", nullptr, nullptr, nullptr), SQLITE_OK);
        waited = 0;
        vfs->xSleep = [](sqlite3_vfs *, int microseconds) {
            waited += microseconds;
            return microseconds;
        };
    }
    SQL_LOCKED_T(const SQL_LOCKED_T &) = delete;
    SQL_LOCKED_T &operator=(const SQL_LOCKED_T &) = delete;
    ~SQL_LOCKED_T()
    {
        vfs->xSleep = sleep;
    }
    OWNED_DB holder;              // reset to let go of the lock
    static inline int64_t waited; // microseconds
    sqlite3_vfs *vfs = sqlite3_vfs_find(nullptr);
    decltype(vfs->xSleep) sleep = vfs->xSleep;
};

inline void vlanInfoTableMake()
{
    sqlRun(PATH_VLANINFO_DB, "create table vlanInfo(id int primary key, vlanType int, profileName varchar(256),"
                             "profileType varchar(256), color varchar(8))");
}

inline void ouiTableMake()
{
    sqlRun(PATH_OUI_DB, "create table oui(mac text, vendor text)");
}
