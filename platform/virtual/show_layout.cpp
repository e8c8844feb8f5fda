#include "show_layout.h"

// What the show commands have in common: setting of tables and labels, and the list of interfaces with the texts that
// several tables print. Everything comes from the record; nothing here knows a command.

#include "vswitch.h"

#include <algorithm>
#include <cinttypes>

struct SPEED_T {
    const char *text;
    uint32_t mbps;
};

static constexpr SPEED_T SPEEDS[] = {
    {"", 0},
    {"Auto", 0},
    {"100 Half", 100},
    {"100 Full", 100},
    {"10 Half", 10},
    {"10 Full", 10},
    {"100 Full", 100},
    {"1000 Full", 1000},
    {"2.5G Full", 2500},
    {"5G Full", 5000},
    {"10G Full", 10000},
    {"20G Full", 20000},
    {"25G Full", 25000},
    {"40G Full", 40000},
    {"50G Full", 50000},
    {"100G Full", 100000},
    {"155", 0},
    {"200G Full", 200000},
    {"400G Full", 400000},
    {"LAG", 0},
};
static constexpr uint32_t SPEED_COUNT = sizeof(SPEEDS) / sizeof(SPEEDS[0]);

static void trimEnd(std::string *line);
static void putCell(std::string *line, const VS_COLUMN_T &column, const std::string &text);
static std::vector<std::string> titleLines(const char *title);

std::string vsTableHead(const VS_TABLE_T &table)
{
    size_t height = 0;
    for (size_t i = 0; i < table.count; i++)
        height = std::max(height, titleLines(table.columns[i].title).size());
    std::vector<std::string> lines(height + 1);
    for (size_t i = 0; i < table.count; i++) {
        const VS_COLUMN_T &column = table.columns[i];
        const std::vector<std::string> title = titleLines(column.title);
        for (size_t n = 0; n < title.size(); n++)
            putCell(&lines[height - title.size() + n], column, title[n]);
        putCell(&lines[height], column, std::string(column.width, '-'));
    }
    std::string head;
    for (std::string &line : lines) {
        trimEnd(&line);
        head += line + "\n";
    }
    return head;
}

std::string vsTableRow(const VS_TABLE_T &table, std::initializer_list<std::string> cells)
{
    std::string line;
    size_t i = 0;
    for (const std::string &cell : cells) {
        if (i == table.count)
            break;
        putCell(&line, table.columns[i++], cell);
    }
    trimEnd(&line);
    return line + "\n";
}

std::string vsDots(const char *label, size_t column, const std::string &value)
{
    std::string line = label;
    if (line.size() + 1 < column)
        line.append(column - 1 - line.size(), '.');
    return line + " " + value + "\n";
}

std::string vsWord(const std::string &text, char blank, const char *empty)
{
    std::string word;
    for (const char c : text) {
        if (c != ' ' && c != '\t')
            word += c;
        else if (blank != 0)
            word += blank;
    }
    return word.empty() ? empty : word;
}

std::string vsDigits(uint64_t value)
{
    return vsFormat("%" PRIu64, value);
}

std::string vsDecimal(double value, int decimals, size_t width)
{
    std::string text = vsFormat("%.*f", decimals, value);
    while (text.size() > width && decimals > 0)
        text = vsFormat("%.*f", --decimals, value);
    return text;
}

std::string vsAddress(uint32_t address)
{
    return vsFormat("%u.%u.%u.%u", address >> 24, address >> 16 & 255, address >> 8 & 255, address & 255);
}

const char *vsEnable(bool on)
{
    return on ? "Enable" : "Disable";
}

const char *vsEnabled(bool on)
{
    return on ? "Enabled" : "Disabled";
}

const char *VS_SHOWN_T::link() const
{
    if (detached)
        return "Detach";
    return up ? "Up" : "Down";
}

std::string VS_SHOWN_T::physical() const
{
    return up && port != nullptr ? vsSpeedText(port->speed) : "";
}

std::string VS_SHOWN_T::media() const
{
    if (port == nullptr)
        return "";
    return port->optic.present && !port->optic.compliance.empty() ? port->optic.compliance : port->mediaType;
}

std::vector<VS_SHOWN_T> vsShownPorts(const VS_STATE_T &state, double now)
{
    std::vector<VS_SHOWN_T> shown;
    for (const VS_PORT_T &port : state.ports) {
        const VS_UNIT_T *unit = vsUnit(state, port.unit);
        const bool there = port.attached && unit != nullptr && vsWindowOpen(unit->present, now);
        shown.push_back({&port, &port, nullptr, vsPortName(port), !there, vsLinkUp(state, port, now)});
    }
    return shown;
}

std::vector<VS_SHOWN_T> vsShownInterfaces(const VS_STATE_T &state, double now)
{
    std::vector<VS_SHOWN_T> shown = vsShownPorts(state, now);
    for (const VS_LAG_T &lag : state.lags)
        shown.push_back({&lag, nullptr, &lag, vsLagName(lag), false, vsLagUp(state, lag, now)});
    return shown;
}

const char *vsSpeedText(uint32_t code)
{
    return code < SPEED_COUNT ? SPEEDS[code].text : "";
}

uint32_t vsSpeedMbps(uint32_t code)
{
    return code < SPEED_COUNT ? SPEEDS[code].mbps : 0;
}

std::string vsDuration(double seconds)
{
    const uint64_t whole = seconds > 0 ? static_cast<uint64_t>(seconds) : 0;
    return vsFormat("%" PRIu64 " days %" PRIu64 " hrs %" PRIu64 " mins %" PRIu64 " secs", whole / 86400,
                    whole / 3600 % 24, whole / 60 % 60, whole % 60);
}

static void trimEnd(std::string *line)
{
    line->erase(line->find_last_not_of(' ') + 1);
}

static void putCell(std::string *line, const VS_COLUMN_T &column, const std::string &text)
{
    const size_t length = std::min<size_t>(text.size(), column.width);
    const size_t begin = column.begin + (column.right ? column.width - length : 0);
    if (line->size() < begin + length)
        line->resize(begin + length, ' ');
    line->replace(begin, length, text, 0, length);
}

static std::vector<std::string> titleLines(const char *title)
{
    std::vector<std::string> lines(1);
    for (; *title != '\0'; title++) {
        if (*title == '\n')
            lines.emplace_back();
        else
            lines.back() += *title;
    }
    return lines;
}
