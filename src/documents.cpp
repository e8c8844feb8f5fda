// documents.cpp - THE table: one row a document, in cycle order. Rows, and what their words mean, are made in
// restcache/document.h: API name, payload key, builder (with the bytes it is offered, when it fills a buffer), when
// due. What follows is not the rule: a place at the start, how it is written, and words of log lines.

#include "documents.h"

#include "collectors/feature/buffered_log.h"
#include "collectors/feature/image_info.h"
#include "collectors/feature/logging.h"
#include "collectors/feature/multicast.h"
#include "collectors/feature/multicast_groups_ex.h"
#include "collectors/feature/profile.h"
#include "collectors/feature/profile_list_ex.h"
#include "collectors/feature/radius.h"
#include "collectors/feature/schedule_list.h"
#include "collectors/feature/sw_lag_cfg.h"
#include "collectors/feature/sw_portmirroring.h"
#include "collectors/feature/sw_ptp_cfg.h"
#include "collectors/feature/sw_trunk_cfg.h"
#include "collectors/feature/swcfg_poe.h"
#include "collectors/feature/vlan_list.h"
#include "collectors/port/fiber_optics.h"
#include "collectors/port/interfaces_status.h"
#include "collectors/port/neighbor_ex.h"
#include "collectors/port/port_hardware_info.h"
#include "collectors/port/port_stats.h"
#include "collectors/port/swcfg_port.h"
#include "collectors/port/swcfg_ports_settings.h"
#include "collectors/port/swcfg_ports_status.h"
#include "collectors/system/device_health.h"
#include "collectors/system/device_time.h"
#include "collectors/system/special_interface_route.h"
#include "collectors/system/stacking.h"
#include "collectors/system/system_info.h"
#include "restcache/cycle.h"
#include "restcache/document.h"
#include "stores/port_vendor.h"

#include <iterator>

