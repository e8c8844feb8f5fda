#include "loader.h"
#include "models.h"

#include <algorithm>
#include <cstdio>

// Units with their cards, ports, and LAGs. Units make their ports from the model; the
// "ports" section then says what differs.

static const VS_WORD_T SPEEDS[] = {{"auto", 1}, {"10M", 5},   {"100M", 3},  {"1G", 7},    {"2.5G", 8},
                                   {"5G", 9},   {"10G", 10},  {"20G", 11},  {"25G", 12},  {"40G", 13},
                                   {"50G", 14}, {"100G", 15}, {"200G", 17}, {"400G", 18}, {"LAG", 19}};
static const VS_WORD_T SWITCH_MODES[] = {{"general", 0}, {"access", 1}, {"trunk", 2}, {"autoTrunk", 3}};
static const VS_WORD_T STP_STATES[] = {{"discarding", 1}, {"learning", 2},         {"forwarding", 3},
                                       {"disabled", 4},   {"manualForwarding", 5}, {"notParticipating", 6}};
static const VS_WORD_T AUTO_NEG[] = {{"on", 0}, {"off", 1}};
static const VS_WORD_T FLOW_CONTROL[] = {{"off", 0}, {"symmetric", 1}, {"asymmetric", 2}};
static const VS_WORD_T DOT1X_CONTROL[] = {
    {"forceUnauthorised", 1}, {"auto", 2}, {"forceAuthorised", 3}, {"macBased", 4}};
static const VS_WORD_T DOT1X_STATUS[] = {{"authorised", 1}, {"unauthorised", 2}};

static bool cardModel(VS_READ_T &read, const VS_NODE_T &node, std::string &model)
{
    if (!vsText(read, node, model))
        return false;
    bool card = model.empty() || (model.compare(0, 2, "QM") == 0 && vsModel(model.c_str()) != nullptr);
    return card || vsRefuse(read, node, "expected the model of a card like \"QMD-K5\", or \"\"");
}

static bool unitModel(VS_READ_T &read, const VS_NODE_T &node, VS_UNIT_T &unit)
{
    if (!vsText(read, node, unit.model))
        return false;
    bool machine = unit.model.compare(0, 2, "QM") != 0 && vsModel(unit.model.c_str()) != nullptr;
    return machine || vsRefuse(read, node, "expected a model that is known like \"TK830-T16\"");
}

static bool unitPortCount(VS_READ_T &read, const VS_NODE_T &node, VS_UNIT_T &unit)
{
    int64_t count;
    if (!vsNumber(read, node, 1, 64, count))
        return false;
    read.portCount[unit.unit] = static_cast<uint32_t>(count);
    return true;
}

static bool unitImages(VS_READ_T &read, const VS_NODE_T &node, VS_UNIT_T &unit)
{
    std::vector<std::string> names;
    if (!vsTextList(read, node, names))
        return false;
    if (names.size() != 4)
        return vsRefuse(read, node, "expected a list of four texts");
    std::copy(names.begin(), names.end(), unit.images);
    return true;
}

static const VS_FIELD_T<VS_SLOT_T> SLOT_FIELDS[] = {
    {"model", value<&VS_SLOT_T::model, cardModel>},
    {"configuredModel", value<&VS_SLOT_T::configuredModel, cardModel>},
};

static bool unitSlots(VS_READ_T &read, const VS_NODE_T &node, VS_UNIT_T &unit)
{
    if (node.kind != VS_NODE_OBJECT)
        return vsRefuse(read, node, "expected an object");
    unit.slots.clear();
    for (const VS_NODE_T &item : node.items) {
        VS_SLOT_T slot;
        if (!vsKeyNumber(read, item, 1, 12, slot.slot) || !readObject(read, item, slot, SLOT_FIELDS))
            return false;
        unit.slots.push_back(slot);
    }
    std::sort(unit.slots.begin(), unit.slots.end(),
              [](const VS_SLOT_T &a, const VS_SLOT_T &b) { return a.slot < b.slot; });
    return true;
}

