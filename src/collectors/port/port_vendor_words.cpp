#include "collectors/port/port_vendor_words.h"

// Two tables, scanned in order: profile types with their vendor word and the ways in which that vendor's devices are
// recognised, and OUIs with their vendor word. The search looks at the learned addresses, then at LLDP chassis ids,
// then at LLDP system descriptions, each only for the vendors that are found so. Uses the FDB snapshot of switch/ and
// stores/oui.h.

#include "runtime/result.h"
#include "stores/oui.h"
#include "stores/vlan_info.h"
#include "switch/columns.h"
#include "switch/lldp.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

enum FOUND_BY : unsigned { BY_NOTHING = 0, BY_FDB = 1, BY_CHASSIS = 2, BY_DESCRIPTION = 4 };

struct PROFILE_VENDOR_T {
    const char *profileType; // in any case
    const char *vendor;
    unsigned foundBy; // FOUND_BY set
};
static constexpr PROFILE_VENDOR_T profileVendors[] = {
    {"HARMAN Professional AV Network", "harman", BY_FDB | BY_CHASSIS},
    {"Visionary AV Network", "visionary", BY_FDB | BY_CHASSIS},
    {"Visionary Advanced Multi-Domain", "visionary", BY_FDB | BY_CHASSIS},
    {"Crestron DigitalMedia AV Network", "crestron", BY_FDB},
    {"NUCLEUS Converged AV Network", "NUCLEUS", BY_CHASSIS},
    {"BirdDog AV Network", "birddog", BY_FDB},
    {"Audio Audio-Technica", "audio-technica", BY_FDB},
    {"Kramer AV", "kramer", BY_NOTHING},
    {"Audio Genelec Smart IP", "genelec", BY_FDB},
    {"AVoIP Lightware AV network", "lightware", BY_FDB | BY_CHASSIS},
    {"Poly StudioNet Modular Room", "poly", BY_FDB},
    {"Blustream Multicast", "blustream", BY_FDB},
    {"Sennheiser TeamConnect Bar S - Single Domain Mode", "sennheiser", BY_FDB},
    {"Nice Home Management", "nice", BY_FDB},
    {"Telos AllianceLivewire+ AES67", "telos", BY_FDB | BY_CHASSIS},
    {"G&D KVM-over-IP", "GandD", BY_FDB | BY_CHASSIS},
    {"ETC Lighting", "etc", BY_FDB},
    {"URC Automation", "urc", BY_FDB | BY_CHASSIS},
    {"AJA AV Network", "aja", BY_FDB},
    {"BluOS AV", "bluos", BY_FDB},
    {"Audio Video AVB MILAN with Dante PTPv1 PTPv2 or AES67", "biamp", BY_NOTHING},
    {"AUDAC Audio and Control Network", "audac", BY_DESCRIPTION},
    {"TARPAN", "tarpan", BY_FDB},
    {"Just Add Power AV", "jap", BY_FDB},
};
static_assert(sizeof profileVendors / sizeof profileVendors[0] == 24, "profile types");

struct OUI_VENDOR_T {
    const char *oui;
    const char *vendor;
};
static constexpr OUI_VENDOR_T ouiVendors[] = {
    {"00:0C:17", "aja"},          {"90:56:82", "bluos"},        {"00:10:7F", "crestron"},
    {"00:12:5F", "crestron"},     {"AC:1F:6B", "crestron"},     {"C4:42:68", "crestron"},
    {"00:04:05", "crestron"},     {"00:19:0B", "harman video"}, {"00:60:9F", "harman control"},
    {"00:0F:D4", "harman audio"}, {"00:0E:14", "visionary"},    {"00:02:C5", "NUCLEUS"},
    {"80:1F:12", "birddog"},      {"68:27:19", "birddog"},      {"E8:EB:1B", "birddog"},
    {"FC:0F:E7", "birddog"},      {"70:B3:D5", "birddog"},      {"00:0A:45", "audio-technica"},
    {"00:1D:56", "kramer"},       {"00:02:BC", "kramer"},       {"AC:47:23", "genelec"},
    {"A8:D2:36", "lightware"},    {"00:E0:DB", "poly"},         {"34:D0:B8", "blustream"},
    {"00:1B:66", "sennheiser"},   {"F8:57:2E", "nice"},         {"58:50:AB", "telos"},
    {"00:0F:F4", "GandD"},        {"00:C0:16", "etc"},          {"00:1F:B8", "urc"},
    {"18:66:96", "tarpan"},       {"48:5D:EB", "jap"},          {"C2:00:00", "jap"},
};
static_assert(sizeof ouiVendors / sizeof ouiVendors[0] == 33, "OUIs");

// A vendor whose OUIs have words of their own, which begin with it.
static constexpr char FAMILY[] = "harman";

static constexpr char AUDAC_KEYWORD[] = "Audac"; // in this case only

