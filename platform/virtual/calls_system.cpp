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

openclt_api_version_t apiVersion(const VS_SYSTEM_T &system)
{
    const uint32_t *part = system.apiVersion;
    return {static_cast<uint8_t>(part[0]), static_cast<uint8_t>(part[1]), static_cast<uint8_t>(part[2]),
            static_cast<uint8_t>(part[3])};
}

uint32_t slotCode(const VS_SLOT_T &slot)
{
    return cardCode(slot.model);
}

} // namespace

// ---- session ----

ANSWER(openapiClientRegister)
{
    if (strnlen(args.clientName, CLIENT_NAME_MAX + 1) > CLIENT_NAME_MAX) {
        return OPENCLT_PARAM;
    }
    *args.handle = {};
    args.handle->opaque[0] = 1;
    return OPENCLT_OK;
}

ANSWER(rpcclt_openapiConnectivityCheck)
{
    return OPENCLT_OK;
}

// ---- system ----

READS(rpcclt_openapiNetworkOSVersionGet, version, &VS_SYSTEM_T::osVersion);
READS(rpcclt_openapiApiVersionGet, version, apiVersion);
READS(rpcclt_openapiSystemNameMaxSizeGet, size, &NAME_SIZE, vsItself);
READS(rpcclt_openapiSystemNameGet, name, &VS_SYSTEM_T::name);

ANSWER(rpcclt_openapiSystemMacAddrGet)
{
    uint8_t bytes[VS_MAC_BYTES];
    return vsMacBytes(call.state().system.mac, bytes) ? vsBytesOut(bytes, sizeof bytes, args.mac) : OPENCLT_FAIL;
}

READS(rpcclt_openapiSystemRegMachineModelGet, model, managingUnit(call), &VS_UNIT_T::model);
READS(rpcclt_openapiSystemLocalUnitGet, unit, &VS_SYSTEM_T::localUnit);
READS(rpcclt_openapiBootCodeVersion, version, &VS_SYSTEM_T::bootVersion);
READS(rpcclt_openapiClockGet, dateTime, localClock);
READS(rpcclt_openapiTimeZoneGet, zone, zoneText);

// ---- units, cards and hardware ----

READS(rpcclt_openapiUnitMgrStackMemberGetNext, unit,
      vsNextRow(call.state().units, args.previousUnit, &VS_UNIT_T::unit,
                [&](const VS_UNIT_T &row) { return vsWindowOpen(row.present, call.now()); }),
      &VS_UNIT_T::unit);
READS(rpcclt_openapiUnitMgrNumberGet, unit, managingUnit(call), &VS_UNIT_T::unit);
// What a unit is configured as is known while it is away, as in "show switch".
READS(rpcclt_openapiUnitMgrPreconfigModelIdGet, model, vsUnit(call.state(), args.unit), &VS_UNIT_T::model);

ANSWER(rpcclt_openapiCardTypeGet)
{
    const VS_UNIT_T *owner = vsFind<VS_UNIT_T>(call.state(), args.unit, call.now());
    const VS_SLOT_T *slot = owner != nullptr ? vsRowOf(owner->slots, &VS_SLOT_T::slot, args.slot) : nullptr;
    if (slot != nullptr && !slot->model.empty() && cardCode(slot->model) == 0) {
        return OPENCLT_FAIL; // a card that the platform has no code for
    }
    return vsRead(call, args.cardType, slot, slotCode);
}

READS(rpcclt_openapiCardSupportedCardModelIdGet, model,
      args.cardType - 1 < std::size(CARD_MODELS) ? &CARD_MODELS[args.cardType - 1] : nullptr, vsItself);
READS(rpcclt_openapiBoxsFanControlModeGet, mode, &VS_SYSTEM_T::fanMode);

// ---- images and logging ----

READS(rpcclt_openapiImageFileNameMaxLengthGet, length, &NAME_SIZE, vsItself);

ANSWER(rpcclt_openapiImageNamesGet)
{
    const VS_UNIT_T *owner = vsFind<VS_UNIT_T>(call.state(), args.unit, call.now());
    if (owner == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    const VS_SYSTEM_T &system = call.state().system;
    // Names given for the system are those of the managing unit.
    auto nameOf = [owner](const std::string &named, const std::string &column) {
        return owner->management && !named.empty() ? named : column;
    };
    int results[] = {vsTextOut(nameOf(system.activeImage, owner->images[0]), args.active),
                     vsTextOut(nameOf(system.backupImage, owner->images[1]), args.backup),
                     vsTextOut(nameOf(system.activatedImage, owner->images[3]), args.activated)};
    return *std::min_element(std::begin(results), std::end(results));
}

ANSWER(rpcclt_openapiImageLabelsGet)
{
    int result = vsTextOut(call.state().system.activeLabel, args.active);
    return result != OPENCLT_OK ? result : vsTextOut(call.state().system.backupLabel, args.backup);
}

ANSWER(rpcclt_openapiBufferedLogEntryNextGet)
{
    // The cursor counts down from 0 and wraps: a caller that takes it for a rising number shows one entry.
    const std::vector<std::string> &log = call.state().log;
    const uint32_t at = 0U - *args.index;
    if (at >= log.size()) {
        return OPENCLT_NOT_FOUND;
    }
    int result = vsTextOut(log[at], args.entry);
    *args.index -= result == OPENCLT_OK ? 1 : 0;
    return result;
}

READS(rpcclt_openapiCliCmdLoggingModeGet, mode, &VS_SYSTEM_T::commandLogging);
READS(rpcclt_openapiConsoleLoggingModeGet, mode, &VS_SYSTEM_T::consoleLogging);
READS(rpcclt_openapiConsoleLoggingSeverityGet, severity, &VS_SYSTEM_T::consoleSeverity);