static const VS_FIELD_T<VS_FAN_T> FAN_FIELDS[] = {
    {"id", number<&VS_FAN_T::id, 1, 64>},      {"description", plain<&VS_FAN_T::description>},
    {"type", plain<&VS_FAN_T::type>},          {"speed", number<&VS_FAN_T::speed, 0, 100000>},
    {"duty", number<&VS_FAN_T::duty, 0, 100>}, {"state", plain<&VS_FAN_T::state>},
};
static const VS_FIELD_T<VS_SENSOR_T> SENSOR_FIELDS[] = {
    {"id", number<&VS_SENSOR_T::id, 1, 64>},
    {"description", plain<&VS_SENSOR_T::description>},
    {"temperature", number<&VS_SENSOR_T::temperature, -273, 1000>},
    {"state", plain<&VS_SENSOR_T::state>},
    {"maximum", number<&VS_SENSOR_T::maximum, -273, 1000>},
};
static const VS_FIELD_T<VS_STACK_PORT_T> STACK_PORT_FIELDS[] = {
    {"slot", number<&VS_STACK_PORT_T::slot, 0, 12>},
    {"port", number<&VS_STACK_PORT_T::port, 1, 400>},
};

using UNIT = VS_UNIT_T;
static const VS_FIELD_T<UNIT> UNIT_FIELDS[] = {
    {"model", unitModel},
    {"portCount", unitPortCount},
    {"serial", plain<&UNIT::serial>},
    {"management", plain<&UNIT::management>},
    {"standby", plain<&UNIT::standby>},
    {"ok", plain<&UNIT::ok>},
    {"codeVersion", plain<&UNIT::codeVersion>},
    {"images", unitImages},
    {"slots", unitSlots},
    {"fans", list<&UNIT::fans, FAN_FIELDS>},
    {"sensors", list<&UNIT::sensors, SENSOR_FIELDS>},
    {"stackPorts", list<&UNIT::stackPorts, STACK_PORT_FIELDS>},
    {"cpu", real<&UNIT::cpu>},
    {"memoryFree", number<&UNIT::memoryFree, 0, UINT32_MAX>},
    {"memoryAllocated", number<&UNIT::memoryAllocated, 0, UINT32_MAX>},
    {"poeSupported", plain<&UNIT::poeSupported>},
    {"poeTotal", number<&UNIT::poeTotal, 0, 100000>},
    {"poeThreshold", number<&UNIT::poeThreshold, 0, 100000>},
    {"present", value<&UNIT::present, vsWindow>},
};

VS_UNIT_T &vsUnitAdd(VS_STATE_T &state, uint32_t unit, const std::string &model)
{
    auto at = std::lower_bound(state.units.begin(), state.units.end(), unit,
                               [](const VS_UNIT_T &row, uint32_t key) { return row.unit < key; });
    if (at != state.units.end() && at->unit == unit)
        return *at;
    at = state.units.emplace(at);
    at->unit = unit;
    at->model = model;
    at->serial = "5TK12" + std::to_string(340000 + unit);
    at->images[0] = at->images[2] = at->images[3] = "image1";
    at->images[1] = "image2";
    for (uint32_t id = 1; id <= 2; id++) {
        VS_FAN_T fan;
        fan.id = id;
        fan.description = "FAN-" + std::to_string(id);
        at->fans.push_back(fan);
    }
    VS_SENSOR_T sensor;
    sensor.description = "MAC";
    at->sensors.push_back(sensor);
    return *at;
}

bool vsReadUnits(VS_READ_T &read, const VS_NODE_T &node)
{
    if (node.kind != VS_NODE_OBJECT)
        return vsRefuse(read, node, "expected an object");
    for (const VS_NODE_T &item : node.items) {
        uint32_t number;
        if (!vsKeyNumber(read, item, 1, 8, number))
            return false;
        VS_UNIT_T &unit = vsUnitAdd(read.out.state, number, "");
        if (!readObject(read, item, unit, UNIT_FIELDS))
            return false;
        if (unit.model.empty())
            return vsRefuse(read, item, "expected \"model\" in it");
    }
    return true;
}

