// loader.h - inside the scenario loader: one reader over tables of fields.
//
// A section of a scenario is a table of {key, setter}; the setters are the templates below, one for each kind of value.
// A setter returns false after it has refused, and the first refusal is the load's one error line.
#pragma once

#include "engine.h"
#include "json_tree.h"

#include <cstring>
#include <functional>
#include <set>
#include <type_traits>

// What "expand" asks for.
struct VS_EXPAND_T {
    uint32_t seed = 1;
    std::string model = "TK830-T16";
    uint32_t units = 0, vlans = 0, lags = 0, lagMembers = 2;
    uint32_t linked = 100; // percent of the front ports with a link
    uint32_t addresses = 0, arp = 0, neighbours = 0, groups = 0, subscribers = 1, logEntries = 0;
};

struct VS_READ_T {
    std::string file, directory;
    VS_SCENARIO_T &out;
    std::string error;
    VS_EXPAND_T expand;
    std::map<uint32_t, uint32_t> portCount; // front ports of a unit that has fewer than its model
    std::set<std::string> seen;             // what may be given only once
};

bool vsRefuse(VS_READ_T &read, const VS_NODE_T &node, const std::string &expected);
bool vsOnce(VS_READ_T &read, const VS_NODE_T &node, const std::string &what);

// ---- values ----

bool vsNumber(VS_READ_T &read, const VS_NODE_T &node, int64_t least, int64_t most, int64_t &value);
bool vsText(VS_READ_T &read, const VS_NODE_T &node, std::string &text);
bool vsAddress(VS_READ_T &read, const VS_NODE_T &node, uint32_t &address); // "10.0.0.1"
bool vsMac(VS_READ_T &read, const VS_NODE_T &node, std::string &mac);      // made upper case
bool vsPortList(VS_READ_T &read, const VS_NODE_T &node, const std::string &text, std::vector<uint32_t> &ifNums);
bool vsInterfaceOf(VS_READ_T &read, const VS_NODE_T &node, uint32_t &ifNum); // "1/0/5", "lag 2"
bool vsVlanOf(VS_READ_T &read, const VS_NODE_T &node, uint32_t &id);         // one that exists
bool vsWindow(VS_READ_T &read, const VS_NODE_T &node, VS_WINDOW_T &window);
bool vsTime(VS_READ_T &read, const VS_NODE_T &node, VS_DATE_T &date, uint32_t &second); // "2026-03-01 08:00[:00]"
bool vsKeyNumber(VS_READ_T &read, const VS_NODE_T &node, uint32_t least, uint32_t most, uint32_t &number);

struct VS_WORD_T {
    const char *word;
    uint32_t code;
};
bool vsWord(VS_READ_T &read, const VS_NODE_T &node, const VS_WORD_T *words, size_t count, uint32_t &code);

// ---- setters ----

template <class ROW> struct VS_FIELD_T {
    const char *key;
    bool (*set)(VS_READ_T &read, const VS_NODE_T &node, ROW &row);
};

// A flag or a text.
template <auto MEMBER, class ROW> bool plain(VS_READ_T &read, const VS_NODE_T &node, ROW &row)
{
    auto &member = row.*MEMBER;
    if constexpr (std::is_same_v<decltype(member), bool &>) {
        if (node.kind != VS_NODE_FLAG)
            return vsRefuse(read, node, "expected true or false");
        member = node.flag;
        return true;
    } else {
        return vsText(read, node, member);
    }
}

template <auto MEMBER, int64_t LEAST, int64_t MOST, class ROW>
bool number(VS_READ_T &read, const VS_NODE_T &node, ROW &row)
{
    int64_t value;
    if (!vsNumber(read, node, LEAST, MOST, value))
        return false;
    row.*MEMBER = static_cast<std::remove_reference_t<decltype(row.*MEMBER)>>(value);
    return true;
}

template <auto MEMBER, class ROW> bool real(VS_READ_T &read, const VS_NODE_T &node, ROW &row)
{
    if (node.kind != VS_NODE_INTEGER && node.kind != VS_NODE_REAL)
        return vsRefuse(read, node, "expected a number");
    row.*MEMBER = node.real;
    return true;
}

// Whatever one of the functions above reads: value<&VS_ARP_T::mac, vsMac>.
template <auto MEMBER, auto READ, class ROW> bool value(VS_READ_T &read, const VS_NODE_T &node, ROW &row)
{
    return READ(read, node, row.*MEMBER);
}

// One of a list of words, or a code as a number.
template <auto MEMBER, auto &WORDS, class ROW> bool word(VS_READ_T &read, const VS_NODE_T &node, ROW &row)
{
    return vsWord(read, node, WORDS, std::size(WORDS), row.*MEMBER);
}

