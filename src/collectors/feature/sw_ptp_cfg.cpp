#include "collectors/feature/sw_ptp_cfg.h"

// A boundary clock is configured as a domain of the platform's PTP service, bound to a VLAN. Which VLANs want one is
// said by the templates of their profiles. Uses the profile database and the templates of stores/.

#include "runtime/json.h"
#include "runtime/result.h"
#include "stores/profile_template.h"
#include "stores/vlan_info.h"

constexpr uint32_t PTP_DOMAINS = 128;
constexpr uint32_t DEFAULT_DOMAIN = 127; // alone enough for an active boundary clock
constexpr uint32_t CLOCK_VLANS = 16;
constexpr uint32_t MODE_BOUNDARY = 2;

// VLAN of each domain; 0 where there is no domain or its VLAN cannot be read.
struct PTP_DOMAINS_T {
    uint32_t vlans[PTP_DOMAINS];
};

static bool domainExists(CLIENT_HANDLE_T *clientHandle, uint32_t domain)
{
    uint32_t exists = 0;
    return rpcclt_openapiLinuxptpIsDomainExists(clientHandle, domain, &exists) == OPENCLT_OK && exists != 0;
}

static bool boundaryClockActive(CLIENT_HANDLE_T *clientHandle)
{
    uint32_t domain;
    return ptpBoundaryClockDomainGet(clientHandle, 0, &domain) == OPENCLT_OK ||
           domainExists(clientHandle, DEFAULT_DOMAIN);
}

// VLANs whose profile asks for a boundary clock, in the order of the database; their number. An ID below 1 takes its
// place in the list but names no VLAN (0 there).
static uint32_t clockVlansGet(uint32_t vlans[CLOCK_VLANS])
{
    OWNED_VLAN_INFO_LIST list(vlanInfoListCreate());
    PROFILE_FILES_T templates(PATH_TEMPLATE_DIR);
    uint32_t count = 0;

    if (list == nullptr || vlanInfoSelectTypes(list.get()) <= 0)
        return 0;
    for (uint32_t row = 0; row < list->count && count < CLOCK_VLANS; row++) {
        const VLAN_INFO_ENTRY_T &entry = list->entries[row];
        if (profileTemplateIsTrue(profileFileGet(&templates, entry.profileType), "PTP-BC"))
            vlans[count++] = entry.id > 0 ? static_cast<uint32_t>(entry.id) : 0;
    }
    return count;
}

static PTP_DOMAINS_T domainsRead(CLIENT_HANDLE_T *clientHandle)
{
    PTP_DOMAINS_T domains = {};

    for (uint32_t domain = 0; domain < PTP_DOMAINS; domain++) {
        uint32_t vlanId = 0;
        if (domainExists(clientHandle, domain) &&
            rpcclt_openapiLinuxptpDomainVlanGet(clientHandle, domain, &vlanId) == OPENCLT_OK)
            domains.vlans[domain] = vlanId;
    }
    return domains;
}

static int domainOfVlan(const PTP_DOMAINS_T &domains, uint32_t vlanId, uint32_t *domain)
{
    for (uint32_t i = 0; i < PTP_DOMAINS; i++) {
        if (domains.vlans[i] == vlanId && vlanId != 0) {
            *domain = i;
            return OPENCLT_OK;
        }
    }
    return OPENCLT_NOT_FOUND;
}

int switchPtpModeGet(CLIENT_HANDLE_T *clientHandle, char **out)
{
    uint32_t transparent = 0;

    *out = nullptr;
    if (rpcclt_openapiPtpTcAdminModeGet(clientHandle, &transparent) != OPENCLT_OK)
        transparent = 0;
    bool boundary = boundaryClockActive(clientHandle);

    OWNED_JSON mode(cJSON_CreateObject());
    if (mode == nullptr)
        return RESULT_INVALID_POINTER;
    jsonAddNumber(mode.get(), "ptpMode", boundary ? MODE_BOUNDARY : transparent);
    jsonAddNumber(mode.get(), "ptpTcAdmin", transparent);
    jsonAddNumber(mode.get(), "ptpBcAdmin", boundary ? 1 : 0);
    (void)jsonToStr(mode.get(), JSON_FORMATTED, out); // logged; the missing text says it
    return RESULT_OK;
}

int ptpBoundaryClockDomainGet(CLIENT_HANDLE_T *clientHandle, uint32_t vlanId, uint32_t *domain)
{
    uint32_t vlans[CLOCK_VLANS] = {vlanId};
    uint32_t count = vlanId > 0 ? 1 : clockVlansGet(vlans);

    if (count == 0)
        return OPENCLT_NOT_FOUND;
    const PTP_DOMAINS_T domains = domainsRead(clientHandle);
    for (uint32_t i = 0; i < count; i++) {
        if (domainOfVlan(domains, vlans[i], domain) == OPENCLT_OK)
            return OPENCLT_OK;
    }
    return OPENCLT_NOT_FOUND;
}
