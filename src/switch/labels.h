// labels.h - the texts by which documents name ports and states.
#pragma once

#include "switch/session.h"

#include <cstddef>
#include <cstdint>

constexpr size_t PORT_LABEL_SIZE = 16;

// Short form: "slot/port" when the slot is not 0, else "port".
void portLabel(const openclt_usp_t *usp, char out[PORT_LABEL_SIZE]);

// CLI form "unit/slot/port".
void portCliName(const openclt_usp_t *usp, char out[PORT_LABEL_SIZE]);

// "lagN".
void lagLabel(uint32_t number, char out[PORT_LABEL_SIZE]);

// Spanning-tree forwarding state of the platform (openclt.h) as the documents write it; "Unknown" for other values.
[[nodiscard]] const char *stpFwdStateText(uint32_t state);
