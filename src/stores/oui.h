// oui.h - vendor names by the first three bytes of a MAC address, from the read-only OUI database.
#pragma once

#include <cstddef>

constexpr size_t OUI_TEXT_SIZE = 9;    // "AA:BB:CC"
constexpr size_t OUI_VENDOR_SIZE = 32; // longer names are cut

// First 8 characters of a MAC text, in upper case. False, and "" in `oui`, for a shorter text.
[[nodiscard]] bool ouiOfMac(const char *mac, char oui[OUI_TEXT_SIZE]);

// Load the table, at the first call of the process only; a failure leaves it empty and is not retried.
void ouiTableLoad();

// Vendor of a MAC's OUI in the loaded table, "" when there is none. Valid as long as the process.
[[nodiscard]] const char *ouiVendorOfMac(const char *mac);
