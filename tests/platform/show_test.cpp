// Show commands of the virtual switch: each line is taken apart with the formats and at the columns that its readers
// use, written out here once more, so that a table that shifts is seen.
#include <control.h>
#include <gtest/gtest.h>
#include <model.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

std::vector<std::string> linesOf(const std::string &command)
{
    std::vector<std::string> lines;
    std::string text = vsShowText(command);
    for (size_t at = 0, end; (end = text.find('\n', at)) != std::string::npos; at = end + 1)
        lines.push_back(text.substr(at, end - at));
    return lines;
}

std::string trimmed(const std::string &text)
{
    const size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

// Stretches of a line, each given as "column+length", trimmed, with "|" between them.
std::string cut(const std::string &line, const char *cuts)
{
    std::string out;
    unsigned column = 0, length = 0;
    for (int used = 0; sscanf(cuts, "%u+%u%n", &column, &length, &used) == 2; cuts += used)
        out += "|" + (column < line.size() ? trimmed(line.substr(column, length)) : "");
    return out.substr(1);
}

// First line that begins with a text, after the first one that holds `after`.
std::string lineOf(const std::string &command, const std::string &begin, const std::string &after = "")
{
    bool seen = after.empty();
    for (const std::string &line : linesOf(command)) {
        if (seen && line.compare(0, begin.size(), begin) == 0)
            return line;
        seen = seen || line.find(after) != std::string::npos;
    }
    return "no line: " + begin;
}

// Unit 1 of three has a port that is off, one with an optic, and a LAG; unit 3 comes late.
const char *const SCENARIO = R"({
"system": {"managementVlan": 20, "managementAddress": "192.168.10.2", "managementMask": "255.255.255.0",
           "managementGateway": "192.168.10.1", "activeImage": "8.4.3.50", "backupImage": "8.4.3.48",
           "activatedImage": "8.4.3.50", "summerTime": "EU", "autoLag": true, "bufferedSeverity": "warning"},
"vlans": {"20": {"name": "Dante", "routed": true, "address": "10.20.30.1/20"},
          "300": {"name": "Guest", "static": false}},
"units": {"1": {"model": "TK830-T03", "slots": {"1": {"model": "QMD-K5"}, "2": {"model": ""}}, "serial": "SN0001",
                "images": ["8.4.3.50", "8.4.3.48", "8.4.3.50-current", "8.4.3.50"],
                "sensors": [{"id": 1, "description": "MAC and PHY near the fan", "temperature": 45,
                             "state": "Not Present", "maximum": 52}]},
          "2": {"model": "TK830-T02", "serial": "SN0002", "standby": true, "stackPorts": [{"slot": 0, "port": 15}],
                "fans": [{"id": 1, "description": "Fan tray 1", "state": "Not Present"}]},
          "3": {"model": "TK830-T02", "present": {"from": 100}}},
"ports": {"1/0/1": {"linkUp": true, "adminUp": false},
          "1/0/2": {"linkUp": true, "speed": "1G", "description": "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx",
                    "pvid": 20, "inRate": 250000000, "outRate": 0, "fec": "RS-FEC CL108", "hwProfile": "1x100G",
                    "stackCapable": "Yes", "stormControl": true, "stpTcnGuard": true, "stpState": "discarding",
                    "optic": {"present": true, "type": 2, "compliance": "10GBase-SR", "vendor": "ACME Fiber",
                              "serial": "A1B2C3", "part": "X-10G-SR", "revision": "R01", "bitRate": "10300",
                              "length50": "50", "length62": "60", "length": "300", "speeds": "1G,10G",
                              "temperature": 41.7, "voltage": 3.312, "current": 6.2, "outputPower": -2.345678,
                              "inputPower": -13.5, "los": true, "faultStatus": "RX LOS"}}},
"lags": {"1": {"members": ["1/0/2"], "description": "Core uplink", "switchMode": "autoTrunk"}},
"fdb": [{"mac": "00:1D:C1:00:00:01", "vlan": 20, "port": "1/0/2"},
        {"mac": "00:1D:C1:00:00:02", "vlan": 20, "port": "lag 1"}],
"acls": [{"name": "NET-BLOCK", "denied": ["224.0.0.251"], "interfaces": ["1/0/2"]}],
"radius": [{"address": "radius.example.net", "port": 1812, "primary": false}]
})";

class ShowCommands : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText(SCENARIO), "");
        vsClockSet(60);
    }
};

