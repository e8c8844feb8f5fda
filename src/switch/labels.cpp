#include "switch/labels.h"

// The texts by which documents name ports and states; no platform access.

#include <cstdio>

void portLabel(const openclt_usp_t *usp, char out[PORT_LABEL_SIZE])
{
    if (usp->slot != 0)
        snprintf(out, PORT_LABEL_SIZE, "%d/%d", usp->slot, usp->port);
    else
        snprintf(out, PORT_LABEL_SIZE, "%d", usp->port);
}

void portCliName(const openclt_usp_t *usp, char out[PORT_LABEL_SIZE])
{
    snprintf(out, PORT_LABEL_SIZE, "%d/%d/%d", usp->unit, usp->slot, usp->port);
}

void lagLabel(uint32_t number, char out[PORT_LABEL_SIZE])
{
    snprintf(out, PORT_LABEL_SIZE, "lag%d", static_cast<int>(number)); // 0, -1 ... before the first LAG
}

const char *stpFwdStateText(uint32_t state)
{
    static constexpr const char *TEXTS[] = {nullptr,   "Discarding",      "Learning",         "Forwding",
                                            "Disable", "Manual forwding", "Not Participating"};
    constexpr size_t COUNT = sizeof TEXTS / sizeof TEXTS[0];
    return state >= 1 && state < COUNT ? TEXTS[state] : "Unknown";
}
