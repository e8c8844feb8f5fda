#include "show_layout.h"
#include "vswitch.h"

#include <cstring>
#include <ctime>

// Show commands about the system, its units, cards, sensors, processor and clock. Units that are away are left out but
// where the stack is listed, which knows them as configured.

static VS_RENDER_T bootvar, ipManagement, slots, environment, processCpu, switchDetail, stackMembers, stackPorts,
    clockDetail;

extern const VS_SHOW_ROW_T vsShowSystem[] = {
    {"show bootvar", bootvar},
    {"show ip management", ipManagement},
    {"show slot", slots},
    {"show environment", environment},
    {"show process cpu all", processCpu},
    {"show switch detail", switchDetail},
    {"show switch", stackMembers},
    {"show stack-port", stackPorts},
    {"show clock detail", clockDetail},
    {nullptr, nullptr},
};

static std::vector<const VS_UNIT_T *> unitsPresent(const VS_STATE_T &state, double now);
static std::string codeVersion(const VS_STATE_T &state, const VS_UNIT_T &unit);
static std::string slotRow(const VS_UNIT_T &unit, const VS_SLOT_T &slot);
static std::string processes(const VS_UNIT_T &unit, double now);
static double upTime(const VS_UNIT_T &unit, double now);
static const char *fanMode(uint32_t code);

static constexpr VS_COLUMN_T BOOT_COLUMNS[] = {
    {0, 5, "unit", true}, {8, 11, "active"}, {21, 11, "backup"}, {34, 17, "current-active"}, {53, 17, "next-active"}};

// The rows are the 15th line and on.
static std::string bootvar(const VS_STATE_T &state, double now, const std::string &)
{
    const std::string rule = std::string(70, '-') + "\n";
    std::string text = "\nImage Descriptions\n\n active : " + state.system.activeLabel +
                       "\n backup : " + state.system.backupLabel + "\n\n\n Images currently available on Flash\n\n" +
                       rule + " unit   active       backup       current-active     next-active\n" + rule + "\n\n";
    for (const VS_UNIT_T *unit : unitsPresent(state, now)) {
        const VS_SYSTEM_T &system = state.system;
        const auto image = [unit](size_t column, const std::string &own) {
            return vsWord(unit->management && !own.empty() ? own : unit->images[column], '_', "<none>");
        };
        text += vsTableRow(BOOT_COLUMNS, {vsDigits(unit->unit), image(0, system.activeImage),
                                          image(1, system.backupImage), image(2, ""), image(3, system.activatedImage)});
    }
    return text;
}

static std::string ipManagement(const VS_STATE_T &state, double, const std::string &)
{
    constexpr size_t VALUE = 47;
    const VS_SYSTEM_T &system = state.system;
    return vsDots("IPv4 Management Interface", VALUE, "vlan " + vsDigits(system.managementVlan)) +
           vsDots("Method", VALUE, vsWord(system.managementMethod, '_', "None")) +
           vsDots("IP Address", VALUE, vsAddress(system.managementAddress)) +
           vsDots("Subnet Mask", VALUE, vsAddress(system.managementMask)) +
           vsDots("Default Gateway", VALUE, vsAddress(system.managementGateway)) +
           vsDots("Burned In MAC Address", VALUE, system.mac);
}

static constexpr VS_COLUMN_T SLOT_COLUMNS[] = {
    {0, 6, "Slot"},
    {7, 7, "Status"},
    {15, 7, "Admin\nState"},
    {23, 7, "Power\nState"},
    {31, 20, "Configured Card\nModel ID"},
    {52, 20, "Inserted Card\nModel ID"},
    {73, 9, "Pluggable"},
    {83, 10, "Power Down"},
};

// Slot 0 is the fixed part of every unit.
static std::string slots(const VS_STATE_T &state, double now, const std::string &)
{
    std::string text = "\n" + vsTableHead(SLOT_COLUMNS);
    for (const VS_UNIT_T *unit : unitsPresent(state, now)) {
        if (unit->slots.empty() || unit->slots.front().slot != 0)
            text += slotRow(*unit, {0, unit->model, ""});
        for (const VS_SLOT_T &slot : unit->slots)
            text += slotRow(*unit, slot);
    }
    return text;
}

static std::string slotRow(const VS_UNIT_T &unit, const VS_SLOT_T &slot)
{
    const bool full = !slot.model.empty();
    const char *canPlug = slot.slot == 0 ? "No" : "Yes";
    return vsTableRow(SLOT_COLUMNS, {vsDigits(unit.unit) + "/" + vsDigits(slot.slot), full ? "Full" : "Empty",
                                     vsEnable(full), vsEnable(full),
                                     vsWord(slot.configuredModel.empty() ? slot.model : slot.configuredModel, '-', ""),
                                     vsWord(slot.model, '-', ""), canPlug, canPlug});
}

