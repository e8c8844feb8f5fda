#include "loader.h"

#include <algorithm>
#include <map>
#include <tuple>

// Tables of neighbours and features: FDB, ARP, LLDP, multicast groups, access lists, RADIUS, time ranges, mirroring,
// PTP and the buffered log. What an entry refers to (interfaces, VLANs) has been made by the sections before.

using FDB = VS_FDB_T;
static const VS_FIELD_T<FDB> FDB_FIELDS[] = {
    {"mac", value<&FDB::mac, vsMac>},
    {"vlan", value<&FDB::vlan, vsVlanOf>},
    {"port", value<&FDB::ifNum, vsInterfaceOf>},
    {"learned", plain<&FDB::learned>},
    {"present", value<&FDB::present, vsWindow>},
};

bool vsReadFdb(VS_READ_T &read, const VS_NODE_T &node)
{
    size_t before = read.out.state.fdb.size();
    if (!readList(read, node, read.out.state.fdb, FDB_FIELDS))
        return false;
    for (size_t i = 0; i < node.items.size(); i++) {
        const FDB &row = read.out.state.fdb[before + i];
        if (!vsRequire(read, node.items[i], {"mac", "port"}) ||
            !vsOnce(read, node.items[i], row.mac + " in VLAN " + std::to_string(row.vlan)))
            return false;
    }
    return true;
}

using ARP = VS_ARP_T;
static const VS_FIELD_T<ARP> ARP_FIELDS[] = {
    {"address", value<&ARP::address, vsAddress>},
    {"mac", value<&ARP::mac, vsMac>},
    {"vlan", value<&ARP::vlan, vsVlanOf>},
    {"present", value<&ARP::present, vsWindow>},
};

bool vsReadArp(VS_READ_T &read, const VS_NODE_T &node)
{
    if (!readList(read, node, read.out.state.arp, ARP_FIELDS))
        return false;
    for (const VS_NODE_T &item : node.items)
        if (!vsRequire(read, item, {"address", "mac"}) ||
            !vsOnce(read, item, "ARP address " + vsMember(item, "address")->text))
            return false;
    return true;
}

using LLDP = VS_LLDP_T;
static const VS_FIELD_T<LLDP> LLDP_FIELDS[] = {
    {"port", value<&LLDP::ifNum, vsInterfaceOf>},
    {"index", number<&LLDP::index, 1, UINT32_MAX>},
    {"chassisSubtype", number<&LLDP::chassisSubtype, 1, 7>},
    {"portSubtype", number<&LLDP::portSubtype, 1, 7>},
    {"chassisId", plain<&LLDP::chassisId>},
    {"portId", plain<&LLDP::portId>},
    {"systemName", plain<&LLDP::systemName>},
    {"systemDescription", plain<&LLDP::systemDescription>},
    {"addresses", value<&LLDP::addresses, vsTextList>},
    {"present", value<&LLDP::present, vsWindow>},
};

bool vsReadLldp(VS_READ_T &read, const VS_NODE_T &node)
{
    size_t before = read.out.state.lldp.size();
    if (!readList(read, node, read.out.state.lldp, LLDP_FIELDS))
        return false;
    for (size_t i = 0; i < node.items.size(); i++) {
        LLDP &row = read.out.state.lldp[before + i];
        if (!vsRequire(read, node.items[i], {"port", "chassisId"}))
            return false;
        if (vsMember(node.items[i], "index") == nullptr)
            row.index = static_cast<uint32_t>(before + i + 1);
        if (!vsOnce(read, node.items[i],
                    "LLDP index " + std::to_string(row.index) + " of interface " + std::to_string(row.ifNum)))
            return false;
    }
    return true;
}

static const VS_FIELD_T<VS_SUBSCRIBER_T> SUBSCRIBER_FIELDS[] = {
    {"address", value<&VS_SUBSCRIBER_T::address, vsAddress>},
    {"mac", value<&VS_SUBSCRIBER_T::mac, vsMac>},
};

