// slots.h - which module sits in which slot, and the speed class of a port derived from it.
#pragma once

#include "switch/session.h"

#include <cstddef>
#include <cstdint>

constexpr uint32_t SLOT_UNITS = 9;  // unit 0 to 8; units are numbered from 1, row 0 stays empty
constexpr uint32_t SLOT_COUNT = 13; // slot 0 to 12
constexpr size_t SLOT_MODEL_SIZE = 32;

// Model text of the module in each slot; empty for no module or unknown. Zeroed by whoever fills it.
struct SLOT_MODELS_T {
    char model[SLOT_UNITS][SLOT_COUNT][SLOT_MODEL_SIZE];
};

// Entry of a unit and slot; "" outside the table.
[[nodiscard]] const char *slotModelAt(const SLOT_MODELS_T *table, uint32_t unit, uint32_t slot);

// The models whose ports a unit has, by slot, null for none: those of the cards for a card chassis, its own in slot 0
// for any other unit, both for a modular one. Its slot 0, when that is empty in the table, is given the unit's model.
struct UNIT_PARTS_T {
    const char *model[SLOT_COUNT]; // in `table`, or `model` itself
};
[[nodiscard]] UNIT_PARTS_T unitPartsGet(SLOT_MODELS_T *table, uint32_t unit, const char *model);

// Run "show slot" and fill the table: 0, 10000 when the command fails, 10016 when its output does not open.
[[nodiscard]] int slotModelTableGet(CLIENT_HANDLE_T *clientHandle, SLOT_MODELS_T *table);

// Fill it from the output file that is there, and delete that: 0 or 10016.
[[nodiscard]] int slotModelGet(SLOT_MODELS_T *table);

// Speed class of a port (models.h), by its unit's model or, in a modular unit, by its module. The slot table of modular
// units is read once per model name and kept for the process. On 10000 *capability is untouched.
[[nodiscard]] int ifCapabilitiesGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *capability);

// 1 when the switch is of a model that offers the SMPTE profile, else 0.
[[nodiscard]] int smpteCapableModelCheck(CLIENT_HANDLE_T *clientHandle);
