#include "collectors/port/interfaces_table.h"
#include "support/build.h"

static const std::string rule = "---------  ----------------------  ------  ----------  ----------  ----------\n";
static const std::string row1 = "1/0/1      Stage left              Up      Auto        1000 Full   Copper      Off\n";
static const std::string row2 = "1/0/2                              Down    100 Half                            Off\n";
static const std::string row3 = "1/0/3      1/0/9 lag4 -----------  Detach  Auto                    10GBase-SR\n";
static const std::string lag1 = "lag1                               Up                                          \n";

struct InterfacesTable : BUILDER_TEST {};

// Entries that a status text gives, one a line, in a table of exactly the room announced.
static std::string status(const std::string &text, uint32_t physical = 4, uint32_t further = 4)
{
    fileWrite(PathGet(PATH_SHOW_INTERFACES_STATUS), text);
    std::vector<INTERFACE_ENTRY_T> table(physical + further);
    uint32_t count = 99;
    EXPECT_EQ(interfacesStatusFromCliGet(table.data(), physical, further, &count), 0);
    std::string entries;
    for (uint32_t i = 0; i < count; i++)
        entries += std::string(table[i].name) + "|" + table[i].linkState + "|" + table[i].physicalMode + "|" +
                   table[i].physicalStatus + "|" + table[i].mediaType + "\n";
    return entries;
}

TEST_F(InterfacesTable, StatusRowsAreTakenByColumn)
{
    const std::string one = "1/0/1|Up|Auto|1000 Full|Copper\n", two = "1/0/2|Down|100 Half||\n";
    const std::pair<std::string, std::string> cases[] = {
        {row1 + rule + row2 + row3 + lag1, two + "1/0/3|Detach|Auto||10GBase-SR\nlag1|Up|||\n"},
        {row1 + " " + rule + row2, ""}, // a rule that does not begin its line is none
        {rule + row1 + "\n" + rule + "1\nport 1/0/1\nlag\n" + row2, one + two},
        // columns that end early: the last may be short, and be nothing but the line end
        {rule + row1.substr(0, 70), "1/0/1|Up|Auto|1000 Full|Cop\n"},
        {rule + row1.substr(0, 67) + "\n" + row2, "1/0/1|Up|Auto|1000 Full|\n" + two},
        {rule + row1.substr(0, 66) + "\n" + row1.substr(0, 43) + "\n1/0/4\n" + row2 + row1.substr(0, 67), two},
        {rule + row1.substr(0, 73) + "\r\n" + row1.substr(0, 64) + "\r\n" + row2, one + two},
        // names and cells as wide as their columns
        {rule + "1/10/1234567890123456789012345678  UnknownX2345678901XX2345678901XX1234567890123\n",
         "1/10/1234|Unknow|2345678901|2345678901|1234567890\n"},
        // a row longer than the line buffer: its rest is a line of its own, and no row
        {rule + row1.substr(0, 80) + std::string(2000, 'x') + "\n" + row2, one + two},
    };
    for (const auto &[text, entries] : cases)
        EXPECT_EQ(status(text), entries) << text;
    EXPECT_EQ(status(rule + row1 + row2 + row3, 1, 1), one + two);
    EXPECT_EQ(status(rule + row1, 0, 0), "");
}

TEST_F(InterfacesTable, JoinedTablesFollowTheOrderOfTheStatusTable)
{
    const std::string fec1 = "1/0/1     CL91         Up\n", fec2 = "1/0/2     Auto CL74    Up\n";
    const std::string fec3 = "1/0/3     Disabled     Down\n", mode3 = "1/0/3      4x25G           sub-ports\n";
    const std::tuple<bool, std::string, std::string> cases[] = {
        {true, rule + fec1 + fec2 + fec3, "CL91|Auto CL74|Disabled|"},
        {true, fec1 + fec2, "|||"},
        {true, rule + fec2 + fec1 + fec3, "|Auto CL74||"}, // entries may be passed over, but not gone back to
        {true, rule + "1/0/9     CL91\n", "|||"},          // stands behind the counted entries
        {true, rule + fec1 + "\n" + fec2, "CL91|||"},      // a line without numbers ends the table
        {true, rule + fec1 + "lag1      CL91\n" + fec2, "CL91|||"},
        {true, rule + fec1 + "2 Auto\n" + fec3, "CL91||Disabled|"},   // one with a single number is passed over
        {true, rule + "1/0/1\n1/0/2     \r\n" + fec3, "||Disabled|"}, // no second column; an empty one
        {true, rule + "1/0/1     1234567890123456\n", "1234567890123|||"},
        {true, rule + "1/0/1     CL91" + std::string(1200, ' ') + "\n" + fec2, "CL91|||"},
        {false, rule + "1/0/1 1x100G\r\n1/0/2\r\n" + mode3, "1x100G||4x25G|"},
        {false, rule + "1/0/8 1x100G\n" + mode3, "|||"},
        {false, rule + "1/0/1 " + std::string(1500, 'm') + "\n" + mode3, "mmmmmmmmmmm|||"},
    };
    for (const auto &[fec, text, expected] : cases) {
        INTERFACE_ENTRY_T t[5] = {{"1/0/1"}, {"1/0/2"}, {"1/0/3"}, {"lag1"}, {"1/0/9"}};
        fileWrite(PathGet(fec ? PATH_SHOW_FEC : PATH_SHOW_HW_PROFILE), text);
        EXPECT_EQ(fec ? interfacesFecModeFromCliGet(t, 4) : interfacesFanOutModeFromCliGet(t, 4), 0);
        std::string found;
        for (const INTERFACE_ENTRY_T &entry : t)
            found += (&entry > t && &entry < t + 4 ? "|" : "") + std::string(fec ? entry.fec : entry.fanOutMode);
        EXPECT_EQ(found, expected) << text;
    }
}

// A command that leaves no file is named and its columns stay empty; an earlier run's file is never read.
TEST_F(InterfacesTable, EachTableIsReadWhenItsCommandSucceeded)
{
    const char *const cases[][3] = {
        {"show interfaces status all", "||", "interfacesStatusFromCliGet"},
        {"show interface fec", "1/0/1||1x100G", "interfacesFecModeFromCliGet"},
        {"show interfaces hardware profile", "1/0/1|CL91|", "interfacesFanOutModeFromCliGet"}};
    vsTextSet(cases[0][0], rule + row1);
    vsTextSet(cases[1][0], rule + "1/0/1     CL91\n");
    vsTextSet(cases[2][0], rule + "1/0/1 1x100G\n");
    for (const auto &[command, expected, caller] : cases) {
        INTERFACE_ENTRY_T entry = {};
        uint32_t count = 99;
        fileWrite(PathGet(PATH_SHOW_INTERFACES_STATUS), rule + row2);
        vsFaultAdd({command, "", 0, VS_NO_FILE});
        interfacesTableFill(&handle, &entry, 1, 0, &count);
        vsFaultsClear();
        EXPECT_EQ(std::string(entry.name) + "|" + entry.fec + "|" + entry.fanOutMode, expected) << command;
        EXPECT_TRUE(has(logText(), caller + (": can not open file:" + root.dir))) << logText();
    }
}

TEST(FecClass, IsTheFirstWordOfTheListThatOccurs)
{
    const char *const cases[][2] = {{"Disabled", "Disable"}, {"CL74 Auto", "Auto"}, {"CL74/CL108", "CL108"},
                                    {"RS108", "RS108"},      {"auto", "Unknown"},   {"", "Unknown"}};
    for (const auto &one : cases)
        EXPECT_STREQ(fecClassGet(one[0]), one[1]) << one[0];
}
