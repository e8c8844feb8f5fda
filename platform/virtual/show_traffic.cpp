#include "show_layout.h"
#include "vswitch.h"

// Show commands that measure: counters and rates of interfaces, the values and identity of optics. They move with the
// clock; a port that is down carries nothing.

static VS_RENDER_T interfaceCounters, interfaceOne, opticsValues, opticsInfo;

extern const VS_SHOW_ROW_T vsShowTraffic[] = {
    {"show interface counters", interfaceCounters},
    {"show fiber-ports optics all", opticsValues},
    {"show fiber-ports optics-info all", opticsInfo},
    {"show interface *", interfaceOne},
    {nullptr, nullptr},
};

// Counter numbers of rpcclt_openapiStatGet in the order of a table's columns.
struct DIRECTION_T {
    uint32_t octets, unicast, multicast, broadcast, drops, errors, total;
};
static constexpr DIRECTION_T INBOUND = {1, 13, 14, 15, 50, 52, 51};
static constexpr DIRECTION_T OUTBOUND = {20, 28, 29, 30, 49, 54, 53};

static std::string counterTable(const std::vector<VS_SHOWN_T> &list, bool inbound, double now);
static std::string rateText(const VS_SHOWN_T &shown, bool inbound, double now);
static std::string utilisation(const VS_STATE_T &state, const VS_SHOWN_T &shown, bool inbound, double now);
static uint64_t capacity(const VS_STATE_T &state, const VS_SHOWN_T &shown, double now);
static bool opticSeen(const VS_SHOWN_T &shown);

// The second table repeats the first for the other direction.
static std::string interfaceCounters(const VS_STATE_T &state, double now, const std::string &)
{
    const std::vector<VS_SHOWN_T> list = vsShownInterfaces(state, now);
    return "\n" + counterTable(list, true, now) + "\n" + counterTable(list, false, now);
}

static constexpr VS_COLUMN_T IN_COLUMNS[] = {
    {0, 9, "Port"},
    {11, 18, "InOctets", true},
    {31, 12, "InUcastPkts", true},
    {45, 12, "InMcastPkts", true},
    {59, 12, "InBcastPkts", true},
    {73, 10, "InDropPkts", true},
    {85, 9, "Rx Error", true},
    {96, 20, "InBitRate(Mbps)"},
};
static constexpr VS_COLUMN_T OUT_COLUMNS[] = {
    {0, 9, "Port"},
    {11, 18, "OutOctets", true},
    {31, 12, "OutUcastPkts", true},
    {45, 12, "OutMcastPkts", true},
    {59, 12, "OutBcastPkts", true},
    {73, 11, "OutDropPkts", true},
    {85, 9, "Tx Error", true},
    {96, 20, "OutBitRate(Mbps)"},
};

static std::string counterTable(const std::vector<VS_SHOWN_T> &list, bool inbound, double now)
{
    const VS_TABLE_T table = inbound ? VS_TABLE_T(IN_COLUMNS) : VS_TABLE_T(OUT_COLUMNS);
    const DIRECTION_T &number = inbound ? INBOUND : OUTBOUND;
    std::string text = vsTableHead(table);
    for (const VS_SHOWN_T &shown : list) {
        const auto counter = [&](uint32_t n) {
            return vsDigits(vsCounter(*shown.interface, n, now));
        };
        text += vsTableRow(table, {shown.name, counter(number.octets), counter(number.unicast),
                                   counter(number.multicast), counter(number.broadcast), counter(number.drops),
                                   counter(number.errors), rateText(shown, inbound, now)});
    }
    return text;
}

static std::string interfaceOne(const VS_STATE_T &state, double now, const std::string &argument)
{
    constexpr size_t VALUE = 48;
    for (const VS_SHOWN_T &shown : vsShownInterfaces(state, now)) {
        if (shown.name != argument)
            continue;
        const auto counter = [&](const char *label, uint32_t number) {
            return vsDots(label, VALUE, vsDigits(vsCounter(*shown.interface, number, now)));
        };
        return counter("Packets Received Without Error", INBOUND.total) +
               counter("Packets Received With Error", INBOUND.errors) +
               counter("Broadcast Packets Received", INBOUND.broadcast) +
               counter("Receive Packets Discarded", INBOUND.drops) +
               counter("Packets Transmitted Without Errors", OUTBOUND.total) +
               counter("Transmit Packets Discarded", OUTBOUND.drops) +
               counter("Transmit Packet Errors", OUTBOUND.errors) + vsDots("Load Interval", VALUE, "300") +
               vsDots("Received Rate(Mbps)", VALUE, rateText(shown, true, now)) +
               vsDots("Transmitted Rate(Mbps)", VALUE, rateText(shown, false, now)) +
               vsDots("Percent Utilization Received", VALUE, utilisation(state, shown, true, now)) +
               vsDots("Percent Utilization Transmitted", VALUE, utilisation(state, shown, false, now)) +
               vsDots("Time Since Counters Last Cleared", VALUE, vsDuration(VS_SECONDS_BEFORE_EPOCH + now));
    }
    return "\nInterface " + argument + " is not valid.\n";
}

