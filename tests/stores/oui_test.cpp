#include "stores/oui.h"

#include "sql.h"
#include "support/alloc.h"
#include "support/root.h"

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

TEST_F(Oui, FailureLeavesTheTableEmptyForTheProcess)
{
    const char *const cases[] = {"missing", "empty file", "no database", "no memory"};
    for (const std::string row : cases) {
        TEST_ROOT_T fresh;
        if (row == "no memory") {
            ouiTableMake();
            sqlRun(PATH_OUI_DB, "insert into oui values('00:00:01', 'v')");
            allocFailAt(0, ALLOC_OWN);
        } else if (row != "missing") {
            fileWrite(PathGet(PATH_OUI_DB), std::string(row == "empty file" ? 0 : 4096, 'x'));
        }
        ouiTableLoad();
        allocFailStop();
        EXPECT_STREQ(ouiVendorOfMac("00:00:01:00:00:00"), "") << row;
        EXPECT_EQ(remove(PathGet(PATH_OUI_DB)) == 0, row != "missing") << "the load makes no file";
        rowsAdd("('00:00:01', 'v')");
        EXPECT_STREQ(ouiVendorOfMac("00:00:01:00:00:00"), "") << row;
    }
}
