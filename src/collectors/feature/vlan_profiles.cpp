#include "collectors/feature/vlan_model.h"

// The profile map of the port table: each VLAN of "show vlan" with its row of the profile database and the switches of
// its profile's template. A template is parsed once for all VLANs of its type.

#include "collectors/feature/vlan_show.h"
#include "runtime/paths.h"
#include "runtime/result.h"
#include "stores/profile_template.h"
#include "stores/vlan_info.h"
#include "switch/columns.h"

#include <cstring>

constexpr uint32_t TEMPLATE_TYPES = 32;

// Bits of the flags and of their mask.
constexpr uint32_t FLAG_PTP = 1U << 0;
constexpr uint32_t FLAG_AVB = 1U << 1;
constexpr uint32_t FLAG_FLOW_CONTROL = 1U << 2;
constexpr uint32_t FLAG_SONOS = 1U << 9;
constexpr uint32_t FLAG_PTP_BOUNDARY = 1U << 13;

static const struct {
    const char *member;
    uint32_t flags, mask; // set when the member is true
} templateFlags[] = {
    {"PTP", FLAG_PTP, 0},
    {"PTP-BC", FLAG_PTP_BOUNDARY, FLAG_PTP_BOUNDARY},
    {"AVB", FLAG_AVB, FLAG_AVB},
    {"Sonos", FLAG_SONOS, 0},
};

static const struct {
    const char *profileType;
    uint32_t variant;
} variants[] = {
    {"Audio Video AVB MILAN", 1U << 5},
    {"Audio Video AVB MILAN with Dante PTPv1 PTPv2 or AES67", 1U << 6},
};

// Flags of the profile types met so far.
struct TEMPLATE_CACHE_T {
    struct {
        char profileType[sizeof(VLAN_PROFILE_T::profileType)];
        uint32_t flags, mask;
    } types[TEMPLATE_TYPES];
    uint32_t count;
};

static int vlansRead(CLIENT_HANDLE_T *clientHandle, VLAN_PROFILE_LIST_T *list);
static void profileRowsApply(VLAN_PROFILE_LIST_T *list);
static void templatesApply(VLAN_PROFILE_LIST_T *list);
static void flagsGet(TEMPLATE_CACHE_T *cache, VLAN_PROFILE_T *profile);
static void flagsRead(const char *profileType, uint32_t *flags, uint32_t *mask);
static uint32_t variantGet(const char *profileType);

int vlanListProfileCreateFastEX(CLIENT_HANDLE_T *clientHandle, OWNED_VLAN_PROFILES *list)
{
    OWNED_VLAN_PROFILES made = vlanSlotsCreate<VLAN_PROFILE_T>();
    if (made == nullptr || vlansRead(clientHandle, made.get()) != RESULT_OK)
        return RESULT_FAILED;
    profileRowsApply(made.get());
    templatesApply(made.get());
    *list = std::move(made);
    return RESULT_OK;
}

static int vlansRead(CLIENT_HANDLE_T *clientHandle, VLAN_PROFILE_LIST_T *list)
{
    SHOW_FILE_T show;
    VLAN_SHOWN_T row;

    if (vlanShowRun(&show, clientHandle, "vlanListProfileCreateFastEX", PATH_SHOW_VLAN_PROFILE) != RESULT_OK)
        return RESULT_FAILED;
    while (list->count < VLAN_SLOTS && vlanShowNext(&show, &row)) {
        if (vlanSlotsAdd(list, row.vlanId) == nullptr)
            return RESULT_FAILED;
    }
    return RESULT_OK;
}

static void profileRowsApply(VLAN_PROFILE_LIST_T *list)
{
    OWNED_VLAN_INFO_LIST rows(vlanInfoListCreate());
    if (rows == nullptr || vlanInfoSelectAll(rows.get()) < 0)
        return;
    vlanInfoListSortById(rows.get());
    for (uint32_t i = 0; i < list->count; i++) {
        VLAN_PROFILE_T *profile = list->ids[i];
        const VLAN_INFO_ENTRY_T *row = vlanInfoListFindById(rows.get(), static_cast<int>(profile->vlanId));
        if (row == nullptr)
            continue;
        profile->vlanType = static_cast<uint32_t>(row->vlanType);
        textCopy(profile->profileType, sizeof(profile->profileType), row->profileType);
        snprintf(profile->templatePath, sizeof(profile->templatePath), "%s%s", PathGet(PATH_TEMPLATE_DIR),
                 row->profileType);
    }
}

static void templatesApply(VLAN_PROFILE_LIST_T *list)
{
    OWNED_ARRAY<TEMPLATE_CACHE_T> cache = ownedArray<TEMPLATE_CACHE_T>(1);

    for (uint32_t i = 0; i < list->count; i++) {
        VLAN_PROFILE_T *profile = list->ids[i];
        if (profile->profileType[0] == '\0')
            continue;
        if (cache != nullptr) // without memory no VLAN has flags
            flagsGet(cache.get(), profile);
        profile->profileVariant = variantGet(profile->profileType);
    }
}

// Types beyond the room of the cache get no flags.
static void flagsGet(TEMPLATE_CACHE_T *cache, VLAN_PROFILE_T *profile)
{
    uint32_t at = 0;

    while (at < cache->count && strcmp(cache->types[at].profileType, profile->profileType) != 0)
        at++;
    if (at == TEMPLATE_TYPES)
        return;
    auto &type = cache->types[at];
    if (at == cache->count) {
        textCopy(type.profileType, sizeof(type.profileType), profile->profileType);
        flagsRead(type.profileType, &type.flags, &type.mask);
        cache->count++;
    }
    profile->profileFlags = type.flags;
    profile->profileFlagMask = type.mask;
}

static void flagsRead(const char *profileType, uint32_t *flags, uint32_t *mask)
{
    OWNED_JSON profileTemplate = profileTemplateLoad(profileType);

    for (const auto &row : templateFlags) {
        if (profileTemplateIsTrue(profileTemplate.get(), row.member)) {
            *flags |= row.flags;
            *mask |= row.mask;
        }
    }
    // Flow control is set either way when the template names it.
    const cJSON *flowControl = cJSON_GetObjectItem(profileTemplate.get(), "flowControl");
    if (flowControl != nullptr)
        *mask |= FLAG_FLOW_CONTROL;
    if (cJSON_IsTrue(flowControl))
        *flags |= FLAG_FLOW_CONTROL;
}

static uint32_t variantGet(const char *profileType)
{
    for (const auto &row : variants) {
        if (strcmp(profileType, row.profileType) == 0)
            return row.variant;
    }
    return 0;
}