static constexpr VS_COLUMN_T OPTICS_COLUMNS[] = {
    {0, 8, "Port"},
    {9, 13, "Module"},
    {24, 4, "Temp\n[C]"},
    {30, 7, "Voltage\n[Volt]"},
    {39, 7, "Current\n[mA]"},
    {49, 7, "Output\nPower\n[dBm]"},
    {58, 7, "Input\nPower\n[dBm]"},
    {68, 5, "TX\nFault"},
    {75, 3, "LOS"},
    {80, 13, "Fault\nStatus"},
};
static constexpr VS_COLUMN_T OPTICS_NONE[] = {{0, 8, ""}, {8, 60, ""}};

static std::string opticsValues(const VS_STATE_T &state, double now, const std::string &)
{
    const VS_TABLE_T table(OPTICS_COLUMNS);
    std::string text = "\n" + vsTableHead(table);
    for (const VS_SHOWN_T &shown : vsShownPorts(state, now)) {
        const VS_OPTIC_T &optic = shown.port->optic;
        if (!opticSeen(shown))
            continue;
        if (!optic.diagnostics) {
            text += vsTableRow(OPTICS_NONE, {shown.name, "[ifName " + shown.name + ": no diagnostics]"});
            continue;
        }
        text += vsTableRow(table, {shown.name, optic.compliance, vsDecimal(optic.temperature, 1, 4),
                                   vsDecimal(optic.voltage, 3, 7), vsDecimal(optic.current, 1, 7),
                                   vsDecimal(optic.outputPower, 3, 7), vsDecimal(optic.inputPower, 3, 7),
                                   optic.txFault ? "Yes" : "No", optic.los ? "Yes" : "No", optic.faultStatus});
    }
    return text;
}

static constexpr VS_COLUMN_T INFO_COLUMNS[] = {
    {0, 8, "Port"},         {9, 16, "Vendor Name"},    {26, 6, "Length\n50um\n[m]"}, {33, 6, "Length\n62.5um\n[m]"},
    {40, 6, "Length\n[m]"}, {47, 16, "Serial Number"}, {64, 16, "Part Number"},      {81, 7, "Nominal\nRate\n[Mbps]"},
    {89, 4, "Rev"},         {94, 16, "Compliance"},    {111, 12, "Supported"},       {124, 9, "Possible\nSpeed"},
};

static std::string opticsInfo(const VS_STATE_T &state, double now, const std::string &)
{
    const VS_TABLE_T table(INFO_COLUMNS);
    std::string text = "\n" + vsTableHead(table);
    for (const VS_SHOWN_T &shown : vsShownPorts(state, now)) {
        const VS_OPTIC_T &optic = shown.port->optic;
        if (!opticSeen(shown))
            continue;
        text += vsTableRow(table, {shown.name, optic.vendor, optic.length50, optic.length62, optic.length, optic.serial,
                                   optic.part, optic.bitRate, optic.revision, optic.compliance,
                                   optic.supported ? "Yes" : "No", optic.speeds});
    }
    return text;
}

static std::string rateText(const VS_SHOWN_T &shown, bool inbound, double now)
{
    return vsDecimal(shown.up ? static_cast<double>(vsRate(*shown.interface, inbound, now)) / 1e6 : 0.0, 1, 20);
}

static std::string utilisation(const VS_STATE_T &state, const VS_SHOWN_T &shown, bool inbound, double now)
{
    const uint64_t full = shown.up ? capacity(state, shown, now) : 0;
    const uint64_t percent = full == 0 ? 0 : vsRate(*shown.interface, inbound, now) * 100 / full;
    return vsDigits(percent) + "%";
}

// Bits per second that an interface can carry: a LAG has what its members that are up have.
static uint64_t capacity(const VS_STATE_T &state, const VS_SHOWN_T &shown, double now)
{
    if (shown.lag == nullptr)
        return vsSpeedMbps(shown.interface->speed) * UINT64_C(1000000);
    uint64_t sum = 0;
    for (const uint32_t member : shown.lag->members) {
        const VS_PORT_T *port = vsPort(state, member);
        if (port != nullptr && vsLinkUp(state, *port, now))
            sum += vsSpeedMbps(port->speed) * UINT64_C(1000000);
    }
    return sum;
}

// A front port whose sub-ports are in use keeps its optic; a unit that is away takes its optics with it.
static bool opticSeen(const VS_SHOWN_T &shown)
{
    const bool unitAway = shown.detached && shown.port->attached;
    return shown.port->optic.present && !unitAway;
}
