// fuzz_wire: what neighbours on the wire and people at the switch put into its tables. The first line names a document,
// the rest sets facts: number of the fact, row of its table, length of the value, value; again and again.

#include "target.h"

#include <control.h>
#include <cstring>
#include <model.h>
#include <type_traits>

namespace {
struct FACT_T {
    const char *name;
    void (*set)(VS_STATE_T &state, size_t row, const std::string &value);
};

// A number is the value's first bytes, low byte first; a list grows.
template <class FIELD> void valueSet(FIELD &field, const std::string &value)
{
    if constexpr (std::is_same_v<FIELD, std::string>) {
        field = value;
    } else if constexpr (std::is_same_v<FIELD, std::vector<std::string>>) {
        field.push_back(value);
    } else if constexpr (std::is_same_v<FIELD, bool>) {
        field = !value.empty() && (value[0] & 1) != 0;
    } else {
        field = FIELD();
        memcpy(&field, value.data(), std::min(sizeof(field), value.size()));
    }
}

template <auto LIST, auto FIELD> void inRow(VS_STATE_T &state, size_t row, const std::string &value)
{
    auto &list = state.*LIST;
    if (!list.empty())
        valueSet(list[row % list.size()].*FIELD, value);
}

template <auto PART, auto FIELD> void inPart(VS_STATE_T &state, size_t, const std::string &value)
{
    valueSet(state.*PART.*FIELD, value);
}

template <auto FIELD> void inOptic(VS_STATE_T &state, size_t row, const std::string &value)
{
    valueSet(state.ports[row % state.ports.size()].optic.*FIELD, value);
}

template <auto FIELD> void inPoe(VS_STATE_T &state, size_t row, const std::string &value)
{
    valueSet(state.ports[row % state.ports.size()].poe.*FIELD, value);
}

template <auto LIST, auto FIELD> void inUnit(VS_STATE_T &state, size_t row, const std::string &value)
{
    for (VS_UNIT_T &unit : state.units) {
        if (!(unit.*LIST).empty())
            valueSet((unit.*LIST)[row % (unit.*LIST).size()].*FIELD, value);
    }
}

template <auto FIELD> void inPeriod(VS_STATE_T &state, size_t row, const std::string &value)
{
    for (VS_TIME_RANGE_T &range : state.timeRanges) {
        if (!range.periods.empty())
            valueSet(range.periods[row % range.periods.size()].*FIELD, value);
    }
}

void imageSet(VS_STATE_T &state, size_t row, const std::string &value)
{
    state.units[row % state.units.size()].images[row % 4] = value;
}

void logAdd(VS_STATE_T &state, size_t, const std::string &value)
{
    state.log.push_back(value);
}

void subscriberAdd(VS_STATE_T &state, size_t row, const std::string &value)
{
    VS_SUBSCRIBER_T subscriber;
    valueSet(subscriber.address, value);
    subscriber.mac = value;
    state.groups[row % state.groups.size()].subscribers.push_back(subscriber);
}

void mirrorSourceAdd(VS_STATE_T &state, size_t row, const std::string &value)
{
    VS_MIRROR_SOURCE_T source;
    valueSet(source.ifNum, value);
    source.direction = static_cast<uint32_t>(row);
    state.mirror.sources.push_back(source);
}

using STATE = VS_STATE_T;

// Inputs name facts by their number: new ones are added at the end. What orders a table is no fact here.
constexpr FACT_T facts[] = {
    {"lldp chassis id", inRow<&STATE::lldp, &VS_LLDP_T::chassisId>},
    {"lldp chassis subtype", inRow<&STATE::lldp, &VS_LLDP_T::chassisSubtype>},
    {"lldp port id", inRow<&STATE::lldp, &VS_LLDP_T::portId>},
    {"lldp port subtype", inRow<&STATE::lldp, &VS_LLDP_T::portSubtype>},
    {"lldp system name", inRow<&STATE::lldp, &VS_LLDP_T::systemName>},
    {"lldp system description", inRow<&STATE::lldp, &VS_LLDP_T::systemDescription>},
    {"lldp address", inRow<&STATE::lldp, &VS_LLDP_T::addresses>},
    {"learned mac", inRow<&STATE::fdb, &VS_FDB_T::mac>},
    {"learned interface", inRow<&STATE::fdb, &VS_FDB_T::ifNum>},
    {"learned flag", inRow<&STATE::fdb, &VS_FDB_T::learned>},
    {"arp mac", inRow<&STATE::arp, &VS_ARP_T::mac>},
    {"arp vlan", inRow<&STATE::arp, &VS_ARP_T::vlan>},
    {"group address", inRow<&STATE::groups, &VS_GROUP_T::address>},
    {"group version", inRow<&STATE::groups, &VS_GROUP_T::version>},
    {"group interface", inRow<&STATE::groups, &VS_GROUP_T::ifNum>},
    {"group timeout", inRow<&STATE::groups, &VS_GROUP_T::timeout>},
    {"group subscriber", subscriberAdd},
    {"log entry", logAdd},
    {"mirror source", mirrorSourceAdd},
    {"mirror destination", inPart<&STATE::mirror, &VS_MIRROR_T::destination>},
    {"mirror reflector", inPart<&STATE::mirror, &VS_MIRROR_T::reflector>},
    {"port description", inRow<&STATE::ports, &VS_PORT_T::description>},
    {"lag description", inRow<&STATE::lags, &VS_LAG_T::description>},
    {"lag name", inRow<&STATE::lags, &VS_LAG_T::name>},
    {"lag hash mode", inRow<&STATE::lags, &VS_LAG_T::hashMode>},
    {"vlan name", inRow<&STATE::vlans, &VS_VLAN_T::name>},
    {"vlan method", inRow<&STATE::vlans, &VS_VLAN_T::method>},
    {"system name", inPart<&STATE::system, &VS_SYSTEM_T::name>},
    {"system mac", inPart<&STATE::system, &VS_SYSTEM_T::mac>},
    {"os version", inPart<&STATE::system, &VS_SYSTEM_T::osVersion>},
    {"boot version", inPart<&STATE::system, &VS_SYSTEM_T::bootVersion>},
    {"active label", inPart<&STATE::system, &VS_SYSTEM_T::activeLabel>},
    {"backup label", inPart<&STATE::system, &VS_SYSTEM_T::backupLabel>},
    {"active image", inPart<&STATE::system, &VS_SYSTEM_T::activeImage>},
    {"activated image", inPart<&STATE::system, &VS_SYSTEM_T::activatedImage>},
    {"summer time", inPart<&STATE::system, &VS_SYSTEM_T::summerTime>},
    {"logging severity", inPart<&STATE::system, &VS_SYSTEM_T::bufferedSeverity>},
    {"management method", inPart<&STATE::system, &VS_SYSTEM_T::managementMethod>},
    {"fan mode", inPart<&STATE::system, &VS_SYSTEM_T::fanMode>},
    {"acl name", inRow<&STATE::acls, &VS_ACL_T::name>},
    {"acl denied address", inRow<&STATE::acls, &VS_ACL_T::denied>},
    {"radius server", inRow<&STATE::radius, &VS_RADIUS_T::address>},
    {"time range name", inRow<&STATE::timeRanges, &VS_TIME_RANGE_T::name>},
    {"time range recurrence", inRow<&STATE::timeRanges, &VS_TIME_RANGE_T::recurrence>},
    {"time range start", inPeriod<&VS_PERIOD_T::start>},
    {"time range end", inPeriod<&VS_PERIOD_T::end>},
    {"time range days", inPeriod<&VS_PERIOD_T::startDays>},
    {"time range end day", inPeriod<&VS_PERIOD_T::endDay>},
    {"ptp domain", inRow<&STATE::ptpDomains, &VS_PTP_DOMAIN_T::domain>},
    {"ptp vlan", inRow<&STATE::ptpDomains, &VS_PTP_DOMAIN_T::vlan>},
    {"unit model", inRow<&STATE::units, &VS_UNIT_T::model>},
    {"unit serial", inRow<&STATE::units, &VS_UNIT_T::serial>},
    {"unit code version", inRow<&STATE::units, &VS_UNIT_T::codeVersion>},
    {"unit image", imageSet},
    {"card", inUnit<&VS_UNIT_T::slots, &VS_SLOT_T::model>},
    {"fan", inUnit<&VS_UNIT_T::fans, &VS_FAN_T::description>},
    {"fan type", inUnit<&VS_UNIT_T::fans, &VS_FAN_T::type>},
    {"fan state", inUnit<&VS_UNIT_T::fans, &VS_FAN_T::state>},
    {"sensor", inUnit<&VS_UNIT_T::sensors, &VS_SENSOR_T::description>},
    {"sensor state", inUnit<&VS_UNIT_T::sensors, &VS_SENSOR_T::state>},
    {"temperature", inUnit<&VS_UNIT_T::sensors, &VS_SENSOR_T::temperature>},
    {"stack port", inUnit<&VS_UNIT_T::stackPorts, &VS_STACK_PORT_T::port>},
    {"stack slot", inUnit<&VS_UNIT_T::stackPorts, &VS_STACK_PORT_T::slot>},
    {"optic vendor", inOptic<&VS_OPTIC_T::vendor>},
    {"optic serial", inOptic<&VS_OPTIC_T::serial>},
    {"optic part", inOptic<&VS_OPTIC_T::part>},
    {"optic compliance", inOptic<&VS_OPTIC_T::compliance>},
    {"optic bit rate", inOptic<&VS_OPTIC_T::bitRate>},
    {"optic length", inOptic<&VS_OPTIC_T::length>},
    {"optic fault", inOptic<&VS_OPTIC_T::faultStatus>},
    {"optic type", inOptic<&VS_OPTIC_T::type>},
    {"poe status", inPoe<&VS_POE_T::status>},
    {"poe class", inPoe<&VS_POE_T::classification>},
    {"poe power", inPoe<&VS_POE_T::power>},
    {"poe schedule", inPoe<&VS_POE_T::schedule>},
    {"poe limit mode", inPoe<&VS_POE_T::limitMode>},
    {"port speed", inRow<&STATE::ports, &VS_PORT_T::speed>},
    {"port vlan", inRow<&STATE::ports, &VS_PORT_T::pvid>},
    {"port switch mode", inRow<&STATE::ports, &VS_PORT_T::switchMode>},
    {"port state of the tree", inRow<&STATE::ports, &VS_PORT_T::stpState>},
    {"port negotiation", inRow<&STATE::ports, &VS_PORT_T::autoNeg>},
    {"port frame size", inRow<&STATE::ports, &VS_PORT_T::frameSize>},
    {"port mode", inRow<&STATE::ports, &VS_PORT_T::physicalMode>},
    {"port medium", inRow<&STATE::ports, &VS_PORT_T::mediaType>},
    {"port error correction", inRow<&STATE::ports, &VS_PORT_T::fec>},
    {"port hardware profile", inRow<&STATE::ports, &VS_PORT_T::hwProfile>},
    {"port authentication", inRow<&STATE::ports, &VS_PORT_T::dot1xControl>},
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    targetBegin();
    static const VS_STATE_T clean = vsState();
    INPUT_T input = inputSplit(data, size);
    std::string_view rest = input.rest;

    while (rest.size() >= 3) {
        auto byte = [&rest](size_t at) {
            return static_cast<unsigned char>(rest[at]);
        };
        const FACT_T &fact = facts[byte(0) % std::size(facts)];
        fact.set(vsState(), byte(1), std::string(rest.substr(3, byte(2))));
        rest.remove_prefix(std::min<size_t>(3 + byte(2), rest.size()));
    }
    documentCheck(documentNamed(input.head));
    vsState() = clean;
    return 0;
}

// Each document with each kind of text in every fact.
std::vector<std::string> targetSeeds()
{
    static const std::string values[] = {
        "",
        std::string(255, 'x'),
        "\"\\\n\x1b\x7f</script>%n%s",
        "caf\xc3\xa9 \xe2\x82\xac \xff\xc3\xa9\xc0\x80",
        std::string("\xff\xff\xff\xff\xff\xff\xff\xff", 8),
        std::string("\x00\x00\x00\x80\x00\x00\x00\x80", 8),
        std::string(84, '\\') + std::string(84, '"') + "\xf0\x9f\x8e\xa5",
    };
    std::vector<std::string> seeds;

    targetBegin();
    for (const std::string &name : documentNames()) {
        for (const std::string &value : values) {
            std::string seed = name + "\n";
            for (size_t fact = 0; fact < std::size(facts); fact++) {
                for (char row : {'\0', '\1'})
                    seed += std::string(1, static_cast<char>(fact)) + row + static_cast<char>(value.size()) + value;
            }
            seeds.push_back(seed);
        }
    }
    return seeds;
}
