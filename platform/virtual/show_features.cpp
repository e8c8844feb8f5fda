#include "show_layout.h"
#include "vswitch.h"

#include <unordered_map>

// Show commands of the switching features: VLANs and routing, spanning tree, storm control, addresses, access lists,
// RADIUS, logging and the rest.

static VS_RENDER_T vlans, ipInterfaces, clockSummary, addressTable, stormControl, spanningInterfaces, spanningSummary,
    autoLag, accessList, radiusServers, logging;

extern const VS_SHOW_ROW_T vsShowFeatures[] = {
    {"show vlan", vlans},
    {"show ip interface brief", ipInterfaces},
    {"show dot1as summary", clockSummary},
    {"show mac-addr-table", addressTable},
    {"show storm-control all", stormControl},
    {"show spanning-tree interface all", spanningInterfaces},
    {"show spanning-tree mst port summary 0 all", spanningSummary},
    {"show port-channel auto all", autoLag},
    {"show ip access-list *", accessList},
    {"show radius servers", radiusServers},
    {"show logging", logging},
    {nullptr, nullptr},
};

static bool vlanUp(const std::vector<VS_SHOWN_T> &list, uint32_t id);
static const char *spanningState(const VS_SHOWN_T &shown);
static const char *hashText(uint32_t code);

static constexpr size_t VALUE = 47;

static constexpr VS_COLUMN_T VLAN_COLUMNS[] = {{0, 7, "VLAN ID"}, {8, 32, "VLAN Name"}, {41, 10, "VLAN Type"}};

static std::string vlans(const VS_STATE_T &state, double, const std::string &)
{
    std::string text = "\n" + vsTableHead(VLAN_COLUMNS);
    for (const VS_VLAN_T &vlan : state.vlans) {
        const char *type = vlan.id == 1 ? "Default" : vlan.isStatic ? "Static" : "Dynamic";
        text += vsTableRow(VLAN_COLUMNS, {vsDigits(vlan.id), vlan.name, type});
    }
    return text;
}

static constexpr VS_COLUMN_T IP_COLUMNS[] = {
    {0, 10, "Interface"}, {11, 5, "State"}, {17, 15, "IP Address"},
    {33, 15, "IP Mask"},  {49, 8, "TOS"},   {58, 8, "Method"},
};

static std::string ipInterfaces(const VS_STATE_T &state, double now, const std::string &)
{
    const std::vector<VS_SHOWN_T> list = vsShownPorts(state, now);
    std::string text = "\n" + vsTableHead(IP_COLUMNS);
    for (const VS_VLAN_T &vlan : state.vlans) {
        if (!vlan.routed)
            continue;
        const uint32_t length = vlan.prefixLength > 32 ? 32 : vlan.prefixLength;
        const uint32_t mask = length == 0 ? 0 : UINT32_MAX << (32 - length);
        text +=
            vsTableRow(IP_COLUMNS, {"vlan " + vsDigits(vlan.id), vlanUp(list, vlan.id) ? "Up" : "Down",
                                    vsAddress(vlan.address), vsAddress(mask), "0", vsWord(vlan.method, '_', "None")});
    }
    return text;
}

static std::string clockSummary(const VS_STATE_T &state, double, const std::string &)
{
    const std::string &mac = state.system.mac;
    const std::string identity = mac.size() == 17 ? mac.substr(0, 8) + ":FF:FE" + mac.substr(8) : "None";
    return vsDots("Local Clock Identity", VALUE, identity) +
           vsDots("Local Clock Priority1", VALUE, vsDigits(state.system.clockPriority1)) +
           vsDots("Local Clock Priority2", VALUE, vsDigits(state.system.clockPriority2));
}

static constexpr VS_COLUMN_T ADDRESS_COLUMNS[] = {
    {0, 7, "VLAN ID"}, {9, 17, "MAC Address"}, {28, 20, "Interface"}, {50, 8, "IfIndex"}, {60, 12, "Status"}};

