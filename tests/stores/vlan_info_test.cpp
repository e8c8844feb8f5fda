#include "stores/vlan_info.h"

#include "sql.h"
#include "support/child.h"
#include "support/root.h"

#include <chrono>
#include <climits>
#include <csignal>

using namespace std::string_literals;

namespace {
struct VlanInfo : testing::Test {
    void SetUp() override
    {
        vlanInfoTableMake();
    }
    // Row of an ID as "type|name|profile type|colour"; "" when there is none and the out places were left alone.
    static std::string row(int id)
    {
        int32_t vlanType = 77;
        char name[256] = "kept", type[256] = "kept", color[8] = "kept";
        int found = vlanInfoSelectById(id, &vlanType, name, type, color);
        std::string text = std::to_string(vlanType) + "|" + name + "|" + type + "|" + color;
        EXPECT_TRUE(found == 1 || text == "77|kept|kept|kept") << text;
        return found == 1 ? text : "";
    }
    static void insert(const std::string &values)
    {
        sqlRun(PATH_VLANINFO_DB, "insert into vlanInfo values(" + values + ")");
    }
    static int listLoad()
    {
        OWNED_VLAN_INFO_LIST list(vlanInfoListCreate());
        return vlanInfoSelectAll(list.get());
    }
    TEST_ROOT_T root;
};

} // namespace