// What the units leave open, once the ports are known.
void vsUnitsFinish(VS_STATE_T &state)
{
    VS_UNIT_T *managing = nullptr;
    for (VS_UNIT_T &unit : state.units) {
        if (unit.management && managing == nullptr)
            managing = &unit;
        if (unit.codeVersion.empty())
            unit.codeVersion = state.system.osVersion;
    }
    if (managing == nullptr && !state.units.empty())
        state.units.front().management = true;
    for (const VS_PORT_T &port : state.ports)
        for (VS_UNIT_T &unit : state.units)
            if (port.poe.valid && unit.unit == port.unit && !unit.poeSupported) {
                unit.poeSupported = true;
                unit.poeTotal = unit.poeTotal > 0 ? unit.poeTotal : 720;
                unit.poeThreshold = unit.poeThreshold > 0 ? unit.poeThreshold : unit.poeTotal * 95 / 100;
            }
}

static VS_PORT_T portMake(const VS_MODEL_T &model, uint32_t unit, uint32_t slot, uint32_t number)
{
    VS_PORT_T port;
    port.unit = unit;
    port.slot = slot;
    port.port = number;
    port.speed = vsModelSpeed(model, number);
    if (const VS_FANOUT_T *range = vsFanoutOfSub(model.name, number, port.rootPort)) {
        port.attached = false;
        port.speed = range->speed;
    } else if (const VS_FANOUT_T *own = vsFanoutOfRoot(model.name, number, nullptr)) {
        port.hwProfile = own->whole;
    }
    bool copper = port.speed <= 9;
    port.mediaType = copper ? "Copper" : "Fiber";
    port.physicalMode = "Auto";
    return port;
}

// The first front ports of a model, and their sub-ports.
static void portsOf(VS_STATE_T &state, const VS_MODEL_T &model, uint32_t unit, uint32_t slot, uint32_t front)
{
    for (uint32_t number = 1; number <= model.ports; number++) {
        VS_PORT_T port = portMake(model, unit, slot, number);
        if ((port.rootPort > 0 ? port.rootPort : number) > front)
            continue;
        port.ifNum = static_cast<uint32_t>(state.ports.size()) + 1;
        state.ports.push_back(port);
    }
}

void vsPortsBuild(VS_READ_T &read)
{
    VS_STATE_T &state = read.out.state;
    for (const VS_UNIT_T &unit : state.units) {
        const VS_MODEL_T *model = vsModel(unit.model.c_str());
        auto limit = read.portCount.find(unit.unit);
        portsOf(state, *model, unit.unit, 0, limit == read.portCount.end() ? model->ports : limit->second);
        for (const VS_SLOT_T &slot : unit.slots)
            if (const VS_MODEL_T *card = vsModel(slot.model.c_str()))
                portsOf(state, *card, unit.unit, slot.slot, card->ports);
    }
}

static const char *modelOf(const VS_STATE_T &state, const VS_PORT_T &port)
{
    const VS_UNIT_T *unit = vsUnit(state, port.unit);
    if (port.slot == 0)
        return unit->model.c_str();
    for (const VS_SLOT_T &slot : unit->slots)
        if (slot.slot == port.slot)
            return slot.model.c_str();
    return "";
}

