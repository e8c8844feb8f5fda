#include "stores/oui.h"

#include "sql.h"
#include "support/alloc.h"
#include "support/root.h"

using namespace std::string_literals;

namespace {
struct Oui : testing::Test {
    static void rowsAdd(const std::string &values)
    {
        ouiTableMake();
        sqlRun(PATH_OUI_DB, "insert into oui values " + values);
        ouiTableLoad();
    }
    TEST_ROOT_T root;
};
} // namespace

TEST_F(Oui, VendorIsFoundByTheFirstThreeBytes)
{
    rowsAdd("('F8:57:2E', 'last'), ('00:1D:56', 'first'), ('80:1F:12', 'middle')");
    EXPECT_STREQ(ouiVendorOfMac("00:1D:56:01:02:03"), "first");
    EXPECT_STREQ(ouiVendorOfMac("80:1f:12:aa:bb:cc"), "middle");
    EXPECT_STREQ(ouiVendorOfMac("f8:57:2E"), "last");
    for (const char *mac : {"", "00:1D:5", "00:1D:57:01:02:03", "FF:FF:FF:FF:FF:FF", "00-1D-56-01-02-03"})
        EXPECT_STREQ(ouiVendorOfMac(mac), "") << mac;
}

TEST_F(Oui, OddRowsHarmNoOther)
{
    const std::string umlauts = "'0123456789012345678901234567890\xC3\xBC'"; // the 32nd byte is half a character
    rowsAdd("('00:00:01', 'fine'), ('ac:47:23', 'lower case'), ('00:00:02', NULL), (NULL, 'no key'), "
            "('00:00:03:FF:FF:FF', 'long key'), ('', 'empty key'), ('00:00:04', '" +
            std::string(40, 'v') + "'), ('00:00:05', '012345678901234567890123456789\xC3\xBC" + "'), ('00:00:06', " +
            umlauts + "), (12, 34), ('zz', 'last')");
    EXPECT_STREQ(ouiVendorOfMac("00:00:01:00:00:00"), "fine");
    EXPECT_STREQ(ouiVendorOfMac("AC:47:23:00:00:00"), "") << "keys are upper case";
    EXPECT_STREQ(ouiVendorOfMac("00:00:02:00:00:00"), "");
    EXPECT_STREQ(ouiVendorOfMac("00:00:03:00:00:00"), "long key");
    EXPECT_EQ(ouiVendorOfMac("00:00:04:00:00:00"), std::string(31, 'v'));
    EXPECT_STREQ(ouiVendorOfMac("00:00:05:00:00:00"), "012345678901234567890123456789");
    EXPECT_STREQ(ouiVendorOfMac("00:00:06:00:00:00"), "0123456789012345678901234567890");
}

TEST_F(Oui, OrderDoesNotHangOnTheColumnsCollation)
{
    sqlRun(PATH_OUI_DB, "create table oui(mac text collate nocase, vendor text);"
                        "insert into oui values('0A:00:00', 'a'), ('0a:00:01', 'b'), ('0A:00:02', 'c'), "
                        "('0a:00:03', 'd'), ('0A:00:04', 'e')");
    ouiTableLoad();
    EXPECT_STREQ(ouiVendorOfMac("0A:00:00:00:00:00"), "a");
    EXPECT_STREQ(ouiVendorOfMac("0A:00:02:00:00:00"), "c");
    EXPECT_STREQ(ouiVendorOfMac("0A:00:04:00:00:00"), "e");
}

TEST_F(Oui, FailureLeavesTheTableEmptyForTheProcess)
{
    struct {
        const char *what;
        void (*spoil)();
    } cases[] = {
        {"missing",
         [] {
         }},
        {"empty file",
         [] {
             fileWrite(PathGet(PATH_OUI_DB), "");
         }},
        {"no database",
         [] {
             fileWrite(PathGet(PATH_OUI_DB), std::string(4096, 'x'));
         }},
        {"no memory",
         [] {
             ouiTableMake();
             sqlRun(PATH_OUI_DB, "insert into oui values('00:00:01', 'v')");
             allocFailAt(0, ALLOC_OWN);
         }},
    };
    for (const auto &row : cases) {
        TEST_ROOT_T fresh;
        row.spoil();
        ouiTableLoad();
        allocFailStop();
        EXPECT_STREQ(ouiVendorOfMac("00:00:01:00:00:00"), "") << row.what;
        EXPECT_EQ(remove(PathGet(PATH_OUI_DB)) == 0, row.what != "missing"s) << "the load makes no file";
        rowsAdd("('00:00:01', 'v')");
        EXPECT_STREQ(ouiVendorOfMac("00:00:01:00:00:00"), "") << row.what;
    }
}
