// builders.cpp - the one place that knows both sides: the cache's API names and the collectors' builders.

#include "builders.h"

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
#include "restcache/builder.h"
#include "stores/port_vendor.h"

static const BUILDER_T builders[] = {
    // ports
    builderText("swcfg_port", fillPhyInfStatusFastEX),
    builderText("swcfg_ports_status", getPortStatusListFast),
    builderText("swcfg_ports_settings", getPortsSettings),
    builderText("interfaces_status", interfacesStatusBuild),
    builderWrites("neighbor_ex", neighborListExChunkedPush),
    builderText("fiberOptics", fiberOpticsGet),
    builderText("port_hardware_info", portHardwareInfoBuild),
    builderText("portStats_outbound_ex", portStatsOutboundGet),
    builderText("portStats_inbound_ex", portStatsInboundGet),
    builderText("port_vendor_detect", portVendorDetectBuild),
    // features
    builderText("vlan_list", switchConfigVlanList),
    builderText("sw_lag_cfg", getLagInfoList),
    builderText("sw_lag_cfg_ex", getLagInfoListEx),
    builderText("sw_auto_lag_cfg", getAutoLagCfg),
    builderText("sw_auto_trunk_cfg", switchTrunkModeGet),
    builderText("sw_manual_trunk_cfg", manualTrunkGet),
    builderText("swcfg_poe", getPortsPoeJson),
    builderText("swcfg_poe_info", gePoeInfoJson),
    builderText("scheduleList", getPoeScheduleAllJson),
    builderText("multicast_mode_ex", getMulticastModeEx),
    builderText("multicast_block_address", getDenyList),
    builderWrites("multicast_groups_ex", mgeWriteChunks),
    builderBuffer("profile", profileTemplateBuild),
    builderText("profile/list_ex", profileListExGet),
    builderBuffer("radius_config", getRadiusServerJson),
    builderText("radius_port_config", getPortAuthConfigJson),
    builderObject("sw_portmirroring", getPortMirroring),
    builderText("sw_ptp_cfg", switchPtpModeGet),
    builderBuffer("logging", getLogConfigJson),
    builderBuffer("imageInfo", getImageInfo),
    builderWrites("bufferedLog", get_buffered_log),
    // system
    builderText("system_info", systemInfoGet),
    builderText("device_health", deviceHealthGet),
    builderBuffer("special_interface_route", getSpecialInfInfo),
    builderBuffer("device_time", getDeviceTime),
    builderWrites("stacking", get_stacking_info),
};

void buildersRegister()
{
    builderTableSet(builders, sizeof(builders) / sizeof(builders[0]));
}
