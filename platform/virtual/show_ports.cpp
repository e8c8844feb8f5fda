#include "show_layout.h"
#include "vswitch.h"

// Show commands that list ports by their settings: link, speed, media, VLAN, description. Rows stand in the order of
// interface numbers, LAGs last. Names take the first nine columns.

static VS_RENDER_T interfacesStatus, interfaceFec, hardwareProfile, interfacesDescription, switchportTrunk, portStatus,
    portAll, portOne, portAdvertise, vlanPort;

extern const VS_SHOW_ROW_T vsShowPorts[] = {
    {"show interfaces status all", interfacesStatus},
    {"show interface fec", interfaceFec},
    {"show interfaces hardware profile", hardwareProfile},
    {"show interfaces description all", interfacesDescription},
    {"show interfaces switchport trunk", switchportTrunk},
    {"show port status all", portStatus},
    {"show port advertise", portAdvertise},
    {"show vlan port all", vlanPort},
    {"show port all", portAll},
    {"show port *", portOne},
    {nullptr, nullptr},
};

static std::string physicalMode(const VS_SHOWN_T &shown);
static const char *spanningState(const VS_SHOWN_T &shown);
static std::string portRow(const VS_STATE_T &state, const VS_SHOWN_T &shown);
static const char *portRole(const VS_STATE_T &state, const VS_SHOWN_T &shown);
static std::string orNone(const std::string &text);

static constexpr VS_COLUMN_T STATUS_COLUMNS[] = {
    {0, 9, "Port"},
    {11, 22, "Name"},
    {35, 6, "Link\nState"},
    {43, 10, "Physical\nMode"},
    {55, 10, "Physical\nStatus"},
    {67, 10, "Media\nType"},
    {79, 12, "Flow Control\nStatus"},
    {93, 5, "VLAN"},
};

// The media column holds ten characters: of "100GBase-SR4" it shows "100G-SR4".
static std::string mediaShort(const VS_SHOWN_T &shown)
{
    std::string media = shown.media();
    const size_t base = media.find("Base-");
    if (media.size() > 10 && base != std::string::npos)
        media.erase(base, 4);
    return media;
}

static std::string interfacesStatus(const VS_STATE_T &state, double now, const std::string &)
{
    const VS_TABLE_T table(STATUS_COLUMNS);
    std::string text = "\n" + vsTableHead(table);
    for (const VS_SHOWN_T &shown : vsShownInterfaces(state, now)) {
        const bool flow = shown.up && shown.port != nullptr && shown.port->flowControl != 0;
        text += vsTableRow(table, {shown.name, shown.interface->description, shown.link(), physicalMode(shown),
                                   shown.physical(), mediaShort(shown), flow ? "Active" : "Inactive",
                                   shown.interface->switchMode >= 2 ? "Trunk" : vsDigits(shown.interface->pvid)});
    }
    return text;
}

static constexpr VS_COLUMN_T FEC_COLUMNS[] = {{0, 9, "Interface"}, {10, 12, "FEC Mode"}, {23, 12, "Link\nState"}};

static std::string interfaceFec(const VS_STATE_T &state, double now, const std::string &)
{
    const VS_TABLE_T table(FEC_COLUMNS);
    std::string text = "\n" + vsTableHead(table);
    for (const VS_SHOWN_T &shown : vsShownPorts(state, now))
        text += vsTableRow(table, {shown.name, orNone(shown.port->fec), shown.link()});
    return text;
}

static constexpr VS_COLUMN_T PROFILE_COLUMNS[] = {{0, 9, "Interface"}, {11, 14, "Mode"}, {27, 18, "Ports in use"}};

