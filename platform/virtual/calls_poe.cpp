#include "calls.h"

// Client calls about power over Ethernet and the time ranges that switch it.
//
// The readings of a port do not depend on the unit that the caller names with it: the interface number says which port.

namespace {

const VS_PORT_T *poePort(const VS_CALL_T &call, uint32_t ifNum)
{
    const VS_PORT_T *port = vsPort(call.state(), ifNum);
    return port != nullptr && port->poe.valid ? port : nullptr;
}

// A number of a PoE port; a port that cannot feed power has none.
template <typename READ> int poeNumber(const char *name, void *handle, uint32_t ifNum, uint32_t *value, READ read)
{
    VS_CALL_T call(name, ifNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_PORT_T *port = poePort(call, ifNum);
    return vsNumberOf(call, handle, port == nullptr ? nullptr : &port->poe, value, read);
}

// The port meant by an interface number, or by a port number within the unit. Callers ask for interface numbers of
// any unit by the local one.
const VS_PORT_T *schedulePort(const VS_CALL_T &call, uint32_t unit, uint32_t number)
{
    const VS_PORT_T *byIfNum = poePort(call, number);
    if (byIfNum != nullptr && byIfNum->unit == unit) {
        return byIfNum;
    }
    const VS_PORT_T *byPlace = vsPortAt(call.state(), unit, 0, number);
    if (byPlace != nullptr && byPlace->poe.valid) {
        return byPlace;
    }
    return unit == call.state().system.localUnit ? byIfNum : nullptr;
}

// The time range of a name descriptor; null when there is none.
const VS_TIME_RANGE_T *timeRange(const VS_CALL_T &call, const std::string &name)
{
    const std::vector<VS_TIME_RANGE_T> &ranges = call.state().timeRanges;
    auto found =
        std::find_if(ranges.begin(), ranges.end(), [&](const VS_TIME_RANGE_T &row) { return row.name == name; });
    return found == ranges.end() ? nullptr : &*found;
}

std::string nameIn(const openclt_buffer_t *name)
{
    return vsUsable(name) ? vsTextIn(name) : std::string();
}

template <typename READ>
int rangeNumber(const char *call_name, void *handle, openclt_buffer_t *name, uint32_t *value, READ read)
{
    std::string text = nameIn(name);
    VS_CALL_T call(call_name, text);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    return vsUsable(name) ? vsNumberOf(call, handle, timeRange(call, text), value, read)
                          : static_cast<int>(OPENCLT_PARAM);
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
int periodEnd(const char *call_name, void *handle, openclt_buffer_t *name, uint32_t entry,
              openclt_time_range_date_t *date, bool start)
{
    std::string text = nameIn(name);
    VS_CALL_T call(call_name, text);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (!vsUsable(name)) {
        return OPENCLT_PARAM;
    }
    const VS_TIME_RANGE_T *range = timeRange(call, text);
    const VS_PERIOD_T *period = nullptr;
    if (range != nullptr && entry >= 1 && entry <= range->periods.size()) {
        period = &range->periods[entry - 1];
    }
    return vsNumberOf(call, handle, period, date, [&](const VS_PERIOD_T &row) {
        return start ? dateOf(*range, row.start, row.startDays) : dateOf(*range, row.end, row.endDay);
    });
}

} // namespace

// ---- PoE of a unit; one that cannot feed power answers too, and has 0 watts ----

int rpcclt_openapiPoeIsSupported(openclt_handle_t *handle, uint32_t unit, uint32_t *supported)
{
    return vsNumberGet<VS_UNIT_T>(__func__, handle, unit, supported, &VS_UNIT_T::poeSupported);
}

int rpcclt_openapiPoePseMainConsumptionPowerGet(openclt_handle_t *handle, uint32_t unit, uint32_t *power)
{
    return vsNumberGet<VS_UNIT_T>(__func__, handle, unit, power,
                                  [](const VS_STATE_T &state, const VS_UNIT_T &row, double now) {
                                      return vsPoeConsumption(state, row.unit, now);
                                  });
}

int rpcclt_openapiPoePseTotalAvailablePowerGet(openclt_handle_t *handle, uint32_t unit, uint32_t *power)
{
    return vsNumberGet<VS_UNIT_T>(__func__, handle, unit, power, &VS_UNIT_T::poeTotal);
}

int rpcclt_openapiPoePseThresholdPowerGet(openclt_handle_t *handle, uint32_t unit, uint32_t *power)
{
    return vsNumberGet<VS_UNIT_T>(__func__, handle, unit, power, &VS_UNIT_T::poeThreshold);
}

// ---- PoE of a port ----

int rpcclt_openapiPoeIsValidInterface(openclt_handle_t *handle, uint32_t, uint32_t ifNum, uint32_t *valid)
{
    return poeNumber(__func__, handle, ifNum, valid, &VS_POE_T::valid);
}

int rpcclt_openapiPoePsePortAdminEnableGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *enable)
{
    return poeNumber(__func__, handle, ifNum, enable, &VS_POE_T::enable);
}

int rpcclt_openapiPoePsePortCurPowerLimitGet(openclt_handle_t *handle, uint32_t, uint32_t ifNum, uint32_t *milliwatts)
{
    return poeNumber(__func__, handle, ifNum, milliwatts, &VS_POE_T::limit);
}

int rpcclt_openapiPoePsePortCurPowerPriorityGet(openclt_handle_t *handle, uint32_t, uint32_t ifNum, uint32_t *priority)
{
    return poeNumber(__func__, handle, ifNum, priority, &VS_POE_T::priority);
}

int rpcclt_openapiPoePsePortDetectionModeGet(openclt_handle_t *handle, uint32_t, uint32_t ifNum, uint32_t *mode)
{
    return poeNumber(__func__, handle, ifNum, mode, &VS_POE_T::detection);
}

int rpcclt_openapiPoePsePortDetectionStatusGet(openclt_handle_t *handle, uint32_t, uint32_t ifNum, uint32_t *status)
{
    return poeNumber(__func__, handle, ifNum, status, &VS_POE_T::status);
}

int rpcclt_openapiPoePsePortPowerClassificationsGet(openclt_handle_t *handle, uint32_t, uint32_t ifNum,
                                                    uint32_t *classification)
{
    return poeNumber(__func__, handle, ifNum, classification, &VS_POE_T::classification);
}

int rpcclt_openapiPoePsePortPowerUpModeGet(openclt_handle_t *handle, uint32_t, uint32_t ifNum, uint32_t *mode)
{
    return poeNumber(__func__, handle, ifNum, mode, &VS_POE_T::powerUp);
}

int rpcclt_openapiPoePsePortViolationTypeGet(openclt_handle_t *handle, uint32_t, uint32_t ifNum, uint32_t *type)
{
    return poeNumber(__func__, handle, ifNum, type, &VS_POE_T::limitMode);
}

// A port that is switched off, or whose unit is away, feeds nothing: power and current are 0, as in the unit's sum.
int rpcclt_openapiPoePsePortSensorsGet(openclt_handle_t *handle, uint32_t, uint32_t ifNum, uint32_t *power,
                                       uint32_t *voltage, uint32_t *current, uint32_t *temperature)
{
    VS_CALL_T call(__func__, ifNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || power == nullptr || voltage == nullptr || current == nullptr || temperature == nullptr) {
        return OPENCLT_PARAM;
    }
    const VS_PORT_T *port = poePort(call, ifNum);
    if (port == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    bool feeds = port->poe.enable && vsFind<VS_UNIT_T>(call.state(), port->unit, call.now()) != nullptr;
    *power = feeds ? port->poe.power : 0;
    *voltage = port->poe.voltage;
    *current = feeds ? port->poe.current : 0;
    *temperature = port->poe.temperature;
    return OPENCLT_OK;
}

int rpcclt_openapiPoePsePortTimerScheduleNameGet(openclt_handle_t *handle, uint32_t unit, uint32_t port,
                                                 openclt_buffer_t *name, uint32_t bufferSize)
{
    VS_CALL_T call(__func__, port);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_PORT_T *found = schedulePort(call, unit, port);
    if (found != nullptr && found->poe.schedule.size() >= bufferSize) {
        return OPENCLT_FAIL;
    }
    return vsTextOf(call, handle, found == nullptr ? nullptr : &found->poe, name, &VS_POE_T::schedule);
}

// ---- time ranges ----

int rpcclt_openapiTimeRangeNameFirstGet(openclt_handle_t *handle, openclt_buffer_t *name)
{
    VS_CALL_T call(__func__);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const std::vector<VS_TIME_RANGE_T> &ranges = call.state().timeRanges;
    return vsTextOf(call, handle, ranges.empty() ? nullptr : &ranges.front(), name, &VS_TIME_RANGE_T::name);
}

int rpcclt_openapiTimeRangeNameNextGet(openclt_handle_t *handle, openclt_buffer_t *name, openclt_buffer_t *nextName)
{
    std::string text = nameIn(name);
    VS_CALL_T call(__func__, text);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (!vsUsable(name)) {
        return OPENCLT_PARAM;
    }
    const VS_TIME_RANGE_T *next =
        vsNextRow(call.state().timeRanges, text, &VS_TIME_RANGE_T::name, [](const VS_TIME_RANGE_T &) { return true; });
    return vsTextOf(call, handle, next, nextName, &VS_TIME_RANGE_T::name);
}

int rpcclt_openapiTimeRangeNumEntriesGet(openclt_handle_t *handle, openclt_buffer_t *name, uint32_t *count)
{
    return rangeNumber(__func__, handle, name, count,
                       [](const VS_TIME_RANGE_T &range) { return range.periods.size(); });
}

int rpcclt_openapiTimeRangeStatusGet(openclt_handle_t *handle, openclt_buffer_t *name, uint32_t *status)
{
    return rangeNumber(__func__, handle, name, status, &VS_TIME_RANGE_T::status);
}

int rpcclt_openapiTimeRangePeriodicEntryStartDateAndTimeGet(openclt_handle_t *handle, openclt_buffer_t *name,
                                                            uint32_t entry, openclt_time_range_date_t *date)
{
    return periodEnd(__func__, handle, name, entry, date, true);
}

int rpcclt_openapiTimeRangePeriodicEntryEndDateAndTimeGet(openclt_handle_t *handle, openclt_buffer_t *name,
                                                          uint32_t entry, openclt_time_range_date_t *date)
{
    return periodEnd(__func__, handle, name, entry, date, false);
}
