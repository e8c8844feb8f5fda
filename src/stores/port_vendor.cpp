#include "stores/port_vendor.h"

// The vendor table, the choice of a port's vendor by its access VLAN's profile, and the search for a device of that
// vendor on the port. One build reads the VLAN profile database and the forwarding database once and sorts the
// addresses by interface. Uses SQLite, and the wrappers, walks and FDB snapshot of switch/.

#include "runtime/database.h"
#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/paths.h"
#include "runtime/result.h"
#include "runtime/sql.h"
#include "stores/oui.h"
#include "stores/vlan_info.h"
#include "switch/columns.h"
#include "switch/lldp.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <algorithm>
#include <bitset>
#include <cstring>
#include <strings.h>

namespace {
constexpr VENDOR_RECORD_T VENDORS[] = {
    {"crestron",
     {"Crestron DigitalMedia AV Network"},
     {"00:10:7F", "00:12:5F", "AC:1F:6B", "C4:42:68", "00:04:05"},
     nullptr,
     VENDOR_BY_FDB},
    {"harman",
     {"HARMAN Professional AV Network"},
     {"00:19:0B", "00:60:9F", "00:0F:D4"},
     nullptr,
     VENDOR_BY_FDB | VENDOR_BY_CHASSIS},
    {"visionary",
     {"Visionary AV Network", "Visionary Advanced Multi-Domain"},
     {"00:0E:14"},
     nullptr,
     VENDOR_BY_FDB | VENDOR_BY_CHASSIS},
    {"NUCLEUS", {"NUCLEUS Converged AV Network"}, {"00:02:C5"}, nullptr, VENDOR_BY_CHASSIS},
    {"birddog",
     {"BirdDog AV Network"},
     {"80:1F:12", "68:27:19", "E8:EB:1B", "FC:0F:E7", "70:B3:D5"},
     nullptr,
     VENDOR_BY_FDB},
    {"audio-technica", {"Audio Audio-Technica"}, {"00:0A:45"}, nullptr, VENDOR_BY_FDB},
    {"kramer", {"Kramer AV"}, {"00:1D:56", "00:02:BC"}, nullptr, VENDOR_BY_FDB},
    {"genelec", {"Audio Genelec Smart IP"}, {"AC:47:23"}, nullptr, VENDOR_BY_FDB},
    {"lightware", {"AVoIP Lightware AV network"}, {"A8:D2:36"}, nullptr, VENDOR_BY_FDB | VENDOR_BY_CHASSIS},
    {"poly", {"Poly StudioNet Modular Room"}, {"00:E0:DB"}, nullptr, VENDOR_BY_FDB},
    {"blustream", {"Blustream Multicast"}, {"34:D0:B8"}, nullptr, VENDOR_BY_FDB},
    {"sennheiser", {"Sennheiser TeamConnect Bar S - Single Domain Mode"}, {"00:1B:66"}, nullptr, VENDOR_BY_FDB},
    {"nice", {"Nice Home Management"}, {"F8:57:2E"}, nullptr, VENDOR_BY_FDB},
    {"telos", {"Telos AllianceLivewire+ AES67"}, {"58:50:AB"}, nullptr, VENDOR_BY_FDB | VENDOR_BY_CHASSIS},
    {"GandD", {"G&D KVM-over-IP"}, {"00:0F:F4"}, nullptr, VENDOR_BY_FDB | VENDOR_BY_CHASSIS},
    {"etc", {"ETC Lighting"}, {"00:C0:16"}, nullptr, VENDOR_BY_FDB},
    {"urc", {"URC Automation"}, {"00:1F:B8"}, nullptr, VENDOR_BY_FDB | VENDOR_BY_CHASSIS},
    {"aja", {"AJA AV Network"}, {"00:0C:17"}, nullptr, VENDOR_BY_FDB},
    {"bluos", {"BluOS AV"}, {"90:56:82"}, nullptr, VENDOR_BY_FDB},
    {"biamp", {"Audio Video AVB MILAN with Dante PTPv1 PTPv2 or AES67"}, {}, nullptr, 0},
    {"audac", {"AUDAC Audio and Control Network"}, {}, "Audac", VENDOR_BY_DESCRIPTION},
    {"tarpan", {"TARPAN"}, {"18:66:96"}, nullptr, VENDOR_BY_FDB},
    {"jap", {"Just Add Power AV"}, {"48:5D:EB", "C2:00:00"}, nullptr, VENDOR_BY_FDB},
};
static_assert(sizeof VENDORS / sizeof VENDORS[0] == 23, "vendors");

constexpr int VLAN_ID_LAST = 4096;
constexpr size_t MAP_FIRST_CAPACITY = 32;
constexpr size_t VENDOR_KEY_SIZE = 32;
constexpr uint32_t DEFAULT_VLAN = 1;

using VLAN_SET_T = std::bitset<VLAN_ID_LAST + 1>;
bool mapRowAdd(sqlite3_stmt *statement, VLAN_PROFILE_MAP_T *map, size_t *capacity, VLAN_SET_T *seen);
const VENDOR_RECORD_T *portVendorChoose(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, const VLAN_PROFILE_MAP_T *map);
bool isExamined(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum);
const VENDOR_RECORD_T *profileVendor(const PROFILE_MAP_ROW_T &profile);
bool profileSelects(const PROFILE_MAP_ROW_T &profile, const VENDOR_RECORD_T &vendor);

bool ifNumLess(const FDB_ENTRY_T &entry, uint32_t ifNum);
bool foundByFdb(const VENDOR_RECORD_T *vendor, uint32_t ifNum, const FDB_ENTRY_T *entries, uint32_t count);

// What LLDP tells of one remote device, and whether that makes it a device of the vendor.
struct LLDP_METHOD_T {
    VENDOR_METHOD method;
    LLDP_READ read;
    bool (*matches)(const VENDOR_RECORD_T *vendor, const char *text);
};
struct LLDP_SEARCH_T {
    const VENDOR_RECORD_T *vendor;
    const LLDP_METHOD_T *method;
    bool found;
};
bool foundByLldp(CLIENT_HANDLE_T *clientHandle, const VENDOR_RECORD_T *vendor, uint32_t ifNum,
                 const LLDP_METHOD_T &method);
bool textDiffers(void *search, const char *text);
bool chassisIdMatches(const VENDOR_RECORD_T *vendor, const char *text);
bool descriptionMatches(const VENDOR_RECORD_T *vendor, const char *text);
constexpr LLDP_METHOD_T LLDP_METHODS[] = {
    {VENDOR_BY_CHASSIS, lldpChassisIdRead, chassisIdMatches},
    {VENDOR_BY_DESCRIPTION, rpcclt_openapiLldpIntfRemoteDeviceSystemDescGet, descriptionMatches},
};
} // namespace