static std::string addressTable(const VS_STATE_T &state, double now, const std::string &)
{
    std::unordered_map<uint32_t, std::string> names;
    for (const VS_SHOWN_T &shown : vsShownInterfaces(state, now))
        names[shown.interface->ifNum] = shown.name;
    uint32_t count = 0;
    std::string rows;
    for (const VS_FDB_T &entry : state.fdb) {
        const auto name = names.find(entry.ifNum);
        if (name == names.end() || !vsLearned(state, entry.ifNum, entry.present, now))
            continue;
        count++;
        rows += vsTableRow(ADDRESS_COLUMNS, {vsDigits(entry.vlan), entry.mac, name->second, vsDigits(entry.ifNum),
                                             entry.learned ? "Learned" : "Management"});
    }
    return "\n" + vsDots("Address Entries Currently in Use", VALUE, vsDigits(count)) + "\n" +
           vsTableHead(ADDRESS_COLUMNS) + rows;
}

static constexpr VS_COLUMN_T STORM_COLUMNS[] = {
    {0, 9, "Intf"}, {11, 7, "Bcast\nMode"}, {20, 10, "Bcast\nLevel"}, {32, 10, "Bcast\nAction"}};

static std::string stormControl(const VS_STATE_T &state, double now, const std::string &)
{
    std::string text = "\n" + vsTableHead(STORM_COLUMNS);
    for (const VS_SHOWN_T &shown : vsShownPorts(state, now))
        text += vsTableRow(STORM_COLUMNS, {shown.name, vsEnable(shown.port->stormControl), "5%", "None"});
    return text;
}

static std::string spanningInterfaces(const VS_STATE_T &state, double now, const std::string &)
{
    std::string text;
    for (const VS_SHOWN_T &shown : vsShownInterfaces(state, now)) {
        const VS_INTERFACE_T &interface = *shown.interface;
        text += "\nInterface: " + shown.name + "\n" + vsDots("Port Mode", VALUE, vsEnabled(interface.stpEnabled)) +
                vsDots("Hello Time", VALUE, "Not Configured") +
                vsDots("Edge Port Admin State", VALUE, vsEnabled(interface.stpEdge)) +
                vsDots("BPDU Filter Mode", VALUE, vsEnabled(interface.stpBpduFilter)) +
                vsDots("BPDU Flood Mode", VALUE, "Disabled") + vsDots("Root Guard", VALUE, "False") +
                vsDots("TCN Guard", VALUE, interface.stpTcnGuard ? "True" : "False");
    }
    return text;
}

static constexpr VS_COLUMN_T SPANNING_COLUMNS[] = {
    {0, 9, "Interface"}, {10, 8, "STP\nMode"}, {19, 5, "Type"}, {26, 18, "STP\nState"}, {46, 11, "Port\nRole"}};

static std::string spanningSummary(const VS_STATE_T &state, double now, const std::string &)
{
    std::string text = "\n" + vsTableHead(SPANNING_COLUMNS);
    for (const VS_SHOWN_T &shown : vsShownInterfaces(state, now)) {
        const char *role = !shown.up || !shown.interface->stpEnabled ? "Disabled"
                           : shown.interface->stpState == 1          ? "Alternate"
                                                                     : "Designated";
        text += vsTableRow(SPANNING_COLUMNS,
                           {shown.name, vsEnabled(shown.interface->stpEnabled), "", spanningState(shown), role});
    }
    return text;
}

// The mode is printed as its number and what the number stands for.
static std::string autoLag(const VS_STATE_T &state, double, const std::string &)
{
    const uint32_t hash = state.system.autoLagHash;
    return vsDots("Auto LAG Admin Mode", VALUE + 1, vsEnabled(state.system.autoLag)) +
           vsDots("Auto LAG Global Hash Mode", VALUE + 1, vsFormat("%u (%s)", hash, hashText(hash)));
}