TEST_F(VlanInfo, TextsComeBackAsTheyWereStored)
{
    for (const char *name :
         {"O'Brien's \"stage\"", "100 %s %d %n %%", "'); drop table vlanInfo;--", "", "Bühne 日本"}) {
        ASSERT_EQ(vlanInfoReplace(10, 4, name, name, "#00ff00"), 0) << name;
        EXPECT_EQ(row(10), "4|"s + name + "|" + name + "|#00ff00");
    }
    EXPECT_EQ(row(12), "");
    EXPECT_EQ(vlanInfoSelectById(10, nullptr, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(logText(), "");
}

TEST_F(VlanInfo, OddCellsAreHeldWithinTheirFields)
{
    insert("1, NULL, NULL, NULL, NULL");
    insert("2, 99999999999, '" + std::string(300, 'n') + "', '" + std::string(300, 't') + "', '#123456789'");
    insert("3, 'six', 12, 1.5, x'00'");
    EXPECT_EQ(row(1), "0|||");
    EXPECT_EQ(row(2), std::to_string(INT_MAX) + "|" + std::string(255, 'n') + "|" + std::string(255, 't') + "|#123456");
    EXPECT_EQ(row(3), "0|12|1.5|");
}

TEST_F(VlanInfo, ListTakesAtMostItsCapacity)
{
    sqlRun(PATH_VLANINFO_DB,
           "with recursive n(i) as (select 1 union all select i + 1 from n where i < 5000) "
           "insert into vlanInfo select i, i % 9, 'name', 'type', '#000000' from n order by i > 4096, -i");
    OWNED_VLAN_INFO_LIST list(vlanInfoListCreate());
    for (int i = 0; i < 2; i++) { // a second load starts over
        ASSERT_EQ(vlanInfoSelectAll(list.get()), 4096);
        vlanInfoListSortById(list.get());
        for (int id : {1, 2047, 4096}) {
            const VLAN_INFO_ENTRY_T *entry = vlanInfoListFindById(list.get(), id);
            ASSERT_NE(entry, nullptr) << id;
            EXPECT_EQ(entry->vlanType, id % 9);
        }
        for (int id : {-1, 0, 4097})
            EXPECT_EQ(vlanInfoListFindById(list.get(), id), nullptr) << id;
    }
    EXPECT_EQ(row(5000), "5|name|type|#000000");
}

TEST_F(VlanInfo, MissingFileIsReportedAndNotCreated)
{
    ASSERT_EQ(remove(PathGet(PATH_VLANINFO_DB)), 0);
    OWNED_VLAN_INFO_LIST list(vlanInfoListCreate());
    EXPECT_EQ(vlanInfoReplace(1, 1, "n", "t", "#000000"), SQLITE_CANTOPEN);
    EXPECT_EQ(row(1), "");
    EXPECT_EQ(vlanInfoSelectAll(list.get()), -1);
    EXPECT_FALSE(fileExists(PathGet(PATH_VLANINFO_DB)));
    EXPECT_EQ(logText(), "(ERROR) vlanInfoReplace: Can't open database: unable to open database file\n"
                         "(ERROR) vlanInfoSelectById: Can't open database: unable to open database file\n"
                         "(ERROR) vlanInfoSelectAll: Can't open database: unable to open database file\n");
}

TEST_F(VlanInfo, FailedStatementIsNamed)
{
    sqlRun(PATH_VLANINFO_DB, "drop table vlanInfo");
    EXPECT_EQ(vlanInfoReplace(1, 2, "it's", "t", "#000000"), SQLITE_ERROR);
    EXPECT_EQ(row(1), "");
    EXPECT_EQ(listLoad(), -1);
    EXPECT_EQ(
        logText(),
        "(ERROR) vlanInfoReplace: replace into vlanInfo values(    1,    2,    'it''s',    't',    '#000000'    ) "
        "error: no such table: vlanInfo\n"
        "(ERROR) vlanInfoSelectById: select * from vlanInfo where id = 1 error: no such table: vlanInfo\n"
        "(ERROR) vlanInfoSelectAll: vlanInfoSelectAll error: no such table: vlanInfo\n");
}

TEST_F(VlanInfo, GivesUpAfterThreeSeconds)
{
    insert("7, 2, 'n', 't', '#000000'");
    OWNED_DB other = sqlOpen(PATH_VLANINFO_DB);
    ASSERT_EQ(sqlite3_exec(other.get(), "begin exclusive", nullptr, nullptr, nullptr), SQLITE_OK);
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(listLoad(), -1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2900));
    other.reset();
    EXPECT_EQ(row(7), "2|n|t|#000000");
    EXPECT_EQ(logText(), "(ERROR) vlanInfoSelectAll: vlanInfoSelectAll error: database is locked\n");
}

// Another program is killed inside its write: its journal stays, and what it had not finished is taken back.
TEST_F(VlanInfo, WriteOfAKilledProgramIsTakenBack)
{
    insert("7, 2, 'whole', 't', '#000000'");
    EXPECT_EQ(childRun([] {
                  OWNED_DB other = sqlOpen(PATH_VLANINFO_DB);
                  // beyond the cache, so that pages of the unfinished write are in the file
                  for (const char *sql :
                       {"pragma cache_size = 1", "begin exclusive", "pragma cache_spill = 1",
                        "update vlanInfo set profileName = 'half'",
                        "with recursive n(i) as (select 100 union all select i + 1 from n where i < 4000)"
                        "insert into vlanInfo select i, 1, hex(zeroblob(100)), '', '' from n"})
                      (void)sqlite3_exec(other.get(), sql, nullptr, nullptr, nullptr);
                  raise(SIGKILL);
                  return 0;
              }),
              "signal 9");
    ASSERT_TRUE(fileExists(PathGet(PATH_VLANINFO_DB) + "-journal"s));
    EXPECT_EQ(row(7), "2|whole|t|#000000");
    EXPECT_EQ(listLoad(), 1);
    EXPECT_EQ(logText(), "");
}

// A schema is data: nothing of it runs.
TEST_F(VlanInfo, ViewsAndTriggersDoNotRun)
{
    sqlRun(PATH_VLANINFO_DB, "create trigger t after insert on vlanInfo begin update vlanInfo set color = 'red'; end");
    EXPECT_EQ(vlanInfoReplace(1, 1, "n", "t", "#000000"), 0);
    EXPECT_EQ(row(1), "1|n|t|#000000");
    sqlRun(PATH_VLANINFO_DB, "drop table vlanInfo; create view vlanInfo as"
                             " select 1 as id, 2 as vlanType, 'n' as profileName, 't' as profileType, '' as color");
    EXPECT_EQ(listLoad(), -1);
    EXPECT_NE(logText().find("access to view \"vlanInfo\" prohibited"), std::string::npos) << logText();
}
