// port_columns.h - the columns that several port documents read from the same tables of show commands.
#pragma once

#include <cstddef>
#include <cstdint>

// Line buffer for tables that are read with showFileLineCut: 511 characters of a line count.
constexpr size_t PORT_LINE_SIZE = 512;

// A name of nine characters, as wide as the first column of the tables.
constexpr size_t PORT_NAME_SIZE = 10;

// First nine characters of a line without trailing space, tab, CR and LF; "" when nothing is left. Leading blanks stay.
void portNameColumn(const char *line, char name[PORT_NAME_SIZE]);

// One row of "show vlan port all": the interface's name and its port VLAN ID, 1 to 4094. False for short lines, titles,
// rules and IDs out of range.
[[nodiscard]] bool vlanPortRow(const char *line, char name[PORT_NAME_SIZE], uint32_t *pvid);
