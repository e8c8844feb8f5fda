#include "loader.h"
#include "vswitch.h"

#include <algorithm>
#include <ctime>
#include <iterator>

// "expand": large tables from a few numbers and a seed. The same text gives the same switch everywhere; what a section
// of the scenario says afterwards goes before what was made here.

using EXPAND = VS_EXPAND_T;

static bool expandModel(VS_READ_T &read, const VS_NODE_T &node, EXPAND &expand)
{
    // The units' own check names the model, but of a text that is not in the scenario.
    VS_NODE_T unit, model = node;
    unit.kind = VS_NODE_OBJECT;
    model.key = "model";
    unit.items.push_back(model);
    unit.key = "1";
    VS_NODE_T units;
    units.kind = VS_NODE_OBJECT;
    units.items.push_back(unit);
    VS_SCENARIO_T scratch;
    VS_READ_T trial{read.file, "", scratch};
    if (!vsReadUnits(trial, units)) {
        read.error = trial.error;
        return false;
    }
    expand.model = node.text;
    return true;
}

static const VS_FIELD_T<EXPAND> EXPAND_FIELDS[] = {
    {"seed", number<&EXPAND::seed, 0, UINT32_MAX>},
    {"model", expandModel},
    {"units", number<&EXPAND::units, 0, 8>},
    {"linked", number<&EXPAND::linked, 0, 100>},
    {"vlans", number<&EXPAND::vlans, 0, 4093>},
    {"lags", number<&EXPAND::lags, 0, 128>},
    {"lagMembers", number<&EXPAND::lagMembers, 0, 64>},
    {"addresses", number<&EXPAND::addresses, 0, 65536>},
    {"arp", number<&EXPAND::arp, 0, 65536>},
    {"neighbours", number<&EXPAND::neighbours, 0, 4096>},
    {"groups", number<&EXPAND::groups, 0, 65536>},
    {"subscribers", number<&EXPAND::subscribers, 0, 32>},
    {"logEntries", number<&EXPAND::logEntries, 0, 100000>},
};

bool vsReadExpand(VS_READ_T &read, const VS_NODE_T &node)
{
    return readObject(read, node, read.expand, EXPAND_FIELDS);
}

// The n-th number of a stream of the seed.
static uint32_t drawn(const EXPAND &expand, uint32_t stream, uint32_t n)
{
    uint64_t x = (uint64_t{expand.seed} << 40 ^ uint64_t{stream} << 32 ^ n) + 0x9E3779B97F4A7C15u;
    x = (x ^ x >> 30) * 0xBF58476D1CE4E5B9u;
    x = (x ^ x >> 27) * 0x94D049BB133111EBu;
    return static_cast<uint32_t>((x ^ x >> 31) >> 16);
}

enum { STREAM_LINK, STREAM_RATE, STREAM_OUI, STREAM_PORT, STREAM_VLAN, STREAM_GROUP };

// Every eighth VLAN has a routing interface.
void vsExpandVlans(VS_READ_T &read)
{
    for (uint32_t i = 0; i < read.expand.vlans; i++) {
        uint32_t id = i + 2;
        VS_VLAN_T &vlan = vsVlanAdd(read.out.state, id);
        vlan.name = "AV-" + std::to_string(id);
        if (i % 8 != 0)
            continue;
        vlan.routed = true;
        vlan.address = 10u << 24 | (id >> 8) << 20 | (id & 255) << 8 | 1;
    }
}

void vsExpandUnits(VS_READ_T &read)
{
    for (uint32_t unit = 1; unit <= read.expand.units; unit++)
        vsUnitAdd(read.out.state, unit, read.expand.model);
}

// Links, access VLANs and traffic of the expanded units' ports.
void vsExpandLinks(VS_READ_T &read)
{
    const EXPAND &expand = read.expand;
    const std::vector<VS_VLAN_T> &vlans = read.out.state.vlans;
    for (VS_PORT_T &port : read.out.state.ports) {
        if (port.unit > expand.units || !port.attached)
            continue;
        port.linkUp = drawn(expand, STREAM_LINK, port.ifNum) % 100 < expand.linked;
        port.pvid = vlans[drawn(expand, STREAM_VLAN, port.ifNum) % vlans.size()].id;
        port.inRate = uint64_t{drawn(expand, STREAM_RATE, port.ifNum) % 900} * 1000000;
        port.outRate = uint64_t{drawn(expand, STREAM_RATE, port.ifNum + 100000) % 900} * 1000000;
    }
}