static constexpr VS_COLUMN_T SENSOR_COLUMNS[] = {
    {0, 4, "Unit"},       {9, 6, "Sensor"},  {17, 16, "Description"},
    {35, 10, "Temp (C)"}, {47, 14, "State"}, {63, 12, "Max_Temp (C)"},
};
static constexpr VS_COLUMN_T FAN_COLUMNS[] = {
    {0, 4, "Unit"},   {5, 3, "Fan"},          {9, 20, "Description"}, {30, 9, "Type"},
    {40, 9, "Speed"}, {50, 11, "Duty level"}, {62, 15, "State"},
};

static std::string environment(const VS_STATE_T &state, double now, const std::string &)
{
    std::string text = vsDots("Fan Control Mode", 47, fanMode(state.system.fanMode)) + "\nTemperature Sensors:\n\n" +
                       vsTableHead(SENSOR_COLUMNS);
    const std::vector<const VS_UNIT_T *> units = unitsPresent(state, now);
    for (const VS_UNIT_T *unit : units) {
        for (const VS_SENSOR_T &sensor : unit->sensors)
            text += vsTableRow(SENSOR_COLUMNS, {vsDigits(unit->unit), vsDigits(sensor.id),
                                                sensor.description.empty() ? "-" : sensor.description,
                                                vsFormat("%d", sensor.temperature), vsWord(sensor.state, 0, "None"),
                                                vsFormat("%d", sensor.maximum)});
    }
    text += "\nFans:\n\n" + vsTableHead(FAN_COLUMNS);
    for (const VS_UNIT_T *unit : units) {
        for (const VS_FAN_T &fan : unit->fans)
            text += vsTableRow(FAN_COLUMNS, {vsDigits(unit->unit), vsDigits(fan.id), vsWord(fan.description, '-', "-"),
                                             vsWord(fan.type, '-', "-"), vsDigits(vsFanSpeed(*unit, fan, now)),
                                             vsDigits(fan.duty) + "%", fan.state.empty() ? "Unknown" : fan.state});
    }
    return text;
}

static std::string processCpu(const VS_STATE_T &state, double now, const std::string &)
{
    std::string text;
    for (const VS_UNIT_T *unit : unitsPresent(state, now)) {
        text +=
            vsFormat("Memory and Process CPU Utilization Info of Unit:%u\n\nMemory Utilization Report\n\n", unit->unit);
        text += "status      KBytes\n------ -----------\n";
        text += vsFormat("free   %11u\nalloc  %11u\n\n", unit->memoryFree, unit->memoryAllocated);
        text += "CPU Utilization:\n\n" + processes(*unit, now) + "\n";
    }
    return text;
}

static constexpr VS_COLUMN_T PROCESS_COLUMNS[] = {
    {1, 5, "PID", true}, {8, 22, "Name"}, {32, 8, "5 Secs"}, {42, 8, "60 Secs"}, {52, 8, "300 Secs"}};

// Tasks of the platform and their shares of the whole load.
static constexpr struct {
    uint32_t pid;
    const char *name;
    double share;
} TASKS[] = {
    {1187, "timerTask", 0.04}, {1203, "hwInterrupt", 0.08}, {1204, "hwLearn.0", 0.22}, {1206, "hwCount.0", 0.31},
    {1211, "hwLink.0", 0.17},  {1298, "stpTask", 0.05},     {1342, "snoopTask", 0.09}, {1388, "webTask", 0.04},
};

static std::string processes(const VS_UNIT_T &unit, double now)
{
    const double loads[] = {vsCpu(unit, now), (vsCpu(unit, now) + vsCpu(unit, now + 60)) / 2, unit.cpu};
    const auto row = [&loads](const std::string &pid, const char *name, double share) {
        return vsTableRow(PROCESS_COLUMNS,
                          {pid, name, vsFormat("%.2f%%", loads[0] * share), vsFormat("%.2f%%", loads[1] * share),
                           vsFormat("%.2f%%", loads[2] * share)});
    };
    std::string text = vsTableHead(PROCESS_COLUMNS);
    for (const auto &task : TASKS)
        text += row(vsDigits(task.pid), task.name, task.share);
    std::string total = row("", "", 1);
    const char *label = "Total CPU Utilization";
    return text + "\n" + total.replace(0, strlen(label), label);
}

static std::string switchDetail(const VS_STATE_T &state, double now, const std::string &)
{
    constexpr size_t VALUE = 35;
    std::string text;
    for (const VS_UNIT_T *unit : unitsPresent(state, now)) {
        const std::string version = codeVersion(state, *unit);
        text += "\n" + vsDots("Switch", VALUE, vsDigits(unit->unit)) +
                vsDots("Management Status", VALUE, unit->management ? "Management Switch" : "Stack Member") +
                vsDots("Hardware Management Preference", VALUE, "Unassigned") +
                vsDots("Preconfigured Model Identifier", VALUE, unit->model) +
                vsDots("Plugged-in Model Identifier", VALUE, unit->model) +
                vsDots("Switch Status", VALUE, unit->ok ? "OK" : "Code Mismatch") +
                vsDots("Detected Code Version", VALUE, version) + vsDots("Detected Code in Flash", VALUE, version) +
                vsDots("Serial Number", VALUE, unit->serial) + vsDots("Up Time", VALUE, vsDuration(upTime(*unit, now)));
    }
    return text;
}