using GROUP = VS_GROUP_T;
static const VS_FIELD_T<GROUP> GROUP_FIELDS[] = {
    {"port", value<&GROUP::ifNum, vsInterfaceOf>},       {"vlan", value<&GROUP::vlan, vsVlanOf>},
    {"address", value<&GROUP::address, vsAddress>},      {"version", number<&GROUP::version, 1, 3>},
    {"timeout", number<&GROUP::timeout, 0, UINT32_MAX>}, {"subscribers", list<&GROUP::subscribers, SUBSCRIBER_FIELDS>},
    {"present", value<&GROUP::present, vsWindow>},       {"type", plain<&GROUP::type>},
};

bool vsReadGroups(VS_READ_T &read, const VS_NODE_T &node)
{
    size_t before = read.out.state.groups.size();
    if (!readList(read, node, read.out.state.groups, GROUP_FIELDS))
        return false;
    for (size_t i = 0; i < node.items.size(); i++) {
        const VS_NODE_T &item = node.items[i];
        const GROUP &row = read.out.state.groups[before + i];
        if (!vsRequire(read, item, {"port", "address"}) ||
            !vsOnce(read, item,
                    "group " + vsMember(item, "address")->text + " in VLAN " + std::to_string(row.vlan) +
                        " on interface " + std::to_string(row.ifNum)))
            return false;
    }
    return true;
}

using ACL = VS_ACL_T;
static const VS_FIELD_T<ACL> ACL_FIELDS[] = {
    {"id", number<&ACL::id, 1, UINT32_MAX>},
    {"name", plain<&ACL::name>},
    {"denied", value<&ACL::denied, vsTextList>},
    {"interfaces", value<&ACL::interfaces, vsInterfaceList>},
};

bool vsReadAcls(VS_READ_T &read, const VS_NODE_T &node)
{
    if (!readList(read, node, read.out.state.acls, ACL_FIELDS))
        return false;
    for (const VS_NODE_T &item : node.items)
        if (!vsRequire(read, item, {"name"}) || !vsOnce(read, item, "access list " + vsMember(item, "name")->text))
            return false;
    return true;
}

static const VS_FIELD_T<VS_RADIUS_T> RADIUS_FIELDS[] = {
    {"address", plain<&VS_RADIUS_T::address>},
    {"port", number<&VS_RADIUS_T::port, 1, 65535>},
    {"primary", plain<&VS_RADIUS_T::primary>},
};

bool vsReadRadius(VS_READ_T &read, const VS_NODE_T &node)
{
    return readList(read, node, read.out.state.radius, RADIUS_FIELDS);
}

static bool date(VS_READ_T &read, const VS_NODE_T &node, VS_DATE_T &row)
{
    uint32_t second;
    return vsTime(read, node, row, second);
}

static const VS_WORD_T RECURRENCES[] = {{"once", 0}, {"daily", 1}, {"weekly", 2}, {"monthly", 3}};
static const VS_WORD_T STATUSES[] = {{"active", 1}, {"inactive", 2}};

static const VS_FIELD_T<VS_PERIOD_T> PERIOD_FIELDS[] = {
    {"start", value<&VS_PERIOD_T::start, date>},
    {"end", value<&VS_PERIOD_T::end, date>},
    {"startDays", number<&VS_PERIOD_T::startDays, 0, 255>},
    {"endDay", number<&VS_PERIOD_T::endDay, 0, 255>},
};

using RANGE = VS_TIME_RANGE_T;
static const VS_FIELD_T<RANGE> TIME_RANGE_FIELDS[] = {
    {"name", plain<&RANGE::name>},
    {"status", word<&RANGE::status, STATUSES>},
    {"recurrence", word<&RANGE::recurrence, RECURRENCES>},
    {"periods", list<&RANGE::periods, PERIOD_FIELDS>},
};

bool vsReadTimeRanges(VS_READ_T &read, const VS_NODE_T &node)
{
    if (!readList(read, node, read.out.state.timeRanges, TIME_RANGE_FIELDS))
        return false;
    for (const VS_NODE_T &item : node.items)
        if (!vsRequire(read, item, {"name"}) || !vsOnce(read, item, "time range " + vsMember(item, "name")->text))
            return false;
    return true;
}