// Only front ports that can be fanned out have a mode.
static std::string hardwareProfile(const VS_STATE_T &state, double now, const std::string &)
{
    const VS_TABLE_T table(PROFILE_COLUMNS);
    std::string text = "\n" + vsTableHead(table);
    for (const VS_SHOWN_T &shown : vsShownPorts(state, now)) {
        if (!shown.port->hwProfile.empty())
            text += vsTableRow(table, {shown.name, vsWord(shown.port->hwProfile, '_', "-"),
                                       shown.port->hwProfile.compare(0, 2, "1x") == 0 ? "front port" : "sub-ports"});
    }
    return text;
}

static constexpr VS_COLUMN_T DESCRIPTION_COLUMNS[] = {{0, 9, "Interface"}, {11, 255, "Description"}};

static std::string interfacesDescription(const VS_STATE_T &state, double now, const std::string &)
{
    std::string text = "\nInterface  Description\n---------  " + std::string(64, '-') + "\n";
    for (const VS_SHOWN_T &shown : vsShownInterfaces(state, now))
        text += vsTableRow(DESCRIPTION_COLUMNS, {shown.name, shown.interface->description});
    return text;
}

static constexpr VS_COLUMN_T TRUNK_COLUMNS[] = {
    {0, 9, "Intf"}, {11, 6, "PVID"}, {19, 12, "Port Mode"}, {38, 10, "Dynamic\nAuto-Trunk"}};

// Trunks that an administrator set are listed too, but only those of the automatic mode say Yes.
static std::string switchportTrunk(const VS_STATE_T &state, double now, const std::string &)
{
    const VS_TABLE_T table(TRUNK_COLUMNS);
    std::string text = vsDots("Global Auto-Trunk Mode", 47, vsEnabled(state.system.autoTrunk)) + "\n";
    text += vsTableHead(table);
    for (const VS_SHOWN_T &shown : vsShownInterfaces(state, now)) {
        const uint32_t mode = shown.interface->switchMode;
        if (mode == 2 || mode == 3)
            text += vsTableRow(table, {shown.name, vsDigits(shown.interface->pvid), mode == 3 ? "Auto-Trunk" : "Trunk",
                                       mode == 3 ? "Yes" : "No"});
    }
    return text;
}

static constexpr VS_COLUMN_T PORT_STATUS_COLUMNS[] = {
    {0, 7, "Intf"},
    {8, 18, "Media Type"},
    {28, 4, "STP\nMode"},
    {33, 10, "Physical\nMode"},
    {44, 10, "Physical\nStatus"},
    {56, 7, "Link\nStatus"},
    {64, 12, "Flow Control\nStatus"},
};

// Ports only: the media column is too narrow to tell a LAG's members.
static std::string portStatus(const VS_STATE_T &state, double now, const std::string &)
{
    const VS_TABLE_T table(PORT_STATUS_COLUMNS);
    std::string text = "\n" + vsTableHead(table);
    for (const VS_SHOWN_T &shown : vsShownPorts(state, now)) {
        const bool flow = shown.up && shown.port->flowControl != 0;
        text += vsTableRow(table, {shown.name, shown.media(), spanningState(shown), physicalMode(shown),
                                   shown.physical(), shown.link(), flow ? "Active" : "Inactive"});
    }
    return text;
}

static constexpr VS_COLUMN_T PORT_COLUMNS[] = {
    {0, 9, "Intf"},
    {10, 6, "Type"},
    {17, 9, "Admin\nMode"},
    {27, 10, "Physical\nMode"},
    {38, 10, "Physical\nStatus"},
    {49, 6, "Link\nStatus"},
    {56, 7, "Link\nTrap"},
    {64, 7, "LACP\nMode"},
    {72, 6, "Actor\nTime"},
    {79, 8, "Port\nStack\nCapable"},
    {88, 8, "Flow\nMode"},
};

static std::string portAll(const VS_STATE_T &state, double now, const std::string &)
{
    std::string text = "\n" + vsTableHead(PORT_COLUMNS);
    for (const VS_SHOWN_T &shown : vsShownInterfaces(state, now))
        text += portRow(state, shown);
    return text;
}

