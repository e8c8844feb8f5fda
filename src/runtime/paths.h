// paths.h - every file that the daemon touches, in one table.
//
// All paths stand under one root (none on a switch, a fresh directory on a workstation). Output files of show commands
// can be moved into a scratch folder of their own, for a second program that runs beside the daemon.
#pragma once

#include <cstddef>

enum PATH_ID : int {
    PATH_RUN_LOCK, // held by the one daemon of a root
    // files shared with other programs
    PATH_LOG,          // log file
    PATH_LOG_OLD,      // its old generation
    PATH_LOG_LEVEL,    // level file
    PATH_REST_DB,      // REST cache
    PATH_REST_JOURNAL, // its journal, when another program keeps one
    PATH_REST_DB_BAD,  // the last damaged one
    PATH_REST_JOURNAL_BAD,
    PATH_REST_DELTA,    // change list
    PATH_LOCK_DIR,      // lock files
    PATH_WS_PID,        // process and thread id of the websocket server
    PATH_FIBER_REQUEST, // fiber-optics request stamp
    PATH_STATUS,        // the daemon's account of itself
    PATH_VLANINFO_DB,   // VLAN profiles
    PATH_OUI_DB,        // vendor OUIs
    PATH_TEMPLATE_DIR,  // profile templates, ends with '/'
    PATH_EXPORT_DIR,    // exported profiles, ends with '/'
    PATH_CLOCK_CONFIG,  // persisted clock configuration
    PATH_MANUAL_TRUNK,  // manual trunk ports
    PATH_SHURE_CONFIG,
    PATH_BOOTVAR_LOCK,
    PATH_MGMT_PORT_LOCK,
    // output files of show commands; those marked N take a number at the end
    PATH_SHOW_BOOTVAR,
    PATH_SHOW_IP_MANAGEMENT,
    PATH_SHOW_TRUNK, // N, or none for the auto-trunk reader
    PATH_SHOW_SLOT,
    PATH_SHOW_PROCESS_CPU,   // N
    PATH_SHOW_ENVIRONMENT,   // N
    PATH_SHOW_SWITCH_DETAIL, // N
    PATH_SHOW_SWITCH,
    PATH_SHOW_STACK_PORT,
    PATH_SHOW_CLOCK_DETAIL,
    PATH_SHOW_PORT_ALL_HW,
    PATH_SHOW_OPTICS,
    PATH_SHOW_OPTICS_INFO,
    PATH_SHOW_MAC_TABLE,
    PATH_SHOW_PORT_STATUS,
    PATH_SHOW_VLAN_PORT_PHY,
    PATH_SHOW_COUNTERS,
    PATH_SHOW_INTERFACE, // N
    PATH_SHOW_STACK_CAPABLE,
    PATH_SHOW_INTERFACES_STATUS,
    PATH_SHOW_FEC,
    PATH_SHOW_HW_PROFILE,
    PATH_SHOW_DESCRIPTIONS,
    PATH_SHOW_PORT_ALL,
    PATH_SHOW_ADVERTISE,
    PATH_SHOW_STORM_CONTROL,
    PATH_SHOW_VLAN_PORT,
    PATH_SHOW_STP_INTERFACE,
    PATH_SHOW_STP_SUMMARY,
    PATH_SHOW_DOT1AS,
    PATH_SHOW_IP_INTERFACE, // N
    PATH_SHOW_VLAN_FAST,
    PATH_SHOW_VLAN_PROFILE,
    PATH_SHOW_AUTO_LAG, // N
    PATH_SHOW_ACL,      // N
    PATH_SHOW_RADIUS,
    PATH_SHOW_LOGGING,
    PATH_COUNT
};

// Characters an output path may have, terminator included; longer ones are cut.
constexpr size_t PATH_OUTPUT_SIZE = 96;

// Longest root, so that every output path fits PATH_OUTPUT_SIZE with a number at its end.
constexpr size_t PATH_ROOT_MAX = 18;

// Choose the root (null or "": the system's own) and the scratch folder of the output files (null: where they belong).
// Both are copied. -1 when the root is longer than PATH_ROOT_MAX or a scratch path does not fit; nothing changed then.
[[nodiscard]] int PathsInit(const char *root, const char *scratchDir);

// Complete path, valid until the next PathsInit.
[[nodiscard]] const char *PathGet(PATH_ID id);

// Whether a path is that of an output file which takes a number at its end.
[[nodiscard]] bool PathIsNumbered(PATH_ID id);

// Path with a decimal number at its end, into a buffer (cut when it does not fit).
void PathNumbered(PATH_ID id, int number, char *out, size_t size);