static bool stackPort(const VS_STATE_T &state, const VS_PORT_T &port)
{
    const std::vector<VS_STACK_PORT_T> &list = vsUnit(state, port.unit)->stackPorts;
    return std::any_of(list.begin(), list.end(),
                       [&port](const VS_STACK_PORT_T &row) { return row.slot == port.slot && row.port == port.port; });
}

// Members are taken from the last ports on, each once, until the ports run out.
void vsExpandLags(VS_READ_T &read)
{
    VS_STATE_T &state = read.out.state;
    size_t left = state.ports.size();
    for (uint32_t number = 1; number <= read.expand.lags; number++) {
        VS_LAG_T &lag = vsLagAdd(state, number);
        while (left > 0 && lag.members.size() < read.expand.lagMembers) {
            const VS_PORT_T &port = state.ports[--left];
            if (!port.attached || stackPort(state, port))
                continue;
            lag.members.insert(lag.members.begin(), port.ifNum);
            read.seen.insert(vsPortName(port) + " as a LAG member");
        }
        for (uint32_t member : lag.members)
            state.ports[member - 1].pvid = state.ports[lag.members.front() - 1].pvid;
        if (!lag.members.empty())
            lag.pvid = state.ports[lag.members.front() - 1].pvid;
    }
}

// Devices of many makers of AV equipment, in no order.
static std::string deviceMac(const EXPAND &expand, uint32_t n)
{
    static const char *const OUIS[] = {"00:10:7F", "C4:42:68", "00:19:0B", "00:60:9F", "00:0F:D4", "00:0E:14",
                                       "00:02:C5", "80:1F:12", "00:0A:45", "00:1D:56", "AC:47:23", "A8:D2:36",
                                       "00:E0:DB", "34:D0:B8", "00:1B:66", "F8:57:2E", "58:50:AB", "00:0F:F4",
                                       "00:C0:16", "00:1F:B8", "00:0C:17", "90:56:82", "18:66:96", "48:5D:EB"};
    char mac[18];
    snprintf(mac, sizeof mac, "%s:%02X:%02X:%02X", OUIS[drawn(expand, STREAM_OUI, n) % std::size(OUIS)],
             (n >> 16) & 255, (n >> 8) & 255, n & 255);
    return mac;
}

// Where devices can be: the ports that have a link, else all of them.
static std::vector<const VS_PORT_T *> linkedPorts(const VS_STATE_T &state)
{
    std::vector<const VS_PORT_T *> ports;
    for (const VS_PORT_T &port : state.ports)
        if (port.attached && port.linkUp && !stackPort(state, port))
            ports.push_back(&port);
    if (ports.empty())
        for (const VS_PORT_T &port : state.ports)
            ports.push_back(&port);
    return ports;
}

// What is learned through a port, each port once: through its LAG when it is a member.
static std::vector<const VS_INTERFACE_T *> learningInterfaces(const VS_STATE_T &state,
                                                              const std::vector<const VS_PORT_T *> &ports)
{
    std::map<uint32_t, const VS_LAG_T *> lagOf;
    for (const VS_LAG_T &lag : state.lags)
        for (uint32_t member : lag.members)
            lagOf[member] = &lag;
    std::vector<const VS_INTERFACE_T *> interfaces;
    for (const VS_PORT_T *port : ports) {
        auto lag = lagOf.find(port->ifNum);
        if (lag == lagOf.end())
            interfaces.push_back(port);
        else
            interfaces.push_back(lag->second);
    }
    return interfaces;
}

// Address of the n-th device: hosts 10 to 209 of the routed VLANs in turn, 0 when those are used up.
static uint32_t deviceAddress(const std::vector<const VS_VLAN_T *> &routed, uint32_t n, uint32_t &vlan)
{
    if (routed.empty() || n / routed.size() >= 200)
        return 0;
    const VS_VLAN_T &row = *routed[n % routed.size()];
    vlan = row.id;
    return (row.address & 0xFFFFFF00u) + 10 + static_cast<uint32_t>(n / routed.size());
}