// The same table for one port, whose row is therefore the sixth line.
static std::string portOne(const VS_STATE_T &state, double now, const std::string &argument)
{
    for (const VS_SHOWN_T &shown : vsShownInterfaces(state, now)) {
        if (shown.name == argument)
            return "\n" + vsTableHead(PORT_COLUMNS) + portRow(state, shown);
    }
    return "\nInterface " + argument + " is not valid.\n";
}

static constexpr VS_COLUMN_T ADVERTISE_COLUMNS[] = {
    {0, 9, "Intf"}, {11, 18, "Type"}, {31, 8, "Neg"}, {41, 30, "Operational Link Advertisement"}};

static std::string portAdvertise(const VS_STATE_T &state, double now, const std::string &)
{
    const VS_TABLE_T table(ADVERTISE_COLUMNS);
    std::string text = "\n" + vsTableHead(table);
    for (const VS_SHOWN_T &shown : vsShownPorts(state, now)) {
        const bool negotiates = shown.port->autoNeg == 0;
        text += vsTableRow(table, {shown.name, shown.media(), vsEnabled(negotiates),
                                   negotiates && shown.up ? shown.physical() : "N/A"});
    }
    return text;
}

static constexpr VS_COLUMN_T VLAN_PORT_COLUMNS[] = {
    {0, 9, "Interface"}, {10, 8, "Port\nVLAN ID"}, {20, 12, "Acceptable\nFrame Types"}, {34, 9, "Ingress\nFiltering"}};

static std::string vlanPort(const VS_STATE_T &state, double now, const std::string &)
{
    const VS_TABLE_T table(VLAN_PORT_COLUMNS);
    std::string text = "\n" + vsTableHead(table);
    for (const VS_SHOWN_T &shown : vsShownInterfaces(state, now)) {
        const bool access = shown.interface->switchMode == 1;
        text += vsTableRow(table, {shown.name, vsDigits(shown.interface->pvid), access ? "Untagged" : "Admit All",
                                   vsEnable(shown.interface->switchMode != 0)});
    }
    return text;
}

static std::string physicalMode(const VS_SHOWN_T &shown)
{
    if (shown.port == nullptr)
        return "";
    if (!shown.port->physicalMode.empty())
        return shown.port->physicalMode;
    return shown.port->autoNeg == 0 ? "Auto" : vsSpeedText(shown.port->speed);
}

static const char *spanningState(const VS_SHOWN_T &shown)
{
    if (!shown.up || !shown.interface->stpEnabled)
        return "DIS";
    switch (shown.interface->stpState) {
    case 1:
        return "BLK";
    case 2:
        return "LRN";
    case 4:
        return "DIS";
    default:
        return "FWD";
    }
}

static std::string portRow(const VS_STATE_T &state, const VS_SHOWN_T &shown)
{
    const bool lacp = shown.lag == nullptr || !shown.lag->staticMode;
    const std::string stack = shown.port == nullptr ? "No" : orNone(shown.port->stackCapable);
    return vsTableRow(PORT_COLUMNS, {shown.name, portRole(state, shown), vsEnable(shown.interface->adminUp),
                                     physicalMode(shown), shown.physical(), shown.link(), "Enable", vsEnable(lacp),
                                     "long", stack, vsEnable(shown.port != nullptr && shown.port->flowControl != 0)});
}

static const char *portRole(const VS_STATE_T &state, const VS_SHOWN_T &shown)
{
    const uint32_t ifNum = shown.interface->ifNum;
    if (state.mirror.configured && state.mirror.destination == ifNum)
        return "Probe";
    for (const VS_LAG_T &lag : state.lags) {
        for (const uint32_t member : lag.members) {
            if (member == ifNum)
                return "PC Mbr";
        }
    }
    return "";
}

static std::string orNone(const std::string &text)
{
    return text.empty() ? "N/A" : text;
}