static std::string accessList(const VS_STATE_T &state, double, const std::string &argument)
{
    for (const VS_ACL_T &acl : state.acls) {
        if (acl.name != argument)
            continue;
        std::string text = "\nACL Name: " + acl.name + "\nInbound Interface(s): ";
        for (const uint32_t ifNum : acl.interfaces) {
            const VS_PORT_T *port = vsPort(state, ifNum);
            const VS_LAG_T *lag = vsLag(state, ifNum);
            text += (ifNum == acl.interfaces.front() ? "" : ",") + (port != nullptr  ? vsPortName(*port)
                                                                    : lag != nullptr ? vsLagName(*lag)
                                                                                     : vsDigits(ifNum));
        }
        text += "\n";
        uint32_t rule = 0;
        for (const std::string &address : acl.denied)
            text += vsFormat("\nRule Number: %u\n", ++rule) + vsDots("Action", VALUE, "deny") +
                    vsDots("Match All", VALUE, "FALSE") + vsDots("Protocol", VALUE, "255(ip)") +
                    vsDots("Destination IP Address", VALUE, address) +
                    vsDots("Destination IP Wildcard Mask", VALUE, "0.255.255.255");
        return text + vsFormat("\nRule Number: %u\n", rule + 1) + vsDots("Action", VALUE, "permit") +
               vsDots("Match All", VALUE, "TRUE");
    }
    return "\nACL " + argument + " does not exist.\n";
}

static constexpr VS_COLUMN_T RADIUS_COLUMNS[] = {
    {0, 4, "Cur"}, {5, 46, "Host Address"}, {52, 24, "Server Name"}, {77, 5, "Port"}, {83, 10, "Type"}};

// The server in use is starred.
static std::string radiusServers(const VS_STATE_T &state, double, const std::string &)
{
    std::string text = "\n" + vsTableHead(RADIUS_COLUMNS);
    bool current = false;
    for (const VS_RADIUS_T &server : state.radius) {
        const bool used = server.primary && !current;
        current = current || used;
        text += vsTableRow(RADIUS_COLUMNS, {used ? "*" : "", server.address, "Default-RADIUS-Server",
                                            vsDigits(server.port), server.primary ? "Primary" : "Secondary"});
    }
    return text;
}

static std::string logging(const VS_STATE_T &state, double, const std::string &)
{
    static constexpr const char *SEVERITIES[] = {"emergency", "alert",  "critical", "error",
                                                 "warning",   "notice", "info",     "debug"};
    const VS_SYSTEM_T &system = state.system;
    const auto line = [](const char *label, const std::string &value) {
        return vsFormat("%-40s: ", label) + value + "\n";
    };
    const auto enabled = [](bool on) {
        return on ? "enabled" : "disabled";
    };
    const uint32_t console = system.consoleSeverity;
    return line("Logging Client Local Port", "514") + line("CLI Command Logging", enabled(system.commandLogging)) +
           line("Console Logging", enabled(system.consoleLogging)) +
           line("Console Logging Severity Filter", console < std::size(SEVERITIES) ? SEVERITIES[console] : "unknown") +
           line("Buffered Logging", enabled(system.bufferedLogging)) +
           line("Buffered Logging Severity Filter", system.bufferedSeverity) +
           line("Log Messages Received", vsDigits(state.log.size()));
}

static bool vlanUp(const std::vector<VS_SHOWN_T> &list, uint32_t id)
{
    for (const VS_SHOWN_T &shown : list) {
        if (!shown.up)
            continue;
        if (shown.interface->pvid == id)
            return true;
        for (const uint16_t tagged : shown.interface->tagged) {
            if (tagged == id)
                return true;
        }
    }
    return false;
}

static const char *spanningState(const VS_SHOWN_T &shown)
{
    static constexpr const char *STATES[] = {"",         "Discarding",        "Learning",         "Forwarding",
                                             "Disabled", "Manual forwarding", "Not participating"};
    if (!shown.up || !shown.interface->stpEnabled)
        return "Disabled";
    return shown.interface->stpState < std::size(STATES) ? STATES[shown.interface->stpState] : "";
}

static const char *hashText(uint32_t code)
{
    static constexpr const char *MODES[] = {"Unknown",
                                            "Src MAC, VLAN, EType, incoming port",
                                            "Dest MAC, VLAN, EType, incoming port",
                                            "Src/Dest MAC, VLAN, EType, incoming port",
                                            "Src IP and Src TCP/UDP Port fields",
                                            "Dest IP and Dest TCP/UDP Port fields",
                                            "Src/Dest IP and TCP/UDP Port fields",
                                            "Enhanced hashing mode"};
    return code < std::size(MODES) ? MODES[code] : MODES[0];
}
