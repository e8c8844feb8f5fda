// show_layout.h - how the virtual switch's CLI sets its texts: tables of fixed columns, and labels with dots.
//
//     Admin                  titles, set at the bottom of the head; "\n" in a title starts a line
//     Mode       Name
//     ---------  ---------   the rule: dashes under each column
//     Enable     Uplink      a text longer than its column is cut and never moves the next one
#pragma once

#include "model.h"

#include <initializer_list>
#include <string>
#include <vector>

struct VS_COLUMN_T {
    uint32_t begin, width;
    const char *title;
    bool right = false;
};

struct VS_TABLE_T {
    const VS_COLUMN_T *columns;
    size_t count;
    template <size_t N> constexpr VS_TABLE_T(const VS_COLUMN_T (&list)[N]) : columns(list), count(N)
    {
    }
};

// A show command's renderer, as VS_SHOW_T points to one.
using VS_RENDER_T = std::string(const VS_STATE_T &state, double now, const std::string &argument);

// Title lines and the rule.
std::string vsTableHead(const VS_TABLE_T &table);

// One row, its cells in the order of the columns; trailing blanks are dropped.
std::string vsTableRow(const VS_TABLE_T &table, std::initializer_list<std::string> cells);

// "Label......... value", the value at `column`, with its line end.
std::string vsDots(const char *label, size_t column, const std::string &value);

// A text as one word: its blanks replaced (dropped when `blank` is 0); `empty` when nothing is left.
std::string vsWord(const std::string &text, char blank, const char *empty);

std::string vsDigits(uint64_t value);

// A value with as many of `decimals` as fit the width.
std::string vsDecimal(double value, int decimals, size_t width);

std::string vsAddress(uint32_t address);

const char *vsEnable(bool on);  // "Enable", "Disable"
const char *vsEnabled(bool on); // "Enabled", "Disabled"

// An interface as the CLI lists it: every port, those not in use or of a unit that is
// away as detached, then the LAGs. A row has the same place in every table.
struct VS_SHOWN_T {
    const VS_INTERFACE_T *interface;
    const VS_PORT_T *port; // null for a LAG
    const VS_LAG_T *lag;   // null for a port
    std::string name;
    bool detached;
    bool up;

    const char *link() const;     // "Up", "Down" or "Detach"
    std::string physical() const; // speed and duplex while up, else ""
    std::string media() const;
};
std::vector<VS_SHOWN_T> vsShownPorts(const VS_STATE_T &state, double now);
std::vector<VS_SHOWN_T> vsShownInterfaces(const VS_STATE_T &state, double now);

// Speed codes of openapiIfSpeedGet: the CLI's text, and Mbit/s (0 for those that are no speed).
const char *vsSpeedText(uint32_t code);
uint32_t vsSpeedMbps(uint32_t code);

// "3 days 2 hrs 0 mins 7 secs"
std::string vsDuration(double seconds);