static constexpr VS_COLUMN_T MEMBER_COLUMNS[] = {
    {0, 3, "SW"},
    {4, 11, "Management\nSwitch"},
    {16, 9, "Standby\nStatus"},
    {26, 16, "Preconfig\nModel ID"},
    {43, 16, "Plugged-in\nModel ID"},
    {60, 14, "Switch\nStatus"},
    {75, 16, "Code\nVersion"},
};

static std::string stackMembers(const VS_STATE_T &state, double now, const std::string &)
{
    std::string text = "\n" + vsTableHead(MEMBER_COLUMNS);
    for (const VS_UNIT_T &unit : state.units) {
        if (!vsWindowOpen(unit.present, now)) {
            text += vsTableRow(MEMBER_COLUMNS, {vsDigits(unit.unit), "Unassigned", "", unit.model, "", "Not Present"});
            continue;
        }
        text += vsTableRow(MEMBER_COLUMNS, {vsDigits(unit.unit), unit.management ? "Mgmt Sw" : "Stack Mbr",
                                            unit.standby ? "Oper Stby" : "", unit.model, unit.model,
                                            unit.ok ? "OK" : "Code Mismatch", codeVersion(state, unit)});
    }
    return text;
}

static constexpr VS_COLUMN_T STACK_PORT_COLUMNS[] = {
    {0, 4, "Unit"},          {5, 10, "Interface"},    {17, 10, "Configured\nMode"}, {29, 10, "Running\nMode"},
    {41, 9, "Link\nStatus"}, {52, 10, "Link\nSpeed"},
};

static std::string stackPorts(const VS_STATE_T &state, double now, const std::string &)
{
    std::string rows;
    for (const VS_UNIT_T *unit : unitsPresent(state, now)) {
        for (const VS_STACK_PORT_T &stack : unit->stackPorts) {
            const VS_PORT_T *port = vsPortAt(state, unit->unit, stack.slot, stack.port);
            const bool up = port != nullptr && vsLinkUp(state, *port, now);
            rows += vsTableRow(STACK_PORT_COLUMNS,
                               {vsDigits(unit->unit), vsDigits(stack.slot) + "/" + vsDigits(stack.port), "Stack",
                                "Stack", up ? "Link Up" : "Link Down", up ? vsSpeedText(port->speed) : ""});
        }
    }
    if (rows.empty())
        return "No stack ports are configured.\n";
    return "\n" + vsTableHead(STACK_PORT_COLUMNS) + rows;
}

static std::string clockDetail(const VS_STATE_T &state, double now, const std::string &)
{
    const int32_t offset = state.system.utcOffset;
    const std::string zone =
        vsFormat("UTC%c%d:%02d", offset < 0 ? '-' : '+', std::abs(offset) / 60, std::abs(offset) % 60);
    const time_t local = static_cast<time_t>(state.epoch + static_cast<int64_t>(now) + offset * 60);
    tm parts = {};
    char clock[40] = "", date[40] = "";
    if (gmtime_r(&local, &parts) != nullptr) {
        (void)strftime(clock, sizeof(clock), "%H:%M:%S", &parts); // fits
        (void)strftime(date, sizeof(date), "%b %d %Y", &parts);
    }
    std::string text = vsFormat("\n%s %s %s\nNo time source\n\nTime zone:\nAcronym not configured\nOffset is %s\n",
                                clock, zone.c_str(), date, zone.c_str());
    if (state.system.summerTime.empty())
        return text + "\nSummertime is disabled\n";
    return text + "\nSummertime:\nAcronym not configured\nRecurring every year (" + state.system.summerTime +
           ")\nOffset is 60 minutes\n";
}

static std::vector<const VS_UNIT_T *> unitsPresent(const VS_STATE_T &state, double now)
{
    std::vector<const VS_UNIT_T *> units;
    for (const VS_UNIT_T &unit : state.units) {
        if (vsWindowOpen(unit.present, now))
            units.push_back(&unit);
    }
    return units;
}

static std::string codeVersion(const VS_STATE_T &state, const VS_UNIT_T &unit)
{
    return unit.codeVersion.empty() ? state.system.osVersion : unit.codeVersion;
}

// Since the unit last came, or since the switch started.
static double upTime(const VS_UNIT_T &unit, double now)
{
    const VS_WINDOW_T &present = unit.present;
    if (present.from == 0 && (present.lasts == 0 || present.every == 0))
        return VS_SECONDS_BEFORE_EPOCH + now;
    const double since = now - present.from;
    if (present.every == 0 || present.lasts == 0)
        return since;
    return since - static_cast<double>(static_cast<uint64_t>(since / present.every)) * present.every;
}

static const char *fanMode(uint32_t code)
{
    switch (code) {
    case 2:
        return "Cool";
    case 3:
        return "Off";
    case 4:
        return "Quiet";
    default:
        return "Not Supported";
    }
}
