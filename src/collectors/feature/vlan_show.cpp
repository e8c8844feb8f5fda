#include "collectors/feature/vlan_show.h"

// Rows are known by their words, not by columns: a number first, and the VLAN's type somewhere in the line.
//
// 0         1         2         3         4         5
// 0123456789012345678901234567890123456789012345678901
// VLAN ID VLAN Name                        VLAN Type
// ------- -------------------------------- ----------
// 1       default                          Default
// 10      Dante                            Static

#include "runtime/result.h"
#include "switch/columns.h"

#include <cstring>

constexpr size_t LINE_SIZE = 512;
constexpr int VLAN_ID_MAX = 4096;

static bool rowParse(const char *line, VLAN_SHOWN_T *vlan)
{
    int vlanId = 0;

    if (line[0] < '0' || line[0] > '9' || !columnNumber(line, 0, &vlanId) || vlanId < 1 || vlanId > VLAN_ID_MAX)
        return false;
    bool isDynamic = strstr(line, "Dynamic") != nullptr;
    if (!isDynamic && strstr(line, "Static") == nullptr && strstr(line, "Default") == nullptr)
        return false;
    vlan->vlanId = static_cast<uint32_t>(vlanId);
    vlan->isStatic = !isDynamic;
    vlan->name[0] = '\0';
    (void)columnWord(line, strspn(line, "0123456789"), vlan->name, sizeof(vlan->name)); // a row may have no name
    return true;
}

int vlanShowRun(SHOW_FILE_T *show, CLIENT_HANDLE_T *clientHandle, const char *caller, PATH_ID file)
{
    return showFileRun(show, clientHandle, {caller, "show vlan", file}) == RESULT_OK ? RESULT_OK : RESULT_FAILED;
}

bool vlanShowNext(SHOW_FILE_T *show, VLAN_SHOWN_T *vlan)
{
    char line[LINE_SIZE];

    while (showFileLine(show, line, sizeof(line))) {
        if (rowParse(line + strspn(line, " \t"), vlan)) {
            showRowTaken();
            return true;
        }
    }
    return false;
}
