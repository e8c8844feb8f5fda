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

// A number of the mirroring session that is not 0 when there is one.
int mirrorNumber(const char *name, void *handle, uint32_t session, uint32_t *value, uint32_t VS_MIRROR_T::*number,
                 bool zeroIsNone)
{
    VS_CALL_T call(name, session);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_MIRROR_T &mirror = call.state().mirror;
    bool there = mirror.configured && session == MIRROR_SESSION && (mirror.*number != 0 || !zeroIsNone);
    return vsNumberOf(call, handle, there ? &mirror : nullptr, value, number);
}

const VS_PTP_DOMAIN_T *ptpDomain(const VS_CALL_T &call, uint32_t domain)
{
    const std::vector<VS_PTP_DOMAIN_T> &all = call.state().ptpDomains;
    auto found =
        std::find_if(all.begin(), all.end(), [domain](const VS_PTP_DOMAIN_T &row) { return row.domain == domain; });
    return found == all.end() ? nullptr : &*found;
}

} // namespace

// ---- multicast ----

int rpcclt_openapiSnoopingGroupNextGet(openclt_handle_t *handle, uint32_t family, uint32_t,
                                       openclt_snoop_group_t *group)
{
    VS_CALL_T call(__func__, vsAddress(group == nullptr ? 0 : group->groupAddress));
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (group == nullptr || family != OPENCLT_AF_IPV4) {
        return OPENCLT_PARAM;
    }
    GROUP_KEY_T previous{group->vlanId, group->groupAddress, group->ifNum};
    const VS_GROUP_T *next = vsNextRow(call.state().groups, previous, groupKey, [&](const VS_GROUP_T &row) {
        return vsLearned(call.state(), row.ifNum, row.present, call.now());
    });
    return vsNumberOf(call, handle, next, group, groupOut);
}

int rpcclt_openapiSnoopIntfMrouterStatusGet(openclt_handle_t *handle, uint32_t family, uint32_t ifNum, uint32_t *status)
{
    VS_CALL_T call(__func__, ifNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (family != OPENCLT_AF_IPV4) {
        return OPENCLT_PARAM;
    }
    return vsNumberOf(call, handle, vsInterface(call.state(), ifNum), status, &VS_INTERFACE_T::mrouter);
}

// ---- access lists ----

int rpcclt_openapiAclGet(openclt_handle_t *handle, uint32_t aclType, openclt_buffer_t *name, uint32_t *aclId)
{
    std::string text = vsUsable(name) ? vsTextIn(name) : std::string();
    VS_CALL_T call(__func__, text);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || !vsUsable(name) || aclId == nullptr || aclType != ACL_IPV4) {
        return OPENCLT_PARAM;
    }
    for (const VS_ACL_T &acl : call.state().acls) {
        if (acl.name == text) {
            *aclId = acl.id;
            return OPENCLT_OK;
        }
    }
    return OPENCLT_NOT_PRESENT;
}

int rpcclt_openapiAclAssignedIntfDirListGet(openclt_handle_t *handle, uint32_t aclId, uint32_t direction,
                                            openclt_if_list_t *list)
{
    VS_CALL_T call(__func__, aclId);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (handle == nullptr || list == nullptr || direction != DIRECTION_IN) {
        return OPENCLT_PARAM;
    }
    for (const VS_ACL_T &acl : call.state().acls) {
        if (acl.id != aclId) {
            continue;
        }
        if (acl.interfaces.size() > OPENCLT_IF_LIST_MAX) {
            return OPENCLT_FAIL;
        }
        list->count = static_cast<uint32_t>(acl.interfaces.size());
        std::copy(acl.interfaces.begin(), acl.interfaces.end(), list->ifNums);
        return OPENCLT_OK;
    }
    return OPENCLT_NOT_FOUND;
}

// ---- port mirroring ----

int rpcclt_openapiSwPortMonitorModeGet(openclt_handle_t *handle, uint32_t session, uint32_t *mode)
{
    return mirrorNumber(__func__, handle, session, mode, &VS_MIRROR_T::mode, false);
}

int rpcclt_openapiSwPortMonitorDestPortGet(openclt_handle_t *handle, uint32_t session, uint32_t *ifNum)
{
    return mirrorNumber(__func__, handle, session, ifNum, &VS_MIRROR_T::destination, true);
}

int rpcclt_openapiSwMonitorReflectorPortGet(openclt_handle_t *handle, uint32_t session, uint32_t *ifNum)
{
    return mirrorNumber(__func__, handle, session, ifNum, &VS_MIRROR_T::reflector, true);
}

int rpcclt_openapiSwPortMonitorSourcePortsListGet(openclt_handle_t *handle, uint32_t session, openclt_buffer_t *list)
{
    VS_CALL_T call(__func__, session);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_MIRROR_T &mirror = call.state().mirror;
    bool there = mirror.configured && session == MIRROR_SESSION;
    return vsTextOf(call, handle, there ? &mirror : nullptr, list, [](const VS_MIRROR_T &row) {
        std::string text;
        for (const VS_MIRROR_SOURCE_T &source : row.sources) {
            text += (text.empty() ? "" : ",") + std::to_string(source.ifNum);
        }
        return text;
    });
}

int rpcclt_openapiMirrorSourcePortDirectionGet(openclt_handle_t *handle, uint32_t session, uint32_t ifNum,
                                               uint32_t *direction)
{
    VS_CALL_T call(__func__, ifNum);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    const VS_MIRROR_T &mirror = call.state().mirror;
    auto found = std::find_if(mirror.sources.begin(), mirror.sources.end(),
                              [ifNum](const VS_MIRROR_SOURCE_T &row) { return row.ifNum == ifNum; });
    bool there = mirror.configured && session == MIRROR_SESSION && found != mirror.sources.end();
    return vsNumberOf(call, handle, there ? &*found : nullptr, direction, &VS_MIRROR_SOURCE_T::direction);
}

// ---- PTP ----

int rpcclt_openapiPtpTcAdminModeGet(openclt_handle_t *handle, uint32_t *mode)
{
    return vsSystemNumber(__func__, handle, mode, &VS_SYSTEM_T::ptpTransparent);
}

int rpcclt_openapiLinuxptpIsDomainExists(openclt_handle_t *handle, uint32_t domain, uint32_t *exists)
{
    VS_CALL_T call(__func__, domain);
    if (call.result != OPENCLT_OK) {
        return call.result;
    }
    if (domain >= PTP_DOMAINS) {
        return OPENCLT_PARAM;
    }
    return vsNumberOf(call, handle, &call.state(), exists,
                      [&](const VS_STATE_T &) { return ptpDomain(call, domain) != nullptr; });
}

int rpcclt_openapiLinuxptpDomainVlanGet(openclt_handle_t *handle, uint32_t domain, uint32_t *vlanId)
{
    VS_CALL_T call(__func__, domain);
    return call.result != OPENCLT_OK
               ? call.result
               : vsNumberOf(call, handle, ptpDomain(call, domain), vlanId, &VS_PTP_DOMAIN_T::vlan);
}
