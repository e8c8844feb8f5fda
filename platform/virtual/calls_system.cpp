#include "calls.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>

// Client calls about the session, the system as a whole, its units and cards, images and logging.
//
// Units that are away at the moment are no stack members and have no facts but the model they are configured as. The
// clock runs from the scenario's epoch, in the scenario's time zone.

namespace {

constexpr size_t CLIENT_NAME_MAX = 99;
constexpr uint32_t NAME_SIZE = 256; // of system and image file names

// Card models by type code, from 1 up; 0 is an empty slot.
constexpr const char *CARD_MODELS[] = {"QMD-K1", "QMD-K2", "QMD-K3", "QMD-K4", "QMD-K5",
                                       "QMD-K6", "QMD-K7", "QMD-K8", "QMT-K9"};

uint32_t cardCode(const std::string &model)
{
    for (uint32_t i = 0; i < std::size(CARD_MODELS); i++) {
        if (model == CARD_MODELS[i]) {
            return i + 1;
        }
    }
    return 0;
}

const VS_UNIT_T *managingUnit(const VS_CALL_T &call)
{
    for (const VS_UNIT_T &unit : call.state().units) {
        if (unit.management && vsWindowOpen(unit.present, call.now())) {
            return &unit;
        }
    }
    return nullptr;
}

std::string localClock(const VS_STATE_T &state, const VS_SYSTEM_T &system, double now)
{
    time_t local = static_cast<time_t>(state.epoch + static_cast<int64_t>(std::floor(now)) + system.utcOffset * 60);
    struct tm parts = {};
    char text[32] = "";
    (void)gmtime_r(&local, &parts); // the text stays that of the empty record for a year no scenario can name
    (void)strftime(text, sizeof text, "%Y:%m:%d %H:%M:%S", &parts); // 19 characters fit
    return text;
}

std::string zoneText(const VS_SYSTEM_T &system)
{
    int offset = std::abs(system.utcOffset);
    return vsFormat("UTC%c%d:%02d", system.utcOffset < 0 ? '-' : '+', offset / 60, offset % 60);
}

} // namespace

// ---- session ----

int openapiClientRegister(const char *clientName, openclt_handle_t *handle)
{
    VS_CALL_T call(__func__, clientName == nullptr ? std::string() : std::string(clientName));
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (clientName == nullptr || handle == nullptr || strnlen(clientName, CLIENT_NAME_MAX + 1) > CLIENT_NAME_MAX) {
        return OPENCLT_PARAM;
    }
    *handle = {};
    handle->opaque[0] = 1;
    return OPENCLT_OK;
}

int rpcclt_openapiConnectivityCheck(openclt_handle_t *handle)
{
    VS_CALL_T call(__func__);
    return call.result == OPENCLT_OK && handle == nullptr ? static_cast<int>(OPENCLT_PARAM) : call.result;
}

// ---- system ----

int rpcclt_openapiNetworkOSVersionGet(openclt_handle_t *handle, openclt_buffer_t *version)
{
    return vsSystemText(__func__, handle, version, &VS_SYSTEM_T::osVersion);
}

int rpcclt_openapiApiVersionGet(openclt_handle_t *handle, openclt_api_version_t *version)
{
    return vsSystemNumber(__func__, handle, version, [](const VS_SYSTEM_T &system) {
        const uint32_t *part = system.apiVersion;
        return openclt_api_version_t{static_cast<uint8_t>(part[0]), static_cast<uint8_t>(part[1]),
                                     static_cast<uint8_t>(part[2]), static_cast<uint8_t>(part[3])};
    });
}

int rpcclt_openapiSystemNameMaxSizeGet(openclt_handle_t *handle, uint32_t *size)
{
    return vsLimit(__func__, handle, size, NAME_SIZE);
}

int rpcclt_openapiSystemNameGet(openclt_handle_t *handle, openclt_buffer_t *name)
{
    return vsSystemText(__func__, handle, name, &VS_SYSTEM_T::name);
}

int rpcclt_openapiSystemMacAddrGet(openclt_handle_t *handle, openclt_buffer_t *mac)
{
    VS_CALL_T call(__func__);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || !vsUsable(mac)) {
        return OPENCLT_PARAM;
    }
    uint8_t bytes[6];
    return vsMacBytes(call.state().system.mac, bytes) ? vsBytesOut(bytes, sizeof bytes, mac) : OPENCLT_FAIL;
}

int rpcclt_openapiSystemRegMachineModelGet(openclt_handle_t *handle, openclt_buffer_t *model)
{
    VS_CALL_T call(__func__);
    return call.result != OPENCLT_OK ? call.result
                                     : vsTextOf(call, handle, managingUnit(call), model, &VS_UNIT_T::model);
}

int rpcclt_openapiSystemLocalUnitGet(openclt_handle_t *handle, uint32_t *unit)
{
    return vsSystemNumber(__func__, handle, unit, &VS_SYSTEM_T::localUnit);
}

int rpcclt_openapiBootCodeVersion(openclt_handle_t *handle, openclt_buffer_t *version)
{
    return vsSystemText(__func__, handle, version, &VS_SYSTEM_T::bootVersion);
}

int rpcclt_openapiClockGet(openclt_handle_t *handle, openclt_buffer_t *dateTime)
{
    return vsSystemText(__func__, handle, dateTime, localClock);
}

int rpcclt_openapiTimeZoneGet(openclt_handle_t *handle, openclt_buffer_t *zone)
{
    return vsSystemText(__func__, handle, zone, zoneText);
}

// ---- units, cards and hardware ----