int portVendorDetectBuild(CLIENT_HANDLE_T *clientHandle, char **out)
{
    VLAN_PROFILE_MAP_T map;
    OWNED_ARRAY<FDB_ENTRY_T> entries;

    *out = nullptr;
    loadVlanProfileMap(&map);
    uint32_t count = fdbEntryListGetSimple(clientHandle, &entries);
    std::sort(entries.get(), entries.get() + count,
              [](const FDB_ENTRY_T &a, const FDB_ENTRY_T &b) { return ifNumLess(a, b.ifNum); });

    OWNED_JSON root(cJSON_CreateObject());
    cJSON *rows = jsonAddArray(root.get(), "rows");
    for (IF_WALK_T port = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port)) {
        char vendorKey[VENDOR_KEY_SIZE];
        // Fails only without handle or buffer.
        (void)portVendorDetect(clientHandle, port.ifNum, &map, entries.get(), count, vendorKey, sizeof vendorKey);
        cJSON *row = jsonAppendObject(rows);
        jsonAddNumber(row, "portNum", port.ifNum);
        jsonAddText(row, "detect", vendorKey);
    }
    *out = jsonPrint(root.get(), JSON_COMPACT);
    return *out == nullptr ? RESULT_INVALID_POINTER : RESULT_OK;
}