// The front port goes out of use and its sub-ports of the mode come into it.
static bool fanout(VS_READ_T &read, const VS_NODE_T &node, VS_PORT_T &root)
{
    const char *model = modelOf(read.out.state, root);
    const VS_FANOUT_T *any = vsFanoutOfRoot(model, root.port, nullptr);
    const VS_FANOUT_T *range =
        node.kind == VS_NODE_TEXT ? vsFanoutOfRoot(model, root.port, node.text.c_str()) : nullptr;
    if (any == nullptr || (range == nullptr && node.text != any->whole))
        return vsRefuse(read, node, "expected a fan-out mode of this model and port like \"4x25G\"");
    uint32_t first = range != nullptr ? vsFanoutFirstSub(*range, root.port) : 0;
    for (VS_PORT_T &port : read.out.state.ports) {
        if (port.unit != root.unit || port.slot != root.slot || port.rootPort != root.port)
            continue;
        port.attached = range != nullptr && port.port >= first && port.port < first + range->count;
    }
    root.attached = range == nullptr || root.port == first;
    root.hwProfile = node.text;
    if (range != nullptr && root.attached)
        root.speed = range->speed;
    return true;
}

// "10-19" in a list of VLANs: those of the range that exist.
static bool vlanRange(VS_READ_T &read, const VS_NODE_T &node, std::vector<uint16_t> &ids)
{
    unsigned first, last;
    int used = 0;
    if (sscanf(node.text.c_str(), "%4u-%4u%n", &first, &last, &used) != 2 ||
        static_cast<size_t>(used) != node.text.size() || first < 1 || last > 4094 || first > last)
        return vsRefuse(read, node, "expected the ID of a VLAN that exists, or a range like \"10-19\"");
    for (const VS_VLAN_T &vlan : read.out.state.vlans)
        if (vlan.id >= first && vlan.id <= last)
            ids.push_back(static_cast<uint16_t>(vlan.id));
    return true;
}

static bool vlanList(VS_READ_T &read, const VS_NODE_T &node, std::vector<uint16_t> &ids)
{
    if (node.kind != VS_NODE_ARRAY)
        return vsRefuse(read, node, "expected a list of VLAN IDs");
    ids.clear();
    for (const VS_NODE_T &item : node.items) {
        uint32_t id;
        if (item.kind == VS_NODE_TEXT) {
            if (!vlanRange(read, item, ids))
                return false;
            continue;
        }
        if (!vsVlanOf(read, item, id))
            return false;
        ids.push_back(static_cast<uint16_t>(id));
    }
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    return true;
}

using OPTIC = VS_OPTIC_T;
static const VS_FIELD_T<OPTIC> OPTIC_FIELDS[] = {
    {"present", plain<&OPTIC::present>},
    {"type", number<&OPTIC::type, 0, 255>},
    {"compliance", plain<&OPTIC::compliance>},
    {"vendor", plain<&OPTIC::vendor>},
    {"serial", plain<&OPTIC::serial>},
    {"part", plain<&OPTIC::part>},
    {"revision", plain<&OPTIC::revision>},
    {"bitRate", plain<&OPTIC::bitRate>},
    {"length50", plain<&OPTIC::length50>},
    {"length62", plain<&OPTIC::length62>},
    {"length", plain<&OPTIC::length>},
    {"supported", plain<&OPTIC::supported>},
    {"speeds", plain<&OPTIC::speeds>},
    {"diagnostics", plain<&OPTIC::diagnostics>},
    {"temperature", real<&OPTIC::temperature>},
    {"voltage", real<&OPTIC::voltage>},
    {"current", real<&OPTIC::current>},
    {"outputPower", real<&OPTIC::outputPower>},
    {"inputPower", real<&OPTIC::inputPower>},
    {"txFault", plain<&OPTIC::txFault>},
    {"los", plain<&OPTIC::los>},
    {"faultStatus", plain<&OPTIC::faultStatus>},
};

static const VS_WORD_T POE_CLASSES[] = {{"class0", 0}, {"class1", 1}, {"class2", 2}, {"class3", 3}, {"class4", 4},
                                        {"class5", 5}, {"class6", 6}, {"class7", 7}, {"class8", 8}};
static const VS_WORD_T POE_STATUS[] = {
    {"idle", 1},      {"searching", VS_POE_SEARCHING}, {"delivering", VS_POE_DELIVERING}, {"test", 4}, {"fault", 5},
    {"otherFault", 6}};
static const VS_WORD_T POE_PRIORITIES[] = {{"low", 1}, {"high", 2}, {"critical", 3}};