TEST_F(ShowCommands, FixedColumnsStandWhereTheyAreRead)
{
    const std::string rate = cut(lineOf("show interface 1/0/2", "Received Rate(Mbps)"), "48+24");
    ASSERT_GT(std::stod(rate), 200.0);
    const struct {
        const char *command, *line, *cuts, *values, *after = "";
    } cases[] = {
        {"show interfaces status all", "1/0/2", "0+9 33+2 35+6 43+10 55+10 67+10",
         "1/0/2||Up|Auto|1000 Full|10GBase-SR"},
        {"show interfaces status all", "1/0/1 ", "0+9 35+6 43+10 55+10 67+10", "1/0/1|Down|Auto||Copper"},
        {"show interfaces status all", "3/0/1 ", "35+6", "Detach"},
        {"show interfaces status all", "lag", "0+9 35+6", "lag 1|Up"},
        {"show interface fec", "1/0/2", "0+10 10+13", "1/0/2|RS-FEC CL108"},
        {"show interfaces description all", "lag", "0+9 11+80", "lag 1|Core uplink"},
        {"show port all", "1/0/2", "0+9 17+9 79+8", "1/0/2|Enable|Yes"},
        {"show port all", "1/0/1", "17+9 79+8", "Disable|No"},
        {"show port advertise", "1/0/2", "0+9 31+8", "1/0/2|Enabled"},
        {"show vlan port all", "1/0/2", "0+9 9+9", "1/0/2|20"},
        {"show port status all", "1/0/2", "0+8 8+12 28+4 44+10", "1/0/2|10GBase-SR|BLK|1000 Full"},
        {"show port status all", "1/0/1", "8+12 44+10", "Copper|"},
        {"show spanning-tree mst port summary 0 all", "1/0/2", "0+9 10+8 26+10", "1/0/2|Enabled|Discarding"},
        {"show interface counters", "1/0/2", "96+20", rate.c_str()},
        {"show interface counters", "1/0/2", "96+20", "0.0", "OutOctets"},
        {"show interface 1/0/2", "Percent Utilization Received", "48+2", std::stod(rate) < 250 ? "24" : "25"},
        {"show fiber-ports optics all", "1/0/2", "24+4 30+7 39+7 49+7 58+7 68+5 75+3 80+13",
         "41.7|3.312|6.2|-2.346|-13.500|No|Yes|RX LOS"},
        {"show fiber-ports optics-info all", "1/0/2", "9+16 26+6 33+6 40+6 47+16 64+16 81+7 89+4 94+16 111+12 124+9",
         "ACME Fiber|50|60|300|A1B2C3|X-10G-SR|10300|R01|10GBase-SR|Yes|1G,10G"},
        {"show switch", "1 ", "4+7 16+9 26+16 60+2", "Mgmt Sw||TK830-T03|OK"},
        {"show switch", "2 ", "4+7 16+9", "Stack M|Oper Stby"},
        {"show switch", "3 ", "26+16 60+14", "TK830-T02|Not Present"},
        {"show stack-port", "2 ", "5+11", "0/15"},
        {"show ip management", "IPv4 Management Interface", "52+10", "20"},
        {"show ip management", "IP Address", "46+30", "192.168.10.2"},
        {"show ip management", "Default Gateway", "46+30", "192.168.10.1"},
        {"show switch detail", "Switch............................ ", "35+9", "1"},
        {"show switch detail", "Management Status", "35+40", "Management Switch"},
        {"show switch detail", "Switch Status", "35+40", "OK"},
        {"show switch detail", "Detected Code in Flash", "35+40", "8.4.3.50"},
        {"show switch detail", "Serial Number", "35+40", "SN0002", "Switch............................ 2"},
        {"show switch detail", "Up Time", "35+60", "0 days 1 hrs 1 mins 0 secs"},
        {"show process cpu all", "Memory and Process CPU Utilization Info of Unit:", "48+9", "2", "Total"},
        {"show process cpu all", "free", "7+20", "1200000"},
        {"show port-channel auto all", "Auto LAG Global Ha", "48+2", "3"},
        {"show radius servers", "     ", "5+18", "radius.example.net"},
    };
    for (const auto &c : cases) {
        const std::string line = lineOf(c.command, c.line, c.after);
        EXPECT_EQ(cut(line, c.cuts), c.values) << c.command << "\n" << line;
    }
}

int scan(const char *line, const char *format, ...)
{
    va_list fields;
    va_start(fields, format);
    const int count = vsscanf(line, format, fields);
    va_end(fields);
    return count;
}

// The fields that a format reads, with "|" between them. Numbers are passed over by "%*d" unless they are looked at.
std::string scanned(const std::string &line, const char *format)
{
    char t[6][64] = {};
    const int count = scan(line.c_str(), format, t[0], t[1], t[2], t[3], t[4], t[5]);
    std::string out;
    for (int i = 0; i < count; i++)
        out += std::string(i == 0 ? "" : "|") + t[i];
    return out;
}

