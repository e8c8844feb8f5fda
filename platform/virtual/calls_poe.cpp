#include "calls.h"

// Client calls about power over Ethernet and the time ranges that switch it.
//
// The readings of a port do not depend on the unit that the caller names with it: the interface number says which port.

namespace {

// The port meant by an interface number, or by a port number within the unit. Callers ask for interface numbers of
// any unit by the local one.
const VS_POE_T *schedulePort(const VS_CALL_T &call, uint32_t unit, uint32_t number)
{
    const VS_PORT_T *byIfNum = vsPort(call.state(), number);
    const VS_PORT_T *byPlace = vsPortAt(call.state(), unit, 0, number);
    if (byIfNum != nullptr && byIfNum->poe.valid && byIfNum->unit == unit) {
        return &byIfNum->poe;
    }
    if (byPlace != nullptr && byPlace->poe.valid) {
        return &byPlace->poe;
    }
    return unit == call.state().system.localUnit ? vsFind<VS_POE_T>(call.state(), number, call.now()) : nullptr;
}

const VS_TIME_RANGE_T *timeRange(const VS_CALL_T &call, const openclt_buffer_t *name)
{
    return vsRowOf(call.state().timeRanges, &VS_TIME_RANGE_T::name, vsTextIn(name));
}

openclt_time_range_date_t dateOf(const VS_TIME_RANGE_T &range, const VS_DATE_T &at, uint32_t days)
{
    openclt_time_range_date_t date = {};
    date.year = static_cast<uint16_t>(at.year);
    date.month = static_cast<uint8_t>(at.month);
    date.day = static_cast<uint8_t>(at.day);
    date.hour = static_cast<uint8_t>(at.hour);
    date.minute = static_cast<uint8_t>(at.minute);
    date.recurrence = range.recurrence;
    date.days = static_cast<uint8_t>(days);
    return date;
}

// One end of a periodic entry, 1 to their number.
int periodEnd(const VS_CALL_T &call, const openclt_buffer_t *name, uint32_t entry, bool start,
              openclt_time_range_date_t *date)
{
    const VS_TIME_RANGE_T *range = timeRange(call, name);
    if (range == nullptr || entry < 1 || entry > range->periods.size()) {
        return OPENCLT_NOT_FOUND;
    }
    const VS_PERIOD_T &period = range->periods[entry - 1];
    *date = start ? dateOf(*range, period.start, period.startDays) : dateOf(*range, period.end, period.endDay);
    return OPENCLT_OK;
}

uint32_t consumption(const VS_STATE_T &state, const VS_UNIT_T &unit, double now)
{
    return vsPoeConsumption(state, unit.unit, now);
}

size_t periodCount(const VS_TIME_RANGE_T &range)
{
    return range.periods.size();
}

} // namespace

// ---- PoE of a unit; one that cannot feed power answers too, and has 0 watts ----

READS(rpcclt_openapiPoeIsSupported, supported, &VS_UNIT_T::poeSupported);
READS(rpcclt_openapiPoePseMainConsumptionPowerGet, power, consumption);
READS(rpcclt_openapiPoePseTotalAvailablePowerGet, power, &VS_UNIT_T::poeTotal);
READS(rpcclt_openapiPoePseThresholdPowerGet, power, &VS_UNIT_T::poeThreshold);

// ---- PoE of a port ----

READS(rpcclt_openapiPoeIsValidInterface, valid, &VS_POE_T::valid);
READS(rpcclt_openapiPoePsePortAdminEnableGet, enable, &VS_POE_T::enable);
READS(rpcclt_openapiPoePsePortCurPowerLimitGet, milliwatts, &VS_POE_T::limit);
READS(rpcclt_openapiPoePsePortCurPowerPriorityGet, priority, &VS_POE_T::priority);
READS(rpcclt_openapiPoePsePortDetectionModeGet, mode, &VS_POE_T::detection);
READS(rpcclt_openapiPoePsePortPowerClassificationsGet, classification, &VS_POE_T::classification);
READS(rpcclt_openapiPoePsePortPowerUpModeGet, mode, &VS_POE_T::powerUp);
READS(rpcclt_openapiPoePsePortViolationTypeGet, type, &VS_POE_T::limitMode);

// A port that would deliver, and feeds nothing now, searches.
ANSWER(rpcclt_openapiPoePsePortDetectionStatusGet)
{
    const VS_PORT_T *port = vsPort(call.state(), args.ifNum);
    if (port == nullptr || !port->poe.valid) {
        return OPENCLT_NOT_FOUND;
    }
    bool waits = port->poe.status == VS_POE_DELIVERING && !vsPoeFeeds(call.state(), *port, call.now());
    *args.status = waits ? VS_POE_SEARCHING : port->poe.status;
    return OPENCLT_OK;
}

// A port that is switched off, has no link, or whose unit is away feeds nothing: power and current are 0, as in the
// unit's sum.
ANSWER(rpcclt_openapiPoePsePortSensorsGet)
{
    const VS_PORT_T *port = vsPort(call.state(), args.ifNum);
    if (port == nullptr || !port->poe.valid) {
        return OPENCLT_NOT_FOUND;
    }
    bool feeds = vsPoeFeeds(call.state(), *port, call.now());
    *args.power = feeds ? port->poe.power : 0;
    *args.voltage = port->poe.voltage;
    *args.current = feeds ? port->poe.current : 0;
    *args.temperature = port->poe.temperature;
    return OPENCLT_OK;
}

ANSWER(rpcclt_openapiPoePsePortTimerScheduleNameGet)
{
    const VS_POE_T *port = schedulePort(call, args.unit, args.port);
    if (port != nullptr && port->schedule.size() >= args.bufferSize) {
        return OPENCLT_FAIL;
    }
    return vsRead(call, args.name, port, &VS_POE_T::schedule);
}

// ---- time ranges ----

READS(rpcclt_openapiTimeRangeNameFirstGet, name,
      call.state().timeRanges.empty() ? nullptr : &call.state().timeRanges.front(), &VS_TIME_RANGE_T::name);
READS(rpcclt_openapiTimeRangeNameNextGet, nextName,
      vsNextRow(call.state().timeRanges, vsTextIn(args.name), &VS_TIME_RANGE_T::name), &VS_TIME_RANGE_T::name);
READS(rpcclt_openapiTimeRangeNumEntriesGet, count, timeRange(call, args.name), periodCount);
READS(rpcclt_openapiTimeRangeStatusGet, status, timeRange(call, args.name), &VS_TIME_RANGE_T::status);

ANSWER(rpcclt_openapiTimeRangePeriodicEntryStartDateAndTimeGet)
{
    return periodEnd(call, args.name, args.entry, true, args.date);
}

ANSWER(rpcclt_openapiTimeRangePeriodicEntryEndDateAndTimeGet)
{
    return periodEnd(call, args.name, args.entry, false, args.date);
}
