// paths.cpp - the table of every file that the daemon touches, and their complete paths under the current root.
//
// Complete paths are built once, when the root is chosen, so that PathGet is a look into a table from any thread.
// Before the root is chosen the system's own paths hold. A scratch folder replaces the folder of the output files only:
// their names stay, so a second program beside the daemon runs the same commands without sharing a file.
#include "runtime/paths.h"

#include <cstdio>
#include <cstring>

namespace {

enum PATH_ROLE : int {
    ROLE_FILE,
    ROLE_OUTPUT,   // of a show command: moves with the scratch folder
    ROLE_NUMBERED, // likewise, and takes a number at its end
};

struct PATH_ROW_T {
    PATH_ID id;
    PATH_ROLE role;
    const char *path;
};

constexpr PATH_ROW_T PATH_TABLE[] = {
    {PATH_RUN_LOCK, ROLE_FILE, "/run/devmgr.lock"},
    {PATH_LOG, ROLE_FILE, "/tmp/tk830.log"},
    {PATH_LOG_OLD, ROLE_FILE, "/tmp/tk830.log.old"},
    {PATH_LOG_LEVEL, ROLE_FILE, "/tmp/devmgr_log_level"},
    {PATH_REST_DB, ROLE_FILE, "/tmp/restapi_db"},
    {PATH_REST_JOURNAL, ROLE_FILE, "/tmp/restapi_db-journal"},
    {PATH_REST_DB_BAD, ROLE_FILE, "/tmp/restapi_db.bad"},
    {PATH_REST_JOURNAL_BAD, ROLE_FILE, "/tmp/restapi_db.bad-journal"},
    {PATH_REST_DELTA, ROLE_FILE, "/tmp/rest_db_api_delta.txt"},
    {PATH_LOCK_DIR, ROLE_FILE, "/tmp/api_lock"},
    {PATH_WS_PID, ROLE_FILE, "/tmp/resourse_pid.txt"},
    {PATH_FIBER_REQUEST, ROLE_FILE, "/tmp/fiberOptics_req"},
    {PATH_STATUS, ROLE_FILE, "/tmp/devmgr_status.json"},
    {PATH_VLANINFO_DB, ROLE_FILE, "/tmp/vlanInfo.db"},
    {PATH_OUI_DB, ROLE_FILE, "/usr/local/appmgr/usr/share/kelo/oui/oui.db"},
    {PATH_TEMPLATE_DIR, ROLE_FILE, "/usr/local/appmgr/usr/share/kelo/profileTemplate/"},
    {PATH_EXPORT_DIR, ROLE_FILE, "/tmp/kelo/kelo_ex/"},
    {PATH_CLOCK_CONFIG, ROLE_FILE, "/mnt/fastpath/vesta_config"},
    {PATH_MANUAL_TRUNK, ROLE_FILE, "/tmp/manual_trunk_config"},
    {PATH_SHURE_CONFIG, ROLE_FILE, "/tmp/shure_config"},
    {PATH_BOOTVAR_LOCK, ROLE_FILE, "/tmp/bootvarGet.lock"},
    {PATH_MGMT_PORT_LOCK, ROLE_FILE, "/tmp/managementPortIPv4ParametersGet.lock"},
    {PATH_SHOW_BOOTVAR, ROLE_OUTPUT, "/mnt/application/kelo/tmp/kelo_out_show_bootvar"},
    {PATH_SHOW_IP_MANAGEMENT, ROLE_OUTPUT, "/mnt/application/kelo/tmp/kelo_out_show_ip_management"},
    {PATH_SHOW_TRUNK, ROLE_NUMBERED, "/mnt/application/kelo/tmp/kelo_out_show_interfaces_switchport_trunk"},
    {PATH_SHOW_SLOT, ROLE_OUTPUT, "/mnt/application/kelo/tmp/show_slot"},
    {PATH_SHOW_PROCESS_CPU, ROLE_NUMBERED, "/mnt/application/kelo/tmp/show_process_cpu_"},
    {PATH_SHOW_ENVIRONMENT, ROLE_NUMBERED, "/mnt/application/kelo/tmp/show_environment_"},
    {PATH_SHOW_SWITCH_DETAIL, ROLE_NUMBERED, "/mnt/application/kelo/tmp/show_switch_detail_"},
    {PATH_SHOW_SWITCH, ROLE_OUTPUT, "/mnt/application/kelo/tmp/show_switch"},
    {PATH_SHOW_STACK_PORT, ROLE_OUTPUT, "/mnt/application/kelo/tmp/show_stack_port"},
    {PATH_SHOW_CLOCK_DETAIL, ROLE_OUTPUT, "/mnt/application/kelo/tmp/kelo_out_show_clock_detail"},
    {PATH_SHOW_PORT_ALL_HW, ROLE_OUTPUT, "/mnt/application/kelo/tmp/phi_show_port_all"},
    {PATH_SHOW_OPTICS, ROLE_OUTPUT, "/tmp/fo_all.txt"},
    {PATH_SHOW_OPTICS_INFO, ROLE_OUTPUT, "/tmp/fo_info_all.txt"},
    {PATH_SHOW_MAC_TABLE, ROLE_OUTPUT, "/tmp/fdb_table_fast.txt"},
    {PATH_SHOW_PORT_STATUS, ROLE_OUTPUT, "/mnt/application/kelo/tmp/show_port_status_fast"},
    {PATH_SHOW_VLAN_PORT_PHY, ROLE_OUTPUT, "/tmp/getphy_vlan_port_all.txt"},
    {PATH_SHOW_COUNTERS, ROLE_OUTPUT, "/tmp/show_interface_counters"},
    {PATH_SHOW_INTERFACE, ROLE_NUMBERED, "/tmp/interface_ethernet_output.tmp"},
    {PATH_SHOW_STACK_CAPABLE, ROLE_OUTPUT, "/tmp/stackcapable.txt"},
    {PATH_SHOW_INTERFACES_STATUS, ROLE_OUTPUT, "/mnt/application/kelo/tmp/show_interfaces_status"},
    {PATH_SHOW_FEC, ROLE_OUTPUT, "/mnt/application/kelo/tmp/show_interface_fec"},
    {PATH_SHOW_HW_PROFILE, ROLE_OUTPUT, "/mnt/application/kelo/tmp/show_interfaces_hardware_profile"},
    {PATH_SHOW_DESCRIPTIONS, ROLE_OUTPUT, "/tmp/port_desc_all.txt"},
    {PATH_SHOW_PORT_ALL, ROLE_OUTPUT, "/tmp/port_all.txt"},
    {PATH_SHOW_ADVERTISE, ROLE_OUTPUT, "/tmp/port_advertise.txt"},
    {PATH_SHOW_STORM_CONTROL, ROLE_OUTPUT, "/tmp/storm_control.txt"},
    {PATH_SHOW_VLAN_PORT, ROLE_OUTPUT, "/tmp/vlan_port_all.txt"},
    {PATH_SHOW_STP_INTERFACE, ROLE_OUTPUT, "/tmp/stp_iface_all.txt"},
    {PATH_SHOW_STP_SUMMARY, ROLE_OUTPUT, "/tmp/stp_mst_summary.txt"},
    {PATH_SHOW_DOT1AS, ROLE_OUTPUT, "/mnt/application/kelo/tmp/kelo_out_show_dot1as_summary"},
    {PATH_SHOW_IP_INTERFACE, ROLE_NUMBERED, "/mnt/application/kelo/tmp/kelo_out_show_ip_interface_brief_"},
    {PATH_SHOW_VLAN_FAST, ROLE_OUTPUT, "/tmp/vlan_show_fast.txt"},
    {PATH_SHOW_VLAN_PROFILE, ROLE_OUTPUT, "/tmp/vlan_show_profile_fast.txt"},
    {PATH_SHOW_AUTO_LAG, ROLE_NUMBERED, "/mnt/application/kelo/tmp/kelo_out_show_port-channel_auto_all_"},
    {PATH_SHOW_ACL, ROLE_NUMBERED, "/mnt/application/kelo/tmp/kelo_out_show_ip_access-list_NET-BLOCK_"},
    {PATH_SHOW_RADIUS, ROLE_OUTPUT, "/mnt/application/kelo/tmp/radius"},
    {PATH_SHOW_LOGGING, ROLE_OUTPUT, "/mnt/application/kelo/tmp/kelo_out_show_logging"},
};

constexpr bool tableInOrder()
{
    for (int i = 0; i < PATH_COUNT; i++) {
        if (PATH_TABLE[i].id != i)
            return false;
    }
    return true;
}
static_assert(sizeof(PATH_TABLE) / sizeof(PATH_TABLE[0]) == PATH_COUNT, "one row for each path");
static_assert(tableInOrder(), "a path is found by its id");

constexpr size_t NUMBER_DIGITS = 10; // of a random suffix

char completePaths[PATH_COUNT][PATH_OUTPUT_SIZE];
bool chosen = false;

const char *baseName(const char *path)
{
    return strrchr(path, '/') + 1;
}

bool scratchFits(const char *scratchDir)
{
    for (const PATH_ROW_T &row : PATH_TABLE) {
        if (row.role != ROLE_FILE &&
            strlen(scratchDir) + 1 + strlen(baseName(row.path)) + NUMBER_DIGITS >= PATH_OUTPUT_SIZE)
            return false;
    }
    return true;
}

} // namespace

int PathsInit(const char *root, const char *scratchDir)
{
    const char *prefix = root == nullptr ? "" : root;
    if (strlen(prefix) > PATH_ROOT_MAX || (scratchDir != nullptr && !scratchFits(scratchDir)))
        return -1;
    for (const PATH_ROW_T &row : PATH_TABLE) {
        char *out = completePaths[row.id];
        if (row.role != ROLE_FILE && scratchDir != nullptr)
            snprintf(out, PATH_OUTPUT_SIZE, "%s/%s", scratchDir, baseName(row.path));
        else
            snprintf(out, PATH_OUTPUT_SIZE, "%s%s", prefix, row.path);
    }
    chosen = true;
    return 0;
}

const char *PathGet(PATH_ID id)
{
    if (id < 0 || id >= PATH_COUNT)
        return "";
    return chosen ? completePaths[id] : PATH_TABLE[id].path;
}

bool PathIsNumbered(PATH_ID id)
{
    return id >= 0 && id < PATH_COUNT && PATH_TABLE[id].role == ROLE_NUMBERED;
}

void PathNumbered(PATH_ID id, int number, char *out, size_t size)
{
    snprintf(out, size, "%s%d", PathGet(id), number);
}
