// paths.cpp - the table of every file that the daemon touches, and their complete paths under the current root.
//
// Complete paths are built once, when the root is chosen, so that PathGet is a look into a table from any thread.
// Before the root is chosen the system's own paths hold. A scratch folder replaces the folder of the output files only:
// their names stay, so a second program beside the daemon runs the same commands without sharing a file.
#include "runtime/paths.h"

#include <cstdio>
#include <cstring>

namespace {

struct PATH_ROW_T {
    PATH_ID id;
    bool scratch; // output of a show command: moves with the scratch folder
    const char *path;
};

constexpr PATH_ROW_T PATH_TABLE[] = {
    {PATH_LOG, false, "/tmp/tk830.log"},
    {PATH_LOG_OLD, false, "/tmp/tk830.log.old"},
    {PATH_LOG_LEVEL, false, "/tmp/devmgr_log_level"},
    {PATH_REST_DB, false, "/tmp/restapi_db"},
    {PATH_REST_JOURNAL, false, "/tmp/restapi_db-journal"},
    {PATH_REST_DB_BAD, false, "/tmp/restapi_db.bad"},
    {PATH_REST_JOURNAL_BAD, false, "/tmp/restapi_db.bad-journal"},
    {PATH_REST_DELTA, false, "/tmp/rest_db_api_delta.txt"},
    {PATH_LOCK_DIR, false, "/tmp/api_lock"},
    {PATH_WS_PID, false, "/tmp/resourse_pid.txt"},
    {PATH_FIBER_REQUEST, false, "/tmp/fiberOptics_req"},
    {PATH_VLANINFO_DB, false, "/tmp/vlanInfo.db"},
    {PATH_OUI_DB, false, "/usr/local/appmgr/usr/share/kelo/oui/oui.db"},
    {PATH_TEMPLATE_DIR, false, "/usr/local/appmgr/usr/share/kelo/profileTemplate/"},
    {PATH_EXPORT_DIR, false, "/tmp/kelo/kelo_ex/"},
    {PATH_CLOCK_CONFIG, false, "/mnt/fastpath/vesta_config"},
    {PATH_MANUAL_TRUNK, false, "/tmp/manual_trunk_config"},
    {PATH_SHURE_CONFIG, false, "/tmp/shure_config"},
    {PATH_BOOTVAR_LOCK, false, "/tmp/bootvarGet.lock"},
    {PATH_MGMT_PORT_LOCK, false, "/tmp/managementPortIPv4ParametersGet.lock"},
    {PATH_SHOW_BOOTVAR, true, "/mnt/application/kelo/tmp/kelo_out_show_bootvar"},
    {PATH_SHOW_IP_MANAGEMENT, true, "/mnt/application/kelo/tmp/kelo_out_show_ip_management"},
    {PATH_SHOW_TRUNK, true, "/mnt/application/kelo/tmp/kelo_out_show_interfaces_switchport_trunk"},
    {PATH_SHOW_SLOT, true, "/mnt/application/kelo/tmp/show_slot"},
    {PATH_SHOW_PROCESS_CPU, true, "/mnt/application/kelo/tmp/show_process_cpu_"},
    {PATH_SHOW_ENVIRONMENT, true, "/mnt/application/kelo/tmp/show_environment_"},
    {PATH_SHOW_SWITCH_DETAIL, true, "/mnt/application/kelo/tmp/show_switch_detail_"},
    {PATH_SHOW_SWITCH, true, "/mnt/application/kelo/tmp/show_switch"},
    {PATH_SHOW_STACK_PORT, true, "/mnt/application/kelo/tmp/show_stack_port"},
    {PATH_SHOW_CLOCK_DETAIL, true, "/mnt/application/kelo/tmp/kelo_out_show_clock_detail"},
    {PATH_SHOW_PORT_ALL_HW, true, "/mnt/application/kelo/tmp/phi_show_port_all"},
    {PATH_SHOW_OPTICS, true, "/tmp/fo_all.txt"},
    {PATH_SHOW_OPTICS_INFO, true, "/tmp/fo_info_all.txt"},
    {PATH_SHOW_MAC_TABLE, true, "/tmp/fdb_table_fast.txt"},
    {PATH_SHOW_PORT_STATUS, true, "/mnt/application/kelo/tmp/show_port_status_fast"},
    {PATH_SHOW_VLAN_PORT_PHY, true, "/tmp/getphy_vlan_port_all.txt"},
    {PATH_SHOW_COUNTERS, true, "/tmp/show_interface_counters"},
    {PATH_SHOW_INTERFACE, true, "/tmp/interface_ethernet_output.tmp"},
    {PATH_SHOW_STACK_CAPABLE, true, "/tmp/stackcapable.txt"},
    {PATH_SHOW_INTERFACES_STATUS, true, "/mnt/application/kelo/tmp/show_interfaces_status"},
    {PATH_SHOW_FEC, true, "/mnt/application/kelo/tmp/show_interface_fec"},
    {PATH_SHOW_HW_PROFILE, true, "/mnt/application/kelo/tmp/show_interfaces_hardware_profile"},
    {PATH_SHOW_DESCRIPTIONS, true, "/tmp/port_desc_all.txt"},
    {PATH_SHOW_PORT_ALL, true, "/tmp/port_all.txt"},
    {PATH_SHOW_ADVERTISE, true, "/tmp/port_advertise.txt"},
    {PATH_SHOW_STORM_CONTROL, true, "/tmp/storm_control.txt"},
    {PATH_SHOW_VLAN_PORT, true, "/tmp/vlan_port_all.txt"},
    {PATH_SHOW_STP_INTERFACE, true, "/tmp/stp_iface_all.txt"},
    {PATH_SHOW_STP_SUMMARY, true, "/tmp/stp_mst_summary.txt"},
    {PATH_SHOW_DOT1AS, true, "/mnt/application/kelo/tmp/kelo_out_show_dot1as_summary"},
    {PATH_SHOW_IP_INTERFACE, true, "/mnt/application/kelo/tmp/kelo_out_show_ip_interface_brief_"},
    {PATH_SHOW_VLAN_FAST, true, "/tmp/vlan_show_fast.txt"},
    {PATH_SHOW_VLAN_PROFILE, true, "/tmp/vlan_show_profile_fast.txt"},
    {PATH_SHOW_AUTO_LAG, true, "/mnt/application/kelo/tmp/kelo_out_show_port-channel_auto_all_"},
    {PATH_SHOW_ACL, true, "/mnt/application/kelo/tmp/kelo_out_show_ip_access-list_NET-BLOCK_"},
    {PATH_SHOW_RADIUS, true, "/mnt/application/kelo/tmp/radius"},
    {PATH_SHOW_LOGGING, true, "/mnt/application/kelo/tmp/kelo_out_show_logging"},
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
        if (row.scratch && strlen(scratchDir) + 1 + strlen(baseName(row.path)) + NUMBER_DIGITS >= PATH_OUTPUT_SIZE)
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
        if (row.scratch && scratchDir != nullptr)
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

void PathNumbered(PATH_ID id, int number, char *out, size_t size)
{
    snprintf(out, size, "%s%d", PathGet(id), number);
}