static const PROFILE_VENDOR_T *profileVendorFind(const char *profileType);
static const char *wordByMac(const char *vendor, const char *mac);
static const char *wordByFdb(const char *vendor, uint32_t ifNum, const PORT_FDB_T *fdb);
static const char *wordByChassis(CLIENT_HANDLE_T *clientHandle, const char *vendor, uint32_t ifNum);
static const char *wordByDescription(CLIENT_HANDLE_T *clientHandle, const char *vendor, uint32_t ifNum);
static bool textAppend(void *array, const char *text);
static bool isNotAudac(void *found, const char *description);

void portFdbRead(CLIENT_HANDLE_T *clientHandle, PORT_FDB_T *fdb)
{
    fdb->count = fdbSnapshotGet(clientHandle, &fdb->entries);
    std::stable_sort(fdb->entries.get(), fdb->entries.get() + fdb->count,
                     [](const FDB_ENTRY_T &a, const FDB_ENTRY_T &b) { return a.ifNum < b.ifNum; });
}

const char *portVendorWordGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, const VLAN_PROFILE_T *profile,
                              const PORT_FDB_T *fdb)
{
    if (profile == nullptr)
        return nullptr;
    const PROFILE_VENDOR_T *row = profileVendorFind(profile->profileType);
    if (row == nullptr) {
        bool isKramer = isKramerType(static_cast<int32_t>(profile->vlanType)); // the type's name says nothing
        return isKramer ? wordByFdb("kramer", ifNum, fdb) : nullptr;
    }

    const char *word = nullptr;
    if ((row->foundBy & BY_FDB) != 0)
        word = wordByFdb(row->vendor, ifNum, fdb);
    if (word == nullptr && (row->foundBy & BY_CHASSIS) != 0)
        word = wordByChassis(clientHandle, row->vendor, ifNum);
    if (word == nullptr && (row->foundBy & BY_DESCRIPTION) != 0)
        word = wordByDescription(clientHandle, row->vendor, ifNum);
    return word;
}

int lldpIntfRemoteDevicesChassisIdGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, cJSON *array)
{
    return lldpTextsVisit(clientHandle, ifNum, lldpChassisIdRead, textAppend, array);
}

static const PROFILE_VENDOR_T *profileVendorFind(const char *profileType)
{
    for (const PROFILE_VENDOR_T &row : profileVendors) {
        if (strcasecmp(row.profileType, profileType) == 0)
            return &row;
    }
    return nullptr;
}

// What a device of this vendor with this address is called; null when the address is another's.
static const char *wordByMac(const char *vendor, const char *mac)
{
    char oui[OUI_TEXT_SIZE];

    if (!ouiOfMac(mac, oui))
        return nullptr;
    for (const OUI_VENDOR_T &row : ouiVendors) {
        if (strcasecmp(row.oui, oui) != 0)
            continue;
        bool isOfFamily = strcmp(vendor, FAMILY) == 0 && textBegins(row.vendor, FAMILY);
        return isOfFamily || strcmp(row.vendor, vendor) == 0 ? row.vendor : nullptr;
    }
    return nullptr;
}

static const char *wordByFdb(const char *vendor, uint32_t ifNum, const PORT_FDB_T *fdb)
{
    const FDB_ENTRY_T *end = fdb->entries.get() + fdb->count;
    const FDB_ENTRY_T *entry = std::lower_bound<const FDB_ENTRY_T *>(
        fdb->entries.get(), end, ifNum, [](const FDB_ENTRY_T &one, uint32_t number) { return one.ifNum < number; });

    for (; entry != end && entry->ifNum == ifNum; entry++) {
        const char *word = wordByMac(vendor, entry->mac);
        if (word != nullptr)
            return word;
    }
    return nullptr;
}

static const char *wordByChassis(CLIENT_HANDLE_T *clientHandle, const char *vendor, uint32_t ifNum)
{
    OWNED_JSON ids(cJSON_CreateArray());
    const cJSON *id;

    // What could be read counts, whatever the result.
    (void)lldpIntfRemoteDevicesChassisIdGet(clientHandle, ifNum, ids.get());
    cJSON_ArrayForEach(id, ids.get())
    {
        const char *word = wordByMac(vendor, id->valuestring);
        if (word != nullptr)
            return word;
    }
    return nullptr;
}

static const char *wordByDescription(CLIENT_HANDLE_T *clientHandle, const char *vendor, uint32_t ifNum)
{
    bool found = false;

    // A failure finds nothing.
    (void)lldpTextsVisit(clientHandle, ifNum, rpcclt_openapiLldpIntfRemoteDeviceSystemDescGet, isNotAudac, &found);
    return found ? vendor : nullptr;
}

static bool textAppend(void *array, const char *text)
{
    jsonAppendText(static_cast<cJSON *>(array), text);
    return true;
}

static bool isNotAudac(void *found, const char *description)
{
    bool *isFound = static_cast<bool *>(found);

    *isFound = strstr(description, AUDAC_KEYWORD) != nullptr;
    return !*isFound;
}
