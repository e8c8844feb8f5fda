#include "collectors/port/port_columns.h"

// Rows of the tables of all interfaces that are keyed by a name in the first nine columns. Uses the column readers of
// switch/; no platform access.

#include "switch/columns.h"

#include <cstring>

constexpr uint32_t PVID_LAST = 4094;

void portNameColumn(const char *line, char name[PORT_NAME_SIZE])
{
    textCopy(name, PORT_NAME_SIZE, line);
    size_t length = strlen(name);
    while (length > 0 && strchr(" \t\r\n", name[length - 1]) != nullptr)
        length--;
    name[length] = '\0';
}

/*
 * 0         1         2         3
 * 0123456789012345678901234567890123456789012
 * Interface   VLAN ID  Frame Types   Filtering     (titles begin with I, P or V)
 * --------- --------  ------------  ---------
 * 1/0/1     20        Untagged      Enable
 * lag 1     1         Admit All     Disable
 */
bool vlanPortRow(const char *line, char name[PORT_NAME_SIZE], uint32_t *pvid)
{
    constexpr size_t SHORTEST = 12;
    constexpr size_t PVID_COLUMN = 9;
    int number = 0;

    if (strlen(line) < SHORTEST)
        return false;
    portNameColumn(line, name);
    if (name[0] == '\0' || strchr("-IPV", name[0]) != nullptr)
        return false;
    if (!columnNumber(line, PVID_COLUMN, &number) || number < 1 || static_cast<uint32_t>(number) > PVID_LAST)
        return false;
    *pvid = static_cast<uint32_t>(number);
    return true;
}