void loadVlanProfileMap(VLAN_PROFILE_MAP_T *map)
{
    const char *path = PathGet(PATH_VLANINFO_DB);
    OWNED_DB db;
    VLAN_SET_T seen;

    map->count = 0;
    map->rows.reset();
    int result = databaseOpen(DATABASE_SHARED, path, SQLITE_OPEN_READONLY, &db);
    if (result != SQLITE_OK) {
        LOG_ERROR("port_vendor_detect: cannot open %s: %s\r\n", path,
                  db != nullptr ? sqlite3_errmsg(db.get()) : "open failed");
        return;
    }
    OWNED_STATEMENT statement;
    if (sqlPrepare(db.get(), "SELECT id, vlanType, profileType FROM vlanInfo;", &statement) != SQLITE_OK) {
        LOG_ERROR("port_vendor_detect: vlanInfo prepare failed: %s\r\n", sqlite3_errmsg(db.get()));
        return;
    }

    size_t capacity = MAP_FIRST_CAPACITY;
    map->rows = ownedArray<PROFILE_MAP_ROW_T>(capacity);
    if (map->rows == nullptr)
        return;
    while ((result = sqlStep(statement)) == SQLITE_ROW && mapRowAdd(statement.get(), map, &capacity, &seen))
        ;
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        map->count = 0; // a read that broke off is a failure; only a want of memory keeps the rows so far
}

int portVendorDetect(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, const VLAN_PROFILE_MAP_T *map,
                     const FDB_ENTRY_T *fdbEntries, uint32_t fdbCount, char *vendorKey, size_t size)
{
    if (clientHandle == nullptr || vendorKey == nullptr || size == 0)
        return RESULT_INVALID_POINTER;
    vendorKey[0] = '\0';
    const VENDOR_RECORD_T *vendor = portVendorChoose(clientHandle, ifNum, map);
    if (vendor == nullptr)
        return RESULT_OK;

    bool found = (vendor->methods & VENDOR_BY_FDB) != 0 && foundByFdb(vendor, ifNum, fdbEntries, fdbCount);
    for (const LLDP_METHOD_T &method : LLDP_METHODS) {
        if (!found && (vendor->methods & method.method) != 0)
            found = foundByLldp(clientHandle, vendor, ifNum, method);
    }
    if (found)
        textCopy(vendorKey, size, vendor->key);
    return RESULT_OK;
}

const VENDOR_RECORD_T *ouiVendorRecordGet(const char *macText)
{
    char oui[OUI_TEXT_SIZE];
    if (!ouiOfMac(macText, oui))
        return nullptr;
    for (const VENDOR_RECORD_T &vendor : VENDORS) {
        for (const char *listed : vendor.ouis) {
            if (listed != nullptr && strcasecmp(listed, oui) == 0)
                return &vendor;
        }
    }
    return nullptr;
}

