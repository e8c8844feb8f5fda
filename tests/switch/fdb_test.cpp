#include "switch/fdb.h"

#include "fixture.h"
#include "runtime/paths.h"
#include "support/alloc.h"

using namespace std::string_literals;

namespace {
const char tableHead[] = "\nLearning................... Enabled\n\n"
                         "VLAN ID  MAC Address         Interface              IfIndex  Status\n"
                         "-------  ------------------  ---------------------  -------  ------------\n";

struct Fdb : SWITCH_TEST {
    using READER_T = uint32_t (*)(CLIENT_HANDLE_T *, OWNED_ARRAY<FDB_ENTRY_T> *);

    // Entries as "vlan mac interface learned", a line each.
    std::string entriesOf(READER_T reader)
    {
        OWNED_ARRAY<FDB_ENTRY_T> entries;
        uint32_t count = reader(&handle, &entries);
        std::string text;
        for (uint32_t i = 0; i < count; i++)
            text += std::to_string(entries[i].vlanId) + " " + entries[i].mac + " " + std::to_string(entries[i].ifNum) +
                    " " + std::to_string(entries[i].learned) + "\n";
        return text;
    }
    std::string fast(const std::string &text)
    {
        vsTextSet("show mac-addr-table", text);
        std::string entries = entriesOf(fdbEntryListGetSimpleFast);
        EXPECT_FALSE(fileExists(PathGet(PATH_SHOW_MAC_TABLE)));
        return entries;
    }
    static void learnMany(unsigned count)
    {
        for (unsigned i = 0; i < count; i++) {
            char mac[MAC_TEXT_SIZE];
            snprintf(mac, sizeof mac, "00:1D:56:00:%02X:%02X", i >> 8, i & 0xFF);
            VS_FDB_T row;
            row.mac = mac;
            row.ifNum = 1 + i % 3;
            row.learned = true;
            vsState().fdb.push_back(row);
        }
    }
};
} // namespace

TEST_F(Fdb, TableRowsBecomeEntries)
{
    struct {
        const char *what;
        std::string rows, entries;
    } cases[] = {
        {"learned and not",
         "1        00:1D:56:10:20:30   1/0/3                  3        Learned\n"
         "4093     00:1d:56:10:20:31   1/0/48                 48       Static\n",
         "1 00:1D:56:10:20:30 3 1\n4093 00:1d:56:10:20:31 48 0\n"},
        {"interfaces that are no port",
         "1        02:10:18:4A:00:01   CPU Interface:         0/5/1    Management\n"
         "1        02:10:18:4A:00:02   lag 1                  770      Learned\n"
         "1        02:10:18:4A:00:03   lag/1                  770      Learned\n"
         "1        02:10:18:4A:00:04   12                     770      Learned\n",
         ""},
        {"numbers out of range",
         "0        00:00:00:00:00:01   1/0/3  3   Learned\n"
         "-1       00:00:00:00:00:01   1/0/3  3   Learned\n"
         "x        00:00:00:00:00:01   1/0/3  3   Learned\n"
         "1        00:00:00:00:00:01   1/0/3  0   Learned\n"
         "1        00:00:00:00:00:01   1/0/3  -3  Learned\n",
         ""},
        {"short and long rows, blank lines",
         "1        00:00:00:00:00:01   1/0/3  3\n\n\r\n"
         "1        00:00:00:00:00:01   1/0/3  3   Learned  more\n"
         "1        00:00:00:00:00:01   1/0/3  3   Learned  1 2 3 4 5 6 7 8 9\n"
         "1\t00:00:00:00:00:02\t1/0/3\t3\tLearned",
         "1 00:00:00:00:00:02 3 1\n"},
        {"over-long address", "1 " + std::string(100, 'A') + " 1/0/3 3 Learned\n",
         "1 " + std::string(17, 'A') + " 3 1\n"},
        {"the prompt ends it, unless a carriage return begins its line",
         "\r(TK830-T16) #\n1 00:00:00:00:00:01 1/0/3 3 Learned\n(TK830-T16) #\n1 00:00:00:00:00:02 1/0/3 3 Learned\n",
         "1 00:00:00:00:00:01 3 1\n"},
        {"a line of more than 255 characters goes on as another",
         "1 00:00:00:00:00:01 1/0/3 3 Learned" + std::string(220, ' ') + "1 00:00:00:00:00:02 1/0/3 3 Learned\n",
         "1 00:00:00:00:00:01 3 1\n1 00:00:00:00:00:02 3 1\n"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(fast(tableHead + row.rows), row.entries) << row.what;
        if (row.rows.size() < 255) {
            EXPECT_EQ(fast(withCrlf(tableHead + row.rows)), row.entries) << row.what << ", CR LF";
        }
    }
    EXPECT_EQ(fast("-------\n1 00:00:00:00:00:01 1/0/3 3 Learned\n"), "") << "no rule";
    EXPECT_EQ(fast(""), "");
}

TEST_F(Fdb, FailedCommandIsReportedAMissingFileIsNot)
{
    spoilCommand("show mac-addr-table", VS_FAIL);
    EXPECT_EQ(entriesOf(fdbEntryListGetSimpleFast), "");
    EXPECT_EQ(logText(), "(ERROR) platformRun: Show cmd failed: show mac-addr-table\n"
                         "(ERROR) cliShowExecuteToFile: Execute show cmd faile, result:-1\n"
                         "(ERROR) fdbEntryListGetSimpleFast: fdbEntryListGetSimpleFast: cliShowExecuteToFile failed\n");
    vsFaultsClear();
    logClear();
    spoilCommand("show mac-addr-table", VS_NO_FILE);
    EXPECT_EQ(entriesOf(fdbEntryListGetSimpleFast), "");
    EXPECT_EQ(logText(), "");
}

TEST_F(Fdb, WithoutMemoryTheEntriesSoFarAreKept)
{
    learnMany(1500);
    struct {
        READER_T reader;
        const char *line;
    } cases[] = {
        {fdbEntryListGetSimpleFast,
         "(ERROR) fdbEntryListGetSimpleFast: fdbEntryListGetSimpleFast: realloc failed at count=1024\n"},
        {fdbEntryListGetSimple, "(ERROR) fdbEntryListGetSimple: fdbEntryListGetSimple: realloc failed at count=1024\n"},
    };
    for (const auto &row : cases) {
        logClear();
        allocFailAt(1, ALLOC_OWN);
        OWNED_ARRAY<FDB_ENTRY_T> entries;
        uint32_t count = row.reader(&handle, &entries);
        EXPECT_TRUE(allocFailStop()) << row.line;
        EXPECT_EQ(count, 1024U) << row.line;
        EXPECT_EQ(logText(), row.line);
    }
}
