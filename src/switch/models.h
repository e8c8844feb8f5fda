// models.h - what is known of each model: front ports, port numbers, speed classes, and how high-speed ports fan out.
//
// Three constant tables; no platform access. Model names are compared exactly.
#pragma once

#include <cstddef>
#include <cstdint>

// Models that differ in kind from the others.
inline constexpr char MODEL_CARD_CHASSIS[] = "TK700-S13"; // cards in slots 1 to 12, nothing in slot 0
inline constexpr char MODEL_MODULAR[] = "TK830-T03";      // the unit's own ports in slot 0, one card in slot 1
inline constexpr char MODEL_FANOUT_CARD[] = "QMD-K1";     // of the card chassis; its 40G ports fan out

// Whether a card's ports are shown as SFP whatever is in them.
[[nodiscard]] bool modelIsSfpCard(const char *model);

// Speed class of a port by model and port number: 3 gigabit, 4 multi-gigabit, 6 10G, 8 25G, 9 40G, 10 50G, 11 100G, 0
// for a number without a port of its own. Preset to 3; 10000 when the model or the port is not in the table.
[[nodiscard]] int modelPortCapabilityGet(const char *model, uint32_t port, uint32_t *capability);

// Every port number a model uses, fan-out sub-ports included; and its front ports only. 10000 when the model is
// unknown.
[[nodiscard]] int modelPortCountGet(const char *model, uint32_t *count);
[[nodiscard]] int modelPhysicalPortCountGet(const char *model, uint32_t *count);

// Modes in which a front port can run, for example "4x25G,1x100G", cut to size-1. 10000 when model or port is not
// listed.
[[nodiscard]] int modelFanoutModesGet(const char *model, uint32_t port, char *text, size_t size);

// Front port to which a sub-port belongs, preset to 0 (the last matching range wins); 10000 when no range holds the
// port.
[[nodiscard]] int modelFanoutRootGet(const char *model, uint32_t port, uint32_t *root);

// The same, and whether the port is the first sub-port of a matching range.
[[nodiscard]] int modelFanoutRootFirstGet(const char *model, uint32_t port, uint32_t *root, uint8_t *isFirst);
