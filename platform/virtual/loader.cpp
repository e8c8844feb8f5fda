#include "loader.h"

#include <ctime>
#include <fstream>
#include <sstream>

// From a scenario's text to the record: the order of the sections, and reading the file. The sections' tables stand in
// loader_*.cpp, the kinds of values in loader_values.cpp.

namespace {

bool readDescription(VS_READ_T &read, const VS_NODE_T &node)
{
    std::string unused;
    return vsText(read, node, unused);
}

bool readEpoch(VS_READ_T &read, const VS_NODE_T &node)
{
    VS_DATE_T date;
    uint32_t second;
    if (!vsTime(read, node, date, second))
        return false;
    tm utc{};
    utc.tm_year = static_cast<int>(date.year) - 1900;
    utc.tm_mon = static_cast<int>(date.month) - 1;
    utc.tm_mday = static_cast<int>(date.day);
    utc.tm_hour = static_cast<int>(date.hour);
    utc.tm_min = static_cast<int>(date.minute);
    utc.tm_sec = static_cast<int>(second);
    read.out.state.epoch = timegm(&utc);
    return true;
}

void lagsFinish(VS_READ_T &read)
{
    vsLagsFinish(read.out.state);
}

void unitsFinish(VS_READ_T &read)
{
    vsUnitsFinish(read.out.state);
}

void tablesSort(VS_READ_T &read)
{
    vsTablesSort(read.out.state);
}

struct SECTION_T {
    const char *key;
    void (*before)(VS_READ_T &read); // also when the scenario does not have the section
    VS_SECTION_READ_T read;
    void (*after)(VS_READ_T &read);
};

// In this order, whatever the order in the text: each section can name what the ones above it made.
constexpr SECTION_T SECTIONS[] = {
    {"description", nullptr, readDescription, nullptr},
    {"epoch", nullptr, readEpoch, nullptr},
    {"expand", nullptr, vsReadExpand, nullptr},
    {"vlans", vsExpandVlans, vsReadVlans, nullptr},
    {"units", vsExpandUnits, vsReadUnits, vsPortsBuild},
    {"ports", vsExpandLinks, vsReadPorts, unitsFinish},
    {"lags", vsExpandLags, vsReadLags, lagsFinish},
    {"system", nullptr, vsReadSystem, nullptr},
    {"fdb", vsExpandTables, vsReadFdb, nullptr},
    {"arp", nullptr, vsReadArp, nullptr},
    {"lldp", nullptr, vsReadLldp, nullptr},
    {"groups", nullptr, vsReadGroups, nullptr},
    {"acls", nullptr, vsReadAcls, nullptr},
    {"radius", nullptr, vsReadRadius, nullptr},
    {"timeRanges", nullptr, vsReadTimeRanges, nullptr},
    {"mirror", nullptr, vsReadMirror, nullptr},
    {"ptp", nullptr, vsReadPtp, nullptr},
    {"log", nullptr, vsReadLog, tablesSort},
    {"texts", nullptr, vsReadTexts, nullptr},
    {"faults", nullptr, vsReadFaults, nullptr},
    {"latency", nullptr, vsReadLatency, nullptr},
};

bool keysKnown(VS_READ_T &read, const VS_NODE_T &root)
{
    if (root.kind != VS_NODE_OBJECT)
        return vsRefuse(read, root, "expected an object");
    for (const VS_NODE_T &item : root.items) {
        bool known = false;
        for (const SECTION_T &section : SECTIONS)
            known = known || item.key == section.key;
        std::string keys;
        keysAppend(keys, SECTIONS);
        if (!known)
            return vsRefuse(read, item, "not a key here; expected one of " + keys);
    }
    return true;
}

bool readSections(VS_READ_T &read, const VS_NODE_T &root)
{
    for (const SECTION_T &section : SECTIONS) {
        if (section.before != nullptr)
            section.before(read);
        const VS_NODE_T *node = vsMember(root, section.key);
        if (node != nullptr && !section.read(read, *node))
            return false;
        if (section.after != nullptr)
            section.after(read);
    }
    return true;
}

// VLAN 1 is always there, and time 0 is a spring morning unless the scenario says otherwise.
void defaultsSet(VS_STATE_T &state)
{
    state.epoch = 1772352000; // 2026-03-01 08:00:00 UTC
    vsVlanAdd(state, 1).name = "default";
}

} // namespace

std::string vsScenarioParse(const std::string &json, const std::string &name, const std::string &directory,
                            VS_SCENARIO_T &scenario)
{
    VS_NODE_T root;
    root.key = "scenario";
    std::string error = vsJsonParse(json, name, root);
    if (!error.empty())
        return error;
    VS_READ_T read{name, directory, scenario};
    defaultsSet(scenario.state);
    if (!keysKnown(read, root) || !readSections(read, root))
        return read.error;
    return "";
}

std::string vsScenarioRead(const std::string &path, VS_SCENARIO_T &scenario)
{
    scenario.files.push_back(path);
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    if (!file)
        return path + ":1: scenario: expected a file that can be read";
    size_t slash = path.rfind('/');
    return vsScenarioParse(text.str(), path, slash == std::string::npos ? "" : path.substr(0, slash + 1), scenario);
}
