// neighbor_ex_rows.h - the text of one row of the neighbour list.
#pragma once

#include "collectors/port/neighbor_ex_tables.h"

#include <cstddef>
#include <cstdint>

constexpr size_t NEIGHBOR_ROW_SIZE = 2560; // terminator included

// The two sources of rows. Each has its own order of keys, its own limit for the host name and its own "source" text.
enum NEIGHBOR_ROW_FORM : int { NEIGHBOR_ROW_LLDP, NEIGHBOR_ROW_FDB };

// What a row says; texts as they came, "" for what is not known.
struct NEIGHBOR_ROW_T {
    const NEIGHBOR_IF_T *interface;
    uint32_t ifNum;
    uint32_t vlanId;
    const char *hostName;
    const char *address; // IP
    const char *mac;
    const char *portId; // of the device; LLDP only
};

// Print a row, every text from outside escaped. Returns its length; 0 when it does not fit.
[[nodiscard]] size_t neighborRowPrint(NEIGHBOR_ROW_FORM form, const NEIGHBOR_ROW_T &row, char out[NEIGHBOR_ROW_SIZE]);