TEST_F(ShowCommands, RowsScanWithTheReadersFormats)
{
    const char *const slot = "%*d/%*d %15s %15s %15s %31s %31s %15s %*15s";
    const struct {
        const char *command, *line, *after, *format, *values;
    } cases[] = {
        {"show bootvar", "    1", "next-active", "%*d %63s %63s %63s %63s",
         "8.4.3.50|8.4.3.48|8.4.3.50-current|8.4.3.50"},
        {"show slot", "1/1", "", slot, "Full|Enable|Enable|QMD-K5|QMD-K5|Yes"},
        {"show slot", "1/2", "", slot, "Empty|Disable|Disable|Yes|Yes"},
        {"show environment", "1 ", "Temperature Sensors:", "%*d %*d %16c %63s %63s %63s",
         "MAC and PHY near|45|NotPresent|52"},
        {"show environment", "2 ", "Fans:", "%*d %*d %63s %63s %*s %63s %63s", "Fan-tray-1|Fixed|40%|Not"},
        {"show ip interface brief", "vlan ", "", "%*s %63s %*s %63s %63s %*s %63s",
         "20|10.20.30.1|255.255.240.0|Manual"},
        {"show mac-addr-table", "20", "----------", "%63s %63s %63s %63s %63s %63s",
         "20|00:1D:C1:00:00:01|1/0/2|2|Learned"},
        {"show interfaces switchport trunk", "lag", "", "%9c%*29c%63s", "lag 1    |Yes"},
        {"show storm-control all", "1/0/2", "", "%11s %15s", "1/0/2|Enable"},
        {"show interfaces hardware profile", "1/0/2", "", "%63s%63s", "1/0/2|1x100G"},
        {"show ip access-list NET-BLOCK", "Destination IP Address", "", "%*s %*s %*s %20s", "224.0.0.251"},
        {"show interfaces description all", "1/0/2", "", "%11s %3[^\r\n]", "1/0/2|xxx"},
    };
    for (const auto &c : cases) {
        const std::string line = lineOf(c.command, c.line, c.after);
        EXPECT_EQ(scanned(line, c.format), c.values) << c.command << "\n" << line;
    }
    EXPECT_EQ(linesOf("show bootvar").at(14).compare(0, 6, "    1 "), 0);
    EXPECT_EQ(lineOf("show slot", "1/2").substr(31, 20), std::string(20, ' '));
    EXPECT_EQ(scanned(lineOf("show process cpu all", "Total CPU Utilization").substr(32), "%63s%*s%*s").back(), '%');
}

// Where each reader looks for the rule, and how the row after it begins.
TEST_F(ShowCommands, RuleStandsOverTheFirstRow)
{
    const struct {
        const char *command;
        size_t column, dashes;
        const char *row;
    } cases[] = {
        {"show interfaces status all", 0, 6, "1/0/1 "},
        {"show interface fec", 0, 6, "1/0/1 "},
        {"show interfaces hardware profile", 0, 6, "1/0/2 "},
        {"show port all", 0, 6, "1/0/1 "},
        {"show port status all", 16, 6, "1/0/1 "},
        {"show interface counters", 0, 6, "1/0/1 "},
        {"show interfaces switchport trunk", 0, 9, "lag 1"},
        {"show slot", 0, 5, "1/0 "},
        {"show switch", 0, 3, "1 "},
        {"show stack-port", 0, 4, "2 "},
        {"show fiber-ports optics-info all", 9, 8, "1/0/2 "},
    };
    for (const auto &c : cases) {
        const std::vector<std::string> lines = linesOf(c.command);
        size_t i = 0;
        while (i < lines.size() && lines[i].find(std::string(c.dashes, '-'), c.column) != c.column)
            i++;
        ASSERT_LT(i + 1, lines.size()) << c.command;
        EXPECT_EQ(lines[i + 1].compare(0, strlen(c.row), c.row), 0) << c.command << "\n" << lines[i + 1];
    }
}

TEST_F(ShowCommands, SingleFactsOfWholeTexts)
{
    EXPECT_EQ(cut(linesOf("show port 1/0/2").at(5), "79+3"), "Yes");
    EXPECT_GE(linesOf("show port all").back().size(), 87u);
    EXPECT_NE(linesOf("show interfaces switchport trunk").front().find("Enabled"), std::string::npos);
    EXPECT_NE(vsShowText("show clock detail").find("(EU)"), std::string::npos);
    EXPECT_EQ(vsShowText("show clock detail").find("(USA)"), std::string::npos);
    EXPECT_EQ(lineOf("show dot1as summary", "Local Clock Priority2").substr(43), "... 248");
    EXPECT_NE(lineOf("show port-channel auto all", "Auto LAG Admin Mode").find("Enabled"), std::string::npos);
    EXPECT_NE(lineOf("show logging", "Buffered Logging").find("enabled"), std::string::npos);
    EXPECT_NE(lineOf("show logging", "Buffered Logging Severity Filter").find("warning"), std::string::npos);
    EXPECT_NE(lineOf("show vlan", "300").find("Dynamic"), std::string::npos);
    const std::string guard = lineOf("show spanning-tree interface all", "TCN Guard", "Interface: 1/0/2");
    EXPECT_EQ(trimmed(guard.substr(guard.rfind('.') + 1)), "True");
    // The optics reader takes every line after the rule as a row, also an empty last one.
    EXPECT_EQ(linesOf("show fiber-ports optics-info all").back().compare(0, 5, "1/0/2"), 0);
    const_cast<VS_PORT_T *>(vsPort(vsState(), 2))->optic.present = false;
    EXPECT_EQ(linesOf("show fiber-ports optics-info all").back().compare(0, 8, "--------"), 0);
    for (VS_UNIT_T &unit : vsState().units)
        unit.stackPorts.clear();
    EXPECT_EQ(vsShowText("show stack-port"), "No stack ports are configured.\n");
    EXPECT_EQ(lineOf("show ip access-list OTHER", "ACL"), "ACL OTHER does not exist.");
}

} // namespace