using POE = VS_POE_T;
static const VS_FIELD_T<POE> POE_FIELDS[] = {
    {"valid", plain<&POE::valid>},
    {"enable", plain<&POE::enable>},
    {"classification", word<&POE::classification, POE_CLASSES>},
    {"power", number<&POE::power, 0, 200000>},
    {"voltage", number<&POE::voltage, 0, 100>},
    {"current", number<&POE::current, 0, 10000>},
    {"temperature", number<&POE::temperature, 0, 200>},
    {"limit", number<&POE::limit, 0, 200000>},
    {"limitMode", number<&POE::limitMode, 0, 255>},
    {"status", word<&POE::status, POE_STATUS>},
    {"detection", number<&POE::detection, 0, 255>},
    {"priority", word<&POE::priority, POE_PRIORITIES>},
    {"powerUp", number<&POE::powerUp, 0, 255>},
    {"schedule", plain<&POE::schedule>},
};

// Naming an optic or the power of a port says that there is one.
static bool optic(VS_READ_T &read, const VS_NODE_T &node, VS_PORT_T &port)
{
    port.optic.present = true;
    return readObject(read, node, port.optic, OPTIC_FIELDS);
}

static bool poe(VS_READ_T &read, const VS_NODE_T &node, VS_PORT_T &port)
{
    port.poe.valid = true;
    return readObject(read, node, port.poe, POE_FIELDS);
}