int rpcclt_openapiUnitMgrStackMemberGetNext(openclt_handle_t *handle, uint32_t previousUnit, uint32_t *unit)
{
    return vsNextNumber(__func__, handle, previousUnit, unit, &VS_STATE_T::units, &VS_UNIT_T::unit,
                        [](const VS_UNIT_T &row, double now) { return vsWindowOpen(row.present, now); });
}

int rpcclt_openapiUnitMgrNumberGet(openclt_handle_t *handle, uint32_t *unit)
{
    VS_CALL_T call(__func__);
    return call.result != OPENCLT_OK ? call.result
                                     : vsNumberOf(call, handle, managingUnit(call), unit, &VS_UNIT_T::unit);
}

// What a unit is configured as is known while it is away, as in "show switch".
int rpcclt_openapiUnitMgrPreconfigModelIdGet(openclt_handle_t *handle, uint32_t unit, openclt_buffer_t *model)
{
    VS_CALL_T call(__func__, unit);
    return call.result != OPENCLT_OK ? call.result
                                     : vsTextOf(call, handle, vsUnit(call.state(), unit), model, &VS_UNIT_T::model);
}

int rpcclt_openapiCardTypeGet(openclt_handle_t *handle, uint32_t unit, uint32_t slot, uint32_t *cardType)
{
    VS_CALL_T call(__func__, unit);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_UNIT_T *owner = vsFind<VS_UNIT_T>(call.state(), unit, call.now());
    const VS_SLOT_T *found = nullptr;
    if (owner != nullptr) {
        auto at = std::find_if(owner->slots.begin(), owner->slots.end(),
                               [slot](const VS_SLOT_T &row) { return row.slot == slot; });
        found = at == owner->slots.end() ? nullptr : &*at;
    }
    if (found != nullptr && !found->model.empty() && cardCode(found->model) == 0) {
        return OPENCLT_FAIL; // a card that the platform has no code for
    }
    return vsNumberOf(call, handle, found, cardType, [](const VS_SLOT_T &row) { return cardCode(row.model); });
}

int rpcclt_openapiCardSupportedCardModelIdGet(openclt_handle_t *handle, uint32_t cardType, openclt_buffer_t *model)
{
    VS_CALL_T call(__func__, cardType);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const char *const *found = nullptr;
    if (cardType >= 1 && cardType <= std::size(CARD_MODELS)) {
        found = &CARD_MODELS[cardType - 1];
    }
    return vsTextOf(call, handle, found, model, [](const char *text) { return std::string(text); });
}

int rpcclt_openapiBoxsFanControlModeGet(openclt_handle_t *handle, uint32_t *mode)
{
    return vsSystemNumber(__func__, handle, mode, &VS_SYSTEM_T::fanMode);
}

// ---- images and logging ----

int rpcclt_openapiImageFileNameMaxLengthGet(openclt_handle_t *handle, uint32_t *length)
{
    return vsLimit(__func__, handle, length, NAME_SIZE);
}

int rpcclt_openapiImageNamesGet(openclt_handle_t *handle, uint32_t unit, openclt_buffer_t *active,
                                openclt_buffer_t *backup, openclt_buffer_t *activated)
{
    VS_CALL_T call(__func__, unit);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || !vsUsable(active) || !vsUsable(backup) || !vsUsable(activated)) {
        return OPENCLT_PARAM;
    }
    const VS_UNIT_T *owner = vsFind<VS_UNIT_T>(call.state(), unit, call.now());
    if (owner == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    const VS_SYSTEM_T &system = call.state().system;
    // Names given for the system are those of the managing unit.
    auto nameOf = [owner](const std::string &named, const std::string &column) {
        return owner->management && !named.empty() ? named : column;
    };
    int results[] = {vsTextOut(nameOf(system.activeImage, owner->images[0]), active),
                     vsTextOut(nameOf(system.backupImage, owner->images[1]), backup),
                     vsTextOut(nameOf(system.activatedImage, owner->images[3]), activated)};
    return *std::min_element(std::begin(results), std::end(results));
}

int rpcclt_openapiImageLabelsGet(openclt_handle_t *handle, openclt_buffer_t *active, openclt_buffer_t *backup)
{
    VS_CALL_T call(__func__);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || !vsUsable(active) || !vsUsable(backup)) {
        return OPENCLT_PARAM;
    }
    int result = vsTextOut(call.state().system.activeLabel, active);
    return result != OPENCLT_OK ? result : vsTextOut(call.state().system.backupLabel, backup);
}

int rpcclt_openapiBufferedLogEntryNextGet(openclt_handle_t *handle, uint32_t *index, openclt_buffer_t *entry)
{
    // The cursor counts down from 0 and wraps: a caller that takes it for a rising number shows one entry.
    const uint32_t at = index == nullptr ? 0 : 0U - *index;
    VS_CALL_T call(__func__, at);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || index == nullptr || !vsUsable(entry)) {
        return OPENCLT_PARAM;
    }
    const std::vector<std::string> &log = call.state().log;
    if (at >= log.size()) {
        return OPENCLT_NOT_FOUND;
    }
    int result = vsTextOut(log[at], entry);
    *index -= result == OPENCLT_OK ? 1 : 0;
    return result;
}

int rpcclt_openapiCliCmdLoggingModeGet(openclt_handle_t *handle, uint32_t *mode)
{
    return vsSystemNumber(__func__, handle, mode, &VS_SYSTEM_T::commandLogging);
}

int rpcclt_openapiConsoleLoggingModeGet(openclt_handle_t *handle, uint32_t *mode)
{
    return vsSystemNumber(__func__, handle, mode, &VS_SYSTEM_T::consoleLogging);
}

int rpcclt_openapiConsoleLoggingSeverityGet(openclt_handle_t *handle, uint32_t *severity)
{
    return vsSystemNumber(__func__, handle, severity, &VS_SYSTEM_T::consoleSeverity);
}