static const VS_WORD_T DIRECTIONS[] = {{"both", 1}, {"in", 2}, {"out", 3}};

static const VS_FIELD_T<VS_MIRROR_SOURCE_T> SOURCE_FIELDS[] = {
    {"port", value<&VS_MIRROR_SOURCE_T::ifNum, vsInterfaceOf>},
    {"direction", word<&VS_MIRROR_SOURCE_T::direction, DIRECTIONS>},
};

using MIRROR = VS_MIRROR_T;
static const VS_FIELD_T<MIRROR> MIRROR_FIELDS[] = {
    {"configured", plain<&MIRROR::configured>},
    {"mode", number<&MIRROR::mode, 0, 255>},
    {"destination", value<&MIRROR::destination, vsInterfaceOf>},
    {"reflector", value<&MIRROR::reflector, vsInterfaceOf>},
    {"sources", list<&MIRROR::sources, SOURCE_FIELDS>},
};

bool vsReadMirror(VS_READ_T &read, const VS_NODE_T &node)
{
    read.out.state.mirror.configured = true;
    read.out.state.mirror.mode = 1;
    return readObject(read, node, read.out.state.mirror, MIRROR_FIELDS);
}

static const VS_FIELD_T<VS_PTP_DOMAIN_T> PTP_FIELDS[] = {
    {"domain", number<&VS_PTP_DOMAIN_T::domain, 0, 127>},
    {"vlan", value<&VS_PTP_DOMAIN_T::vlan, vsVlanOf>},
};

bool vsReadPtp(VS_READ_T &read, const VS_NODE_T &node)
{
    if (!readList(read, node, read.out.state.ptpDomains, PTP_FIELDS))
        return false;
    for (size_t i = 0; i < node.items.size(); i++)
        if (!vsOnce(read, node.items[i], "PTP domain " + std::to_string(read.out.state.ptpDomains[i].domain)))
            return false;
    return true;
}

bool vsReadLog(VS_READ_T &read, const VS_NODE_T &node)
{
    std::vector<std::string> entries;
    if (!vsTextList(read, node, entries))
        return false;
    read.out.state.log.insert(read.out.state.log.end(), entries.begin(), entries.end());
    return true;
}

// Sorted by a key; of rows with equal keys the last one stays, so that an entry of the scenario replaces an expanded
// one.
template <class ROW, class KEY> static void tableSort(std::vector<ROW> &rows, KEY key)
{
    std::reverse(rows.begin(), rows.end());
    std::stable_sort(rows.begin(), rows.end(), [&](const ROW &a, const ROW &b) { return key(a) < key(b); });
    rows.erase(std::unique(rows.begin(), rows.end(), [&](const ROW &a, const ROW &b) { return key(a) == key(b); }),
               rows.end());
}

// What a switch learns through a member of a LAG it learns on the LAG.
static void learnedOnLags(VS_STATE_T &state)
{
    std::map<uint32_t, uint32_t> lagOf;
    for (const VS_LAG_T &lag : state.lags)
        for (uint32_t member : lag.members)
            lagOf[member] = lag.ifNum;
    for (FDB &row : state.fdb)
        if (auto lag = lagOf.find(row.ifNum); row.learned && lag != lagOf.end())
            row.ifNum = lag->second;
}

void vsTablesSort(VS_STATE_T &state)
{
    learnedOnLags(state);
    tableSort(state.fdb, [](const FDB &row) { return std::tie(row.vlan, row.mac); });
    tableSort(state.arp, [](const ARP &row) { return row.address; });
    tableSort(state.lldp, [](const LLDP &row) { return std::tie(row.ifNum, row.index); });
    tableSort(state.groups, [](const GROUP &row) { return std::tie(row.vlan, row.address, row.ifNum); });
    tableSort(state.timeRanges, [](const RANGE &row) { return std::tie(row.name); });
}