using IF = VS_INTERFACE_T;
static const VS_FIELD_T<IF> INTERFACE_FIELDS[] = {
    {"description", plain<&IF::description>},
    {"adminUp", plain<&IF::adminUp>},
    {"linkUp", plain<&IF::linkUp>},
    {"down", value<&IF::down, vsWindow>},
    {"speed", word<&IF::speed, SPEEDS>},
    {"pvid", value<&IF::pvid, vsVlanOf>},
    {"tagged", value<&IF::tagged, vlanList>},
    {"switchMode", word<&IF::switchMode, SWITCH_MODES>},
    {"frameSize", number<&IF::frameSize, 0, 65535>},
    {"stpEnabled", plain<&IF::stpEnabled>},
    {"stpEdge", plain<&IF::stpEdge>},
    {"stpBpduFilter", plain<&IF::stpBpduFilter>},
    {"stpTcnGuard", plain<&IF::stpTcnGuard>},
    {"stpState", word<&IF::stpState, STP_STATES>},
    {"mrouter", plain<&IF::mrouter>},
    {"inRate", number<&IF::inRate, 0, 400'000'000'000>},
    {"outRate", number<&IF::outRate, 0, 400'000'000'000>},
    {"inErrors", number<&IF::inErrors, 0, UINT32_MAX>},
    {"outErrors", number<&IF::outErrors, 0, UINT32_MAX>},
    {"inDrops", number<&IF::inDrops, 0, UINT32_MAX>},
    {"outDrops", number<&IF::outDrops, 0, UINT32_MAX>},
};

using PORT = VS_PORT_T;
static const VS_FIELD_T<PORT> PORT_FIELDS[] = {
    {"fanout", fanout},
    {"autoNeg", word<&PORT::autoNeg, AUTO_NEG>},
    {"physicalMode", plain<&PORT::physicalMode>},
    {"mediaType", plain<&PORT::mediaType>},
    {"fec", plain<&PORT::fec>},
    {"hwProfile", plain<&PORT::hwProfile>},
    {"flowControl", word<&PORT::flowControl, FLOW_CONTROL>},
    {"stormControl", plain<&PORT::stormControl>},
    {"dot1xControl", word<&PORT::dot1xControl, DOT1X_CONTROL>},
    {"dot1xStatus", word<&PORT::dot1xStatus, DOT1X_STATUS>},
    {"stackCapable", plain<&PORT::stackCapable>},
    {"optic", optic},
    {"poe", poe},
};

bool vsReadPorts(VS_READ_T &read, const VS_NODE_T &node)
{
    if (node.kind != VS_NODE_OBJECT)
        return vsRefuse(read, node, "expected an object");
    for (const VS_NODE_T &item : node.items) {
        std::vector<uint32_t> ifNums;
        if (!vsPortList(read, item, item.key, ifNums))
            return false;
        for (uint32_t ifNum : ifNums)
            if (!readObject(read, item, read.out.state.ports[ifNum - 1], PORT_FIELDS, INTERFACE_FIELDS))
                return false;
    }
    return true;
}

static bool lagMembers(VS_READ_T &read, const VS_NODE_T &node, VS_LAG_T &lag)
{
    if (node.kind != VS_NODE_ARRAY)
        return vsRefuse(read, node, "expected a list of ports");
    lag.members.clear();
    for (const VS_NODE_T &item : node.items) {
        std::string text;
        std::vector<uint32_t> ifNums;
        if (!vsText(read, item, text) || !vsPortList(read, item, text, ifNums))
            return false;
        for (uint32_t ifNum : ifNums) {
            if (!vsOnce(read, item, vsPortName(read.out.state.ports[ifNum - 1]) + " as a LAG member"))
                return false;
            lag.members.push_back(ifNum);
        }
    }
    std::sort(lag.members.begin(), lag.members.end());
    return true;
}

static bool lagPhantoms(VS_READ_T &read, const VS_NODE_T &node, VS_LAG_T &lag)
{
    if (node.kind != VS_NODE_ARRAY)
        return vsRefuse(read, node, "expected a list of interface numbers");
    lag.phantoms.clear();
    for (const VS_NODE_T &item : node.items) {
        int64_t ifNum;
        if (!vsNumber(read, item, 1, UINT32_MAX, ifNum))
            return false;
        if (vsPort(read.out.state, static_cast<uint32_t>(ifNum)) != nullptr)
            return vsRefuse(read, item, "expected an interface number that no port has");
        lag.phantoms.push_back(static_cast<uint32_t>(ifNum));
    }
    return true;
}

using LAG = VS_LAG_T;
static const VS_FIELD_T<LAG> LAG_FIELDS[] = {
    {"name", plain<&LAG::name>},
    {"staticMode", plain<&LAG::staticMode>},
    {"hashMode", number<&LAG::hashMode, 0, 255>},
    {"members", lagMembers},
    {"phantoms", lagPhantoms},
};

VS_LAG_T &vsLagAdd(VS_STATE_T &state, uint32_t lagNumber)
{
    auto at = std::lower_bound(state.lags.begin(), state.lags.end(), lagNumber,
                               [](const VS_LAG_T &lag, uint32_t key) { return lag.number < key; });
    if (at == state.lags.end() || at->number != lagNumber) {
        at = state.lags.emplace(at);
        at->number = lagNumber;
        at->ifNum = static_cast<uint32_t>(state.ports.size()) + lagNumber;
        at->name = "ch" + std::to_string(lagNumber);
        at->speed = 19;
        at->linkUp = true; // as far as its members are
    }
    return *at;
}

bool vsReadLags(VS_READ_T &read, const VS_NODE_T &node)
{
    if (node.kind != VS_NODE_OBJECT)
        return vsRefuse(read, node, "expected an object");
    for (const VS_NODE_T &item : node.items) {
        uint32_t lagNumber;
        if (!vsKeyNumber(read, item, 1, 128, lagNumber) ||
            !readObject(read, item, vsLagAdd(read.out.state, lagNumber), LAG_FIELDS, INTERFACE_FIELDS))
            return false;
    }
    return true;
}

// A LAG for which no traffic is given carries its members'.
void vsLagsFinish(VS_STATE_T &state)
{
    for (VS_LAG_T &lag : state.lags) {
        if (lag.inRate > 0 || lag.outRate > 0)
            continue;
        for (uint32_t member : lag.members) {
            lag.inRate += state.ports[member - 1].inRate;
            lag.outRate += state.ports[member - 1].outRate;
        }
    }
}
