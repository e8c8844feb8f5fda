#include "loader.h"

#include <algorithm>

// The switch as a whole and its VLANs.

static const VS_WORD_T FAN_MODES[] = {{"cool", 2}, {"off", 3}, {"quiet", 4}};
static const VS_WORD_T PROTOCOLS[] = {{"none", 1}, {"bootp", 2}, {"dhcp", 3}};

static bool apiVersion(VS_READ_T &read, const VS_NODE_T &node, VS_SYSTEM_T &system)
{
    if (node.kind != VS_NODE_ARRAY || node.items.size() != 4)
        return vsRefuse(read, node, "expected a list of four numbers");
    for (size_t i = 0; i < 4; i++) {
        int64_t part;
        if (!vsNumber(read, node.items[i], 0, 255, part))
            return false;
        system.apiVersion[i] = static_cast<uint32_t>(part);
    }
    return true;
}

static bool summerTime(VS_READ_T &read, const VS_NODE_T &node, VS_SYSTEM_T &system)
{
    if (node.kind != VS_NODE_TEXT || (node.text != "" && node.text != "EU" && node.text != "USA"))
        return vsRefuse(read, node, "expected \"\", \"EU\" or \"USA\"");
    system.summerTime = node.text;
    return true;
}

using SYS = VS_SYSTEM_T;
static const VS_FIELD_T<SYS> SYSTEM_FIELDS[] = {
    {"name", plain<&SYS::name>},
    {"mac", value<&SYS::mac, vsMac>},
    {"osVersion", plain<&SYS::osVersion>},
    {"apiVersion", apiVersion},
    {"bootVersion", plain<&SYS::bootVersion>},
    {"localUnit", number<&SYS::localUnit, 1, 8>},
    {"fanMode", word<&SYS::fanMode, FAN_MODES>},
    {"stpPriority", number<&SYS::stpPriority, 0, 61440>},
    {"dot1x", plain<&SYS::dot1x>},
    {"authManager", plain<&SYS::authManager>},
    {"serviceAddress", value<&SYS::serviceAddress, vsAddress>},
    {"serviceMask", value<&SYS::serviceMask, vsAddress>},
    {"serviceGateway", value<&SYS::serviceGateway, vsAddress>},
    {"serviceProtocol", word<&SYS::serviceProtocol, PROTOCOLS>},
    {"managementVlan", value<&SYS::managementVlan, vsVlanOf>},
    {"managementMethod", plain<&SYS::managementMethod>},
    {"managementAddress", value<&SYS::managementAddress, vsAddress>},
    {"managementMask", value<&SYS::managementMask, vsAddress>},
    {"managementGateway", value<&SYS::managementGateway, vsAddress>},
    {"clockPriority1", number<&SYS::clockPriority1, 0, 255>},
    {"clockPriority2", number<&SYS::clockPriority2, 0, 255>},
    {"autoLag", plain<&SYS::autoLag>},
    {"autoLagHash", number<&SYS::autoLagHash, 0, 255>},
    {"autoTrunk", plain<&SYS::autoTrunk>},
    {"ptpTransparent", plain<&SYS::ptpTransparent>},
    {"bufferedLogging", plain<&SYS::bufferedLogging>},
    {"bufferedSeverity", plain<&SYS::bufferedSeverity>},
    {"consoleLogging", plain<&SYS::consoleLogging>},
    {"consoleSeverity", number<&SYS::consoleSeverity, 0, 7>},
    {"commandLogging", plain<&SYS::commandLogging>},
    {"activeImage", plain<&SYS::activeImage>},
    {"backupImage", plain<&SYS::backupImage>},
    {"activatedImage", plain<&SYS::activatedImage>},
    {"activeLabel", plain<&SYS::activeLabel>},
    {"backupLabel", plain<&SYS::backupLabel>},
    {"utcOffset", number<&SYS::utcOffset, -720, 840>},
    {"summerTime", summerTime},
    {"lagMaxMembers", number<&SYS::lagMaxMembers, 1, 64>},
    {"ethernetHeader", number<&SYS::ethernetHeader, 14, 26>},
};

bool vsReadSystem(VS_READ_T &read, const VS_NODE_T &node)
{
    return readObject(read, node, read.out.state.system, SYSTEM_FIELDS);
}

// "10.1.0.1/24"; /24 when it is not said. A VLAN with an address has a routing interface.
static bool vlanAddress(VS_READ_T &read, const VS_NODE_T &node, VS_VLAN_T &vlan)
{
    VS_NODE_T address = node;
    size_t slash = node.text.find('/');
    if (slash != std::string::npos) {
        VS_NODE_T prefix = node;
        prefix.key = node.text.substr(slash + 1);
        if (!vsKeyNumber(read, prefix, 0, 32, vlan.prefixLength)) {
            read.error.clear();
            return vsRefuse(read, node, "expected an IPv4 address like \"10.0.0.1/24\"");
        }
        address.text.resize(slash);
    }
    vlan.routed = true;
    return vsAddress(read, address, vlan.address);
}

// The AV profile of a VLAN is no business of the switch: it is checked here, and used by who fills the profile store.
struct PROFILE_T {
    std::string type, color;
    uint32_t vlanType = 0;
};
static const VS_FIELD_T<PROFILE_T> PROFILE_FIELDS[] = {
    {"type", plain<&PROFILE_T::type>},
    {"vlanType", number<&PROFILE_T::vlanType, 0, 255>},
    {"color", plain<&PROFILE_T::color>},
};

static bool vlanProfile(VS_READ_T &read, const VS_NODE_T &node, VS_VLAN_T &)
{
    PROFILE_T unused;
    return readObject(read, node, unused, PROFILE_FIELDS) && vsRequire(read, node, {"type", "vlanType"});
}

static const VS_FIELD_T<VS_VLAN_T> VLAN_FIELDS[] = {
    {"name", plain<&VS_VLAN_T::name>},     {"static", plain<&VS_VLAN_T::isStatic>}, {"address", vlanAddress},
    {"routed", plain<&VS_VLAN_T::routed>}, {"method", plain<&VS_VLAN_T::method>},   {"profile", vlanProfile},
};

VS_VLAN_T &vsVlanAdd(VS_STATE_T &state, uint32_t id)
{
    auto at = std::lower_bound(state.vlans.begin(), state.vlans.end(), id,
                               [](const VS_VLAN_T &vlan, uint32_t key) { return vlan.id < key; });
    if (at == state.vlans.end() || at->id != id) {
        at = state.vlans.emplace(at);
        at->id = id;
        at->name = "VLAN" + std::to_string(id);
    }
    return *at;
}

bool vsReadVlans(VS_READ_T &read, const VS_NODE_T &node)
{
    if (node.kind != VS_NODE_OBJECT)
        return vsRefuse(read, node, "expected an object");
    for (const VS_NODE_T &item : node.items) {
        uint32_t id;
        if (!vsKeyNumber(read, item, 1, 4094, id) ||
            !readObject(read, item, vsVlanAdd(read.out.state, id), VLAN_FIELDS))
            return false;
    }
    return true;
}