static constexpr DOCUMENT_T table[] = {
    direct("init_complete", "init_complete", BUILDER(initCompleteWrite), IN_NO_CYCLE).atStart(START_MARK),

    // at the start only
    document("profile", "profile", BUILDER(profileTemplateBuild, 30720), IN_NO_CYCLE)
        .atStart(2)
        .failing("ProfileTemplateGet failed")
        .missing("ProfileTemplateGet"),
    document("imageInfo", "imageInfo", BUILDER(getImageInfo, 4096), IN_NO_CYCLE).atStart(3),
    document("swcfg_ports_settings", "swcfg_ports_settings", BUILDER(getPortsSettings), IN_NO_CYCLE).atStart(6),
    document("port_hardware_info", "portHardwareInfo", BUILDER(portHardwareInfoBuild), IN_NO_CYCLE).atStart(7),

    // in a cycle, in this order
    direct("portStats_outbound_ex", "OutPortStatisticsEx", BUILDER(portStatsOutboundGet), EVERY_CYCLE)
        .loggedBy("get_port_outbound_statistics_ex")
        .failing("Failed,")
        .missing("pioBuildList"),
    direct("portStats_inbound_ex", "InPortStatisticsEx", BUILDER(portStatsInboundGet), EVERY_CYCLE)
        .loggedBy("get_port_inbound_statistics_ex")
        .failing("Failed,")
        .missing("pioBuildList"),
    document("radius_port_config", "radius_port_config", BUILDER(getPortAuthConfigJson), everyCycles(6, 2)),
    document("neighbor_ex", "lldpRemoteDevice", BUILDER(neighborListExChunkedPush), everyCycles(2, 0))
        .inChunks(CHUNK_NEIGHBORS),
    document("special_interface_route", "switchSpecialInterface", BUILDER(getSpecialInfInfo, 1024), everyCycles(6, 3))
        .atStart(5),
    document("sw_lag_cfg_ex", "switchConfigLagGroup", BUILDER(getLagInfoListEx), EVERY_CYCLE),
    document("device_time", "deviceTime", BUILDER(getDeviceTime, 1024), everyCycles(60, 59)).with(ROW_FIXED_ENVELOPE),
    document("system_info", "systemInfo", BUILDER(systemInfoGet), everyCycles(60, 58)).atStart(4),
    document("device_health", "deviceHealth", BUILDER(deviceHealthGet), EVERY_CYCLE),
    direct("stacking", "stacking", BUILDER(get_stacking_info), everyCycles(2, 1)),
    document("multicast_mode_ex", "multicastModeConfig", BUILDER(getMulticastModeEx), everyCycles(6, 5)),
    document("profile/list_ex", "profileList", BUILDER(profileListExGet), everyCycles(6, 4)).with(ROW_NO_PAYLOAD_OK),
    document("sw_manual_trunk_cfg", "switchConfigManualTrunk", BUILDER(manualTrunkGet), everyCycles(2, 1)),
    document("interfaces_status", "interfacesStatus", BUILDER(interfacesStatusBuild), WITH_LINK_WATCH),
    document("port_vendor_detect", "portVendorDetect", BUILDER(portVendorDetectBuild), PORT_CAME_UP),
    document("fiberOptics", "fiberOptics", BUILDER(fiberOpticsGet), ON_REQUEST)
        .atStart(8)
        .with(ROW_EMPTY_OK)
        .loggedBy("wb_fiber_optics"),
    document("sw_ptp_cfg", "switchPtpCfg", BUILDER(switchPtpModeGet), everyCycles(6, 2)),
    document("sw_auto_trunk_cfg", "switchConfigAutoTrunk", BUILDER(switchTrunkModeGet), everyCycles(2, 1)),
    document("sw_portmirroring", "devicePortMirroring", BUILDER(getPortMirroring), everyCycles(6, 1)),
    document("sw_auto_lag_cfg", "switchConfigAutoLag", BUILDER(getAutoLagCfg), everyCycles(2, 1)),
    direct("multicast_groups_ex", "multicastGroups", BUILDER(mgeWriteChunks), everyCycles(2, 1))
        .inChunks(CHUNK_MULTICAST_GROUPS),
    document("multicast_block_address", "blockAddressList", BUILDER(getDenyList), everyCycles(6, 5)),
    document("scheduleList", "poeSchedule", BUILDER(getPoeScheduleAllJson), everyCycles(6, 3)),
    document("swcfg_poe", "poePortConfig", BUILDER(getPortsPoeJson), EVERY_CYCLE),
    direct("swcfg_poe_info", "poeInfo", BUILDER(gePoeInfoJson), EVERY_CYCLE)
        .loggedBy("get_poe_info")
        .failing("Failed to get POE info,"),
    document("radius_config", "radiusConfig", BUILDER(getRadiusServerJson, 8192), everyCycles(6, 1))
        .with(ROW_SHARED_BUFFER | ROW_ALLOC_SILENT),
    document("logging", "loggingCfg", BUILDER(getLogConfigJson, 4096), everyCycles(6, 5)).with(ROW_SHARED_BUFFER),
    direct("bufferedLog", "bufferedLog", BUILDER(get_buffered_log), EVERY_CYCLE),

    // only when somebody asks for it
    document("vlan_list", "switchConfigVlan", BUILDER(switchConfigVlanList), IN_NO_CYCLE),
    document("swcfg_port", "switchPortConfig", BUILDER(fillPhyInfStatusFastEX), IN_NO_CYCLE)
        .failing("getPhyInfAllStatusFast failed")
        .missing("getPhyInfAllStatusFast"),
    document("swcfg_ports_status", "swcfg_ports_status", BUILDER(getPortStatusListFast), IN_NO_CYCLE)
        .failing("getPortStatusList failed"),
    document("sw_lag_cfg", "switchConfigLagGroup", BUILDER(getLagInfoList), IN_NO_CYCLE),
};
static_assert(std::size(table) <= DOCUMENTS_MAX, "rows beyond are left out");

void documentsRegister()
{
    documentTableSet(table, std::size(table));
}