template <class ROW, class TABLE> int tryField(VS_READ_T &read, const VS_NODE_T &node, ROW &row, const TABLE &table)
{
    for (const auto &field : table)
        if (node.key == field.key)
            return field.set(read, node, row) ? 1 : 0;
    return -1;
}

template <class TABLE> void keysAppend(std::string &keys, const TABLE &table)
{
    for (const auto &field : table)
        keys += (keys.empty() ? "" : ", ") + std::string(field.key);
}

// Members of an object by one or more tables; unknown keys are refused.
template <class ROW, class... TABLES>
bool readObject(VS_READ_T &read, const VS_NODE_T &node, ROW &row, const TABLES &...tables)
{
    if (node.kind != VS_NODE_OBJECT)
        return vsRefuse(read, node, "expected an object");
    for (const VS_NODE_T &item : node.items) {
        int result = -1;
        ((result = result < 0 ? tryField(read, item, row, tables) : result), ...);
        if (result == 0)
            return false;
        if (result < 0) {
            std::string keys;
            (keysAppend(keys, tables), ...);
            return vsRefuse(read, item, "not a key here; expected one of " + keys);
        }
    }
    return true;
}

template <auto MEMBER, auto &TABLE, class ROW> bool object(VS_READ_T &read, const VS_NODE_T &node, ROW &row)
{
    return readObject(read, node, row.*MEMBER, TABLE);
}

// Rows that have an id get their place in the list, from 1, unless they say otherwise.
template <class ROW> auto ordinalSet(ROW &row, size_t place, int) -> decltype(row.id, void())
{
    row.id = static_cast<uint32_t>(place);
}
template <class ROW> void ordinalSet(ROW &, size_t, long)
{
}

template <class ROW, class TABLE>
bool readList(VS_READ_T &read, const VS_NODE_T &node, std::vector<ROW> &rows, const TABLE &table)
{
    if (node.kind != VS_NODE_ARRAY)
        return vsRefuse(read, node, "expected a list");
    for (const VS_NODE_T &item : node.items) {
        ROW row;
        ordinalSet(row, rows.size() + 1, 0);
        if (!readObject(read, item, row, table))
            return false;
        rows.push_back(std::move(row));
    }
    return true;
}

// A list of objects takes the place of the default one.
template <auto MEMBER, auto &TABLE, class ROW> bool list(VS_READ_T &read, const VS_NODE_T &node, ROW &row)
{
    (row.*MEMBER).clear();
    return readList(read, node, row.*MEMBER, TABLE);
}

bool vsTextList(VS_READ_T &read, const VS_NODE_T &node, std::vector<std::string> &texts);
bool vsInterfaceList(VS_READ_T &read, const VS_NODE_T &node, std::vector<uint32_t> &ifNums);

// The member with a key, or null.
const VS_NODE_T *vsMember(const VS_NODE_T &node, const char *key);
bool vsRequire(VS_READ_T &read, const VS_NODE_T &node, std::initializer_list<const char *> keys);

// ---- sections ----

using VS_SECTION_READ_T = bool (*)(VS_READ_T &read, const VS_NODE_T &node);

// loader_system.cpp
bool vsReadSystem(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadVlans(VS_READ_T &read, const VS_NODE_T &node);
VS_VLAN_T &vsVlanAdd(VS_STATE_T &state, uint32_t id);

// loader_hardware.cpp
bool vsReadUnits(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadPorts(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadLags(VS_READ_T &read, const VS_NODE_T &node);
VS_UNIT_T &vsUnitAdd(VS_STATE_T &state, uint32_t unit, const std::string &model);
VS_LAG_T &vsLagAdd(VS_STATE_T &state, uint32_t number);
void vsPortsBuild(VS_READ_T &read);
void vsLagsFinish(VS_STATE_T &state);
void vsUnitsFinish(VS_STATE_T &state);

// loader_features.cpp
bool vsReadFdb(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadArp(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadLldp(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadGroups(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadAcls(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadRadius(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadTimeRanges(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadMirror(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadPtp(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadLog(VS_READ_T &read, const VS_NODE_T &node);
void vsTablesSort(VS_STATE_T &state);

// loader_expand.cpp: reads what is asked for; then, between the sections, what can be made by then.
bool vsReadExpand(VS_READ_T &read, const VS_NODE_T &node);
void vsExpandVlans(VS_READ_T &read);
void vsExpandUnits(VS_READ_T &read);
void vsExpandLinks(VS_READ_T &read);
void vsExpandLags(VS_READ_T &read);
void vsExpandTables(VS_READ_T &read);

// loader_faults.cpp
bool vsReadFaults(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadLatency(VS_READ_T &read, const VS_NODE_T &node);
bool vsReadTexts(VS_READ_T &read, const VS_NODE_T &node);
