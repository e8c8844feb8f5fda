// builders.cpp - the one place that knows both sides: the cache's API names and the collectors' builders.

#include "builders.h"

#include "collectors/port/port_statistics.h"
#include "collectors/system/device_health.h"
#include "collectors/system/device_time.h"
#include "collectors/system/special_interface.h"
#include "collectors/system/stacking.h"
#include "collectors/system/system_info.h"
#include "restcache/builder.h"

static const BUILDER_T builders[] = {
    // ports
    builderText("portStats_outbound_ex", portStatsOutboundGet),
    builderText("portStats_inbound_ex", portStatsInboundGet),
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
