#include "calls.h"

#include "show_layout.h"

#include <cstring>
#include <tuple>

// Client calls about multicast, access lists, port mirroring and PTP.

namespace {

constexpr uint32_t ACL_IPV4 = 1, DIRECTION_IN = 1;
constexpr uint32_t MIRROR_SESSION = 1; // the only one
constexpr uint32_t PTP_DOMAINS = 128;

using GROUP_KEY_T = std::tuple<uint32_t, uint32_t, uint32_t>;

GROUP_KEY_T groupKey(const VS_GROUP_T &row)
{
    return {row.vlan, row.address, row.ifNum};
}

openclt_snoop_group_t groupOut(const VS_GROUP_T &row)
{
    openclt_snoop_group_t group = {};
    group.ifNum = static_cast<uint16_t>(row.ifNum);
    group.vlanId = static_cast<uint16_t>(row.vlan);
    group.groupAddress = row.address;
    const uint8_t mac[VS_MAC_BYTES] = {0x01,
                                       0x00,
                                       0x5e,
                                       static_cast<uint8_t>(row.address >> 16 & 0x7f),
                                       static_cast<uint8_t>(row.address >> 8),
                                       static_cast<uint8_t>(row.address)};
    memcpy(group.groupMac, mac, sizeof mac);
    size_t count = std::min<size_t>(row.subscribers.size(), OPENCLT_SNOOP_SUBSCRIBERS_MAX);
    for (size_t i = 0; i < count; i++) {
        group.subscribers[i].address = row.subscribers[i].address;
        (void)vsMacBytes(row.subscribers[i].mac, group.subscribers[i].mac); // one that is not known: zeroes
    }
    std::string type = row.type.empty() ? "IGMPv" + std::to_string(row.version) : row.type;
    memcpy(group.type, type.data(), std::min(type.size(), sizeof group.type)); // a long one fills it to the last byte
    group.subscriberCount = static_cast<uint32_t>(row.subscribers.size()); // of all, also of those that have no room
    group.timeout = row.timeout;
    return group;
}

// The mirroring session; null when none is configured.
const VS_MIRROR_T *mirrorOf(const VS_CALL_T &call, uint32_t session)
{
    const VS_MIRROR_T &mirror = call.state().mirror;
    return mirror.configured && session == MIRROR_SESSION ? &mirror : nullptr;
}

// ... or when it has no such port.
const VS_MIRROR_T *mirrorWith(const VS_CALL_T &call, uint32_t session, uint32_t VS_MIRROR_T::*port)
{
    const VS_MIRROR_T *mirror = mirrorOf(call, session);
    return mirror != nullptr && mirror->*port != 0 ? mirror : nullptr;
}

std::string sourceList(const VS_MIRROR_T &mirror)
{
    std::string text;
    for (const VS_MIRROR_SOURCE_T &source : mirror.sources) {
        text += (text.empty() ? "" : ",") + std::to_string(source.ifNum);
    }
    return text;
}

const VS_PTP_DOMAIN_T *ptpDomain(const VS_CALL_T &call, uint32_t domain)
{
    return vsRowOf(call.state().ptpDomains, &VS_PTP_DOMAIN_T::domain, domain);
}

} // namespace

// ---- multicast ----

ANSWER(rpcclt_openapiSnoopingGroupNextGet)
{
    if (args.family != OPENCLT_AF_IPV4) {
        return OPENCLT_PARAM;
    }
    GROUP_KEY_T previous{args.group->vlanId, args.group->groupAddress, args.group->ifNum};
    const VS_GROUP_T *next = vsNextRow(call.state().groups, previous, groupKey, [&](const VS_GROUP_T &row) {
        return vsLearned(call.state(), row.ifNum, row.present, call.now());
    });
    return vsRead(call, args.group, next, groupOut);
}

ANSWER(rpcclt_openapiSnoopIntfMrouterStatusGet)
{
    if (args.family != OPENCLT_AF_IPV4) {
        return OPENCLT_PARAM;
    }
    return vsRead(call, args.status, &VS_INTERFACE_T::mrouter);
}

// ---- access lists ----

ANSWER(rpcclt_openapiAclGet)
{
    if (args.aclType != ACL_IPV4) {
        return OPENCLT_PARAM;
    }
    const VS_ACL_T *acl = vsRowOf(call.state().acls, &VS_ACL_T::name, vsTextIn(args.name));
    *args.aclId = acl == nullptr ? *args.aclId : acl->id;
    return acl == nullptr ? OPENCLT_NOT_PRESENT : OPENCLT_OK;
}

ANSWER(rpcclt_openapiAclAssignedIntfDirListGet)
{
    if (args.direction != DIRECTION_IN) {
        return OPENCLT_PARAM;
    }
    const VS_ACL_T *acl = vsRowOf(call.state().acls, &VS_ACL_T::id, args.aclId);
    if (acl == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    if (acl->interfaces.size() > OPENCLT_IF_LIST_MAX) {
        return OPENCLT_FAIL;
    }
    args.list->count = static_cast<uint32_t>(acl->interfaces.size());
    std::copy(acl->interfaces.begin(), acl->interfaces.end(), args.list->ifNums);
    return OPENCLT_OK;
}

// ---- port mirroring ----

READS(rpcclt_openapiSwPortMonitorModeGet, mode, mirrorOf(call, args.session), &VS_MIRROR_T::mode);
READS(rpcclt_openapiSwPortMonitorDestPortGet, ifNum, mirrorWith(call, args.session, &VS_MIRROR_T::destination),
      &VS_MIRROR_T::destination);
READS(rpcclt_openapiSwMonitorReflectorPortGet, ifNum, mirrorWith(call, args.session, &VS_MIRROR_T::reflector),
      &VS_MIRROR_T::reflector);
READS(rpcclt_openapiSwPortMonitorSourcePortsListGet, list, mirrorOf(call, args.session), sourceList);

ANSWER(rpcclt_openapiMirrorSourcePortDirectionGet)
{
    const VS_MIRROR_T *mirror = mirrorOf(call, args.session);
    if (mirror == nullptr) {
        return OPENCLT_NOT_FOUND;
    }
    return vsRead(call, args.direction, vsRowOf(mirror->sources, &VS_MIRROR_SOURCE_T::ifNum, args.ifNum),
                  &VS_MIRROR_SOURCE_T::direction);
}

// ---- PTP ----

READS(rpcclt_openapiPtpTcAdminModeGet, mode, &VS_SYSTEM_T::ptpTransparent);

ANSWER(rpcclt_openapiLinuxptpIsDomainExists)
{
    if (args.domain >= PTP_DOMAINS) {
        return OPENCLT_PARAM;
    }
    *args.exists = ptpDomain(call, args.domain) != nullptr;
    return OPENCLT_OK;
}

READS(rpcclt_openapiLinuxptpDomainVlanGet, vlanId, ptpDomain(call, args.domain), &VS_PTP_DOMAIN_T::vlan);