namespace {
// Rows that no VLAN ID finds are passed over: without a VLAN, or behind another one of the same ID. False when there is
// no memory for a row.
bool mapRowAdd(sqlite3_stmt *statement, VLAN_PROFILE_MAP_T *map, size_t *capacity, VLAN_SET_T *seen)
{
    int id = sqlite3_column_int(statement, 0);
    if (id < 1 || id > VLAN_ID_LAST || seen->test(static_cast<size_t>(id)))
        return true;
    seen->set(static_cast<size_t>(id));
    if (map->count == *capacity && !ownedArrayDouble(&map->rows, capacity))
        return false;
    PROFILE_MAP_ROW_T *row = &map->rows[map->count++];
    row->id = id;
    row->vlanType = sqlite3_column_int(statement, 1);
    const unsigned char *text = sqlite3_column_text(statement, 2);
    textCopy(row->profileType, sizeof row->profileType, text != nullptr ? reinterpret_cast<const char *>(text) : "");
    return true;
}

// Vendor that may be attached to a port: that of its access VLAN's profile. Null when there is none, or the port is
// down or a trunk.
const VENDOR_RECORD_T *portVendorChoose(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, const VLAN_PROFILE_MAP_T *map)
{
    if (!isExamined(clientHandle, ifNum))
        return nullptr;
    uint32_t vlanId = DEFAULT_VLAN;
    if (openapiVlanIfPvidGet(clientHandle, ifNum, &vlanId) != OPENCLT_OK)
        vlanId = DEFAULT_VLAN;
    for (uint32_t i = 0; i < map->count; i++) {
        if (static_cast<uint32_t>(map->rows[i].id) == vlanId)
            return profileVendor(map->rows[i]);
    }
    return nullptr;
}

bool isExamined(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t state = OPENCLT_LINK_UP;
    if (openapiIfLinkStateGet(clientHandle, ifNum, &state) != OPENCLT_OK || state != OPENCLT_LINK_UP)
        return false;
    uint32_t isTrunk = 0;
    (void)dot1qSwPortAutoTrunkStatusGet(clientHandle, ifNum, &isTrunk); // a failure is logged, and is no trunk
    return isTrunk != 1;
}

const VENDOR_RECORD_T *profileVendor(const PROFILE_MAP_ROW_T &profile)
{
    for (const VENDOR_RECORD_T &vendor : VENDORS) {
        if (profileSelects(profile, vendor))
            return &vendor;
    }
    return nullptr;
}

bool profileSelects(const PROFILE_MAP_ROW_T &profile, const VENDOR_RECORD_T &vendor)
{
    if (isKramerType(profile.vlanType)) // whatever the type's name
        return strcmp(vendor.key, "kramer") == 0;
    for (const char *profileType : vendor.profileTypes) {
        if (profileType != nullptr && strcasecmp(profileType, profile.profileType) == 0)
            return true;
    }
    return false;
}

bool ifNumLess(const FDB_ENTRY_T &entry, uint32_t ifNum)
{
    return entry.ifNum < ifNum;
}

bool foundByFdb(const VENDOR_RECORD_T *vendor, uint32_t ifNum, const FDB_ENTRY_T *entries, uint32_t count)
{
    const FDB_ENTRY_T *end = entries + count;
    for (const FDB_ENTRY_T *entry = std::lower_bound(entries, end, ifNum, ifNumLess);
         entry != end && entry->ifNum == ifNum; entry++) {
        if (ouiVendorRecordGet(entry->mac) == vendor)
            return true;
    }
    return false;
}

bool foundByLldp(CLIENT_HANDLE_T *clientHandle, const VENDOR_RECORD_T *vendor, uint32_t ifNum,
                 const LLDP_METHOD_T &method)
{
    LLDP_SEARCH_T search = {vendor, &method, false};

    (void)lldpTextsVisit(clientHandle, ifNum, method.read, textDiffers, &search); // a failure finds nothing
    return search.found;
}

bool textDiffers(void *search, const char *text)
{
    auto *wanted = static_cast<LLDP_SEARCH_T *>(search);

    wanted->found = wanted->method->matches(wanted->vendor, text);
    return !wanted->found;
}

bool chassisIdMatches(const VENDOR_RECORD_T *vendor, const char *text)
{
    return ouiVendorRecordGet(text) == vendor;
}

bool descriptionMatches(const VENDOR_RECORD_T *vendor, const char *text)
{
    return vendor->keyword != nullptr && strCaseStr(text, vendor->keyword) != nullptr;
}
} // namespace
