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

constexpr size_t TEMPLATE_TYPES = 32; // VLANs of further types have no flags

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
    OWNED_VLAN_INFO_LIST rows = vlanInfoSortedLoad();

    if (rows == nullptr)
        return;
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

static void flagsRead(const cJSON *profileTemplate, uint32_t *flags, uint32_t *mask)
{
    for (const auto &row : templateFlags) {
        if (profileTemplateIsTrue(profileTemplate, row.member)) {
            *flags |= row.flags;
            *mask |= row.mask;
        }
    }
    // Flow control is set either way when the template names it.
    const cJSON *flowControl = cJSON_GetObjectItem(profileTemplate, "flowControl");
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

static void templatesApply(VLAN_PROFILE_LIST_T *list)
{
    PROFILE_FILES_T templates(PATH_TEMPLATE_DIR, TEMPLATE_TYPES);

    for (uint32_t i = 0; i < list->count; i++) {
        VLAN_PROFILE_T *profile = list->ids[i];
        if (profile->profileType[0] == '\0')
            continue;
        flagsRead(profileFileGet(&templates, profile->profileType), &profile->profileFlags, &profile->profileFlagMask);
        profile->profileVariant = variantGet(profile->profileType);
    }
}

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