static void expandNeighbours(VS_READ_T &read, const std::vector<const VS_PORT_T *> &ports)
{
    static const char *const KINDS[] = {"AV over IP encoder", "AV over IP decoder",     "Network amplifier",
                                        "Ceiling microphone", "AUDAC audio matrix 8x8", "Lighting gateway"};
    for (uint32_t n = 0; n < read.expand.neighbours; n++) {
        VS_LLDP_T row;
        row.ifNum = ports[n % ports.size()]->ifNum;
        row.index = n + 1;
        row.chassisId = row.portId = deviceMac(read.expand, n);
        row.systemName = vsFormat("device-%04u", n + 1);
        row.systemDescription = KINDS[n % std::size(KINDS)];
        row.addresses.push_back(vsFormat("10.250.%u.%u", n / 250, n % 250 + 1));
        read.out.state.lldp.push_back(row);
    }
}

static void expandGroups(VS_READ_T &read, const std::vector<const VS_INTERFACE_T *> &interfaces)
{
    for (uint32_t n = 0; n < read.expand.groups; n++) {
        const VS_INTERFACE_T &interface = *interfaces[drawn(read.expand, STREAM_GROUP, n) % interfaces.size()];
        VS_GROUP_T row;
        row.ifNum = interface.ifNum;
        row.vlan = interface.pvid;
        row.address = (239u << 24 | 1u << 16) + n + 1;
        row.version = n % 2 == 0 ? 2 : 3;
        row.timeout = 130 + drawn(read.expand, STREAM_GROUP, n + 100000) % 131;
        for (uint32_t i = 0; i < read.expand.subscribers; i++) {
            uint32_t host = n * read.expand.subscribers + i;
            row.subscribers.push_back({(10u << 24 | 200u << 16) + host % 65000 + 1, deviceMac(read.expand, host)});
        }
        read.out.state.groups.push_back(row);
    }
}

// Links that came and went, one a second, the last one as the scenario's time begins.
static void expandLog(VS_READ_T &read)
{
    const VS_STATE_T &state = read.out.state;
    for (uint32_t n = 0; n < read.expand.logEntries; n++) {
        const time_t at = static_cast<time_t>(state.epoch) - (read.expand.logEntries - n);
        tm parts = {};
        char clock[32] = "";
        if (gmtime_r(&at, &parts) != nullptr)
            (void)strftime(clock, sizeof clock, "%b %e %H:%M:%S", &parts); // 15 characters fit
        read.out.state.log.push_back(
            vsFormat("<189> %s %s-1 TRAPMGR[trapTask]: traputil.c(721) %u %%%% NOTE Link %s: %s\n", clock,
                     state.system.name.c_str(), n + 1, n % 2 == 0 ? "Down" : "Up",
                     state.ports.empty() ? "?" : vsPortName(state.ports[n / 2 % state.ports.size()]).c_str()));
    }
}

void vsExpandTables(VS_READ_T &read)
{
    VS_STATE_T &state = read.out.state;
    expandLog(read);
    std::vector<const VS_PORT_T *> ports = linkedPorts(state);
    if (ports.empty())
        return;
    std::vector<const VS_INTERFACE_T *> interfaces = learningInterfaces(state, ports);
    for (uint32_t n = 0; n < read.expand.addresses; n++) {
        const VS_INTERFACE_T &interface = *interfaces[drawn(read.expand, STREAM_PORT, n) % interfaces.size()];
        VS_FDB_T row;
        row.mac = deviceMac(read.expand, n);
        row.vlan = interface.pvid;
        row.ifNum = interface.ifNum;
        state.fdb.push_back(row);
    }
    std::vector<const VS_VLAN_T *> routed;
    for (const VS_VLAN_T &vlan : state.vlans)
        if (vlan.routed && vlan.address != 0)
            routed.push_back(&vlan);
    for (uint32_t n = 0; n < read.expand.arp; n++) {
        VS_ARP_T row;
        row.mac = deviceMac(read.expand, n);
        row.address = deviceAddress(routed, n, row.vlan);
        if (row.address != 0)
            state.arp.push_back(row);
    }
    expandNeighbours(read, ports);
    expandGroups(read, interfaces);
}
