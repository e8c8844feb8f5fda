// model.h - the state record of the virtual switch: every fact once.
//
// The loader fills one record from a scenario; client calls (calls_*.cpp) and show commands (show_*.cpp) both answer
// from it, so that they cannot contradict each other. What moves with time (links that flap, counters, neighbours that
// come and go) is not stored: the functions at the end derive it from the record and the seconds since the scenario's
// epoch.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// A window on the clock: present always, or from `from` on for `lasts` seconds, again every `every` seconds.
struct VS_WINDOW_T {
    uint32_t from = 0;  // seconds since the epoch
    uint32_t lasts = 0; // 0: for ever
    uint32_t every = 0; // 0: once
};

struct VS_OPTIC_T {
    bool present = false;
    uint32_t type = 1;                                   // 1 SFP, 2 SFP+, 3 and above QSFP kinds
    std::string compliance;                              // "10GBase-SR"
    std::string vendor, serial, part, revision, bitRate; // nominal bit rate in Mbit/s as text
    std::string length50, length62, length;              // link lengths in metres as text
    bool supported = true;
    std::string speeds;        // possible speeds as text
    bool diagnostics = true;   // has a line of live values
    double temperature = 38.2; // degrees Celsius
    double voltage = 3.31;     // volts
    double current = 6.5;      // milliamperes
    double outputPower = -2.3; // dBm
    double inputPower = -3.1;  // dBm
    bool txFault = false;
    bool los = false;
    std::string faultStatus = "No Fault";
};

// Codes of this switch's own; others are passed on as the scenario gives them.
constexpr uint32_t VS_POE_SEARCHING = 2, VS_POE_DELIVERING = 3;

struct VS_POE_T {
    bool valid = false; // the port can feed power
    bool enable = true;
    uint32_t classification = 0;
    uint32_t power = 0;   // milliwatts
    uint32_t voltage = 0; // volts
    uint32_t current = 0; // milliamperes
    uint32_t temperature = 0;
    uint32_t limit = 30000; // milliwatts
    uint32_t limitMode = 2; // violation type code
    uint32_t status = 1;    // detection status code while there is a link
    uint32_t detection = 4; // detection mode code
    uint32_t priority = 1;
    uint32_t powerUp = 3; // power-up mode code
    std::string schedule; // time range, "" for none
};

// What physical ports and LAGs have in common, keyed by interface number.
struct VS_INTERFACE_T {
    uint32_t ifNum = 0;
    std::string description;
    bool adminUp = true;
    bool linkUp = false; // while not flapping
    VS_WINDOW_T down;    // when `lasts` is set: link down in this window although linkUp
    uint32_t speed = 7;  // speed code of openapiIfSpeedGet while up
    uint32_t pvid = 1;
    std::vector<uint16_t> tagged;
    uint32_t switchMode = 0; // 0 general, 1 access, 2 trunk, 3 auto-trunk
    uint32_t frameSize = 9216;
    bool stpEnabled = true;
    bool stpEdge = false;
    bool stpBpduFilter = false;
    bool stpTcnGuard = false;
    uint32_t stpState = 3; // forwarding state code while up
    bool mrouter = false;
    uint64_t inRate = 0, outRate = 0;     // bits per second while up
    uint32_t inErrors = 0, outErrors = 0; // per hour
    uint32_t inDrops = 0, outDrops = 0;   // per hour
};

struct VS_PORT_T : VS_INTERFACE_T {
    uint32_t unit = 1, slot = 0, port = 1;
    bool attached = true;     // false: a fan-out sub-port (or root) that is not in use now
    uint32_t rootPort = 0;    // front port of a fan-out sub-port, 0 for a front port
    uint32_t autoNeg = 0;     // code of openapiIfAutoNegGet
    std::string physicalMode; // CLI column, for example "Auto" or "1000 Full"
    std::string mediaType = "Copper";
    std::string fec = "Disabled";
    std::string hwProfile; // hardware-profile mode, "" when the port has none
    uint32_t flowControl = 0;
    bool stormControl = false; // broadcast
    uint32_t dot1xControl = 3; // force authorised
    uint32_t dot1xStatus = 1;
    std::string stackCapable = "No";
    VS_OPTIC_T optic;
    VS_POE_T poe;
};

struct VS_LAG_T : VS_INTERFACE_T {
    uint32_t number = 1;
    std::string name; // "ch1"
    bool staticMode = false;
    uint32_t hashMode = 3;
    std::vector<uint32_t> members;  // interface numbers of physical ports
    std::vector<uint32_t> phantoms; // members that the platform lists although no such port exists
};

struct VS_VLAN_T {
    uint32_t id = 1;
    std::string name;
    bool isStatic = true;
    bool routed = false;
    std::string method = "Manual"; // of the routing interface
    uint32_t address = 0;          // host order
    uint32_t prefixLength = 24;
};

struct VS_SLOT_T {
    uint32_t slot = 1;
    std::string model;           // card, "" for an empty slot
    std::string configuredModel; // "" for the same
};

struct VS_FAN_T {
    uint32_t id = 1;
    std::string description;
    std::string type = "Fixed";
    uint32_t speed = 5200; // rpm
    uint32_t duty = 40;    // percent
    std::string state = "Operational";
};

struct VS_SENSOR_T {
    uint32_t id = 1;
    std::string description;
    int32_t temperature = 45; // degrees Celsius
    std::string state = "Normal";
    int32_t maximum = 52;
};

struct VS_STACK_PORT_T {
    uint32_t slot = 0, port = 1;
};

struct VS_UNIT_T {
    uint32_t unit = 1;
    std::string model;
    std::string serial;
    bool management = false;
    bool standby = false;
    bool ok = true;
    std::string codeVersion;
    std::string images[4]; // bootvar columns: active, backup, current active, next active
    std::vector<VS_SLOT_T> slots;
    std::vector<VS_FAN_T> fans;
    std::vector<VS_SENSOR_T> sensors;
    std::vector<VS_STACK_PORT_T> stackPorts;
    double cpu = 7.2;                                        // percent over five minutes, moves around this value
    uint32_t memoryFree = 1200000, memoryAllocated = 800000; // kilobytes
    bool poeSupported = false;
    uint32_t poeTotal = 0, poeThreshold = 0; // watts; consumption is the sum of the ports
    VS_WINDOW_T present;
};

struct VS_FDB_T {
    std::string mac;
    uint32_t vlan = 1;
    uint32_t ifNum = 0;
    bool learned = true;
    VS_WINDOW_T present;
};

struct VS_ARP_T {
    uint32_t address = 0; // host order
    std::string mac;
    uint32_t vlan = 1;
    VS_WINDOW_T present;
};

struct VS_LLDP_T {
    uint32_t ifNum = 0;
    uint32_t index = 1;
    uint32_t chassisSubtype = 4, portSubtype = 3;
    std::string chassisId, portId, systemName, systemDescription;
    std::vector<std::string> addresses;
    VS_WINDOW_T present;
};

struct VS_SUBSCRIBER_T {
    uint32_t address = 0;
    std::string mac;
};
struct VS_GROUP_T {
    uint32_t ifNum = 0;
    uint32_t vlan = 1;
    uint32_t address = 0;
    uint32_t version = 2;   // 1, 2 or 3
    std::string type;       // "IGMPv" and the version when empty
    uint32_t timeout = 260; // seconds
    std::vector<VS_SUBSCRIBER_T> subscribers;
    VS_WINDOW_T present;
};

struct VS_ACL_T {
    uint32_t id = 1;
    std::string name;
    std::vector<std::string> denied;  // destination addresses
    std::vector<uint32_t> interfaces; // applied inbound
};

struct VS_RADIUS_T {
    std::string address; // IPv4 text or host name
    uint32_t port = 1812;
    bool primary = true;
};

struct VS_MIRROR_SOURCE_T {
    uint32_t ifNum = 0;
    uint32_t direction = 1; // 1 both, 2 in, 3 out
};
struct VS_MIRROR_T {
    bool configured = false;
    uint32_t mode = 0;
    uint32_t destination = 0;
    uint32_t reflector = 0;
    std::vector<VS_MIRROR_SOURCE_T> sources;
};

struct VS_PTP_DOMAIN_T {
    uint32_t domain = 0;
    uint32_t vlan = 0;
};

struct VS_DATE_T {
    uint32_t year = 2026, month = 1, day = 1, hour = 0, minute = 0;
};
struct VS_PERIOD_T {
    VS_DATE_T start, end;
    uint32_t startDays = 0; // mask
    uint32_t endDay = 0;    // day number
};
struct VS_TIME_RANGE_T {
    std::string name;
    uint32_t status = 1;
    uint32_t recurrence = 2;
    std::vector<VS_PERIOD_T> periods;
};

struct VS_SYSTEM_T {
    std::string name = "switch";
    std::string mac = "02:00:00:00:00:01";
    std::string osVersion = "8.4.3.50";
    uint32_t apiVersion[4] = {1, 22, 0, 0};
    std::string bootVersion = "B1.0.0.9";
    uint32_t localUnit = 1;
    uint32_t fanMode = 4;
    uint32_t stpPriority = 32768;
    bool dot1x = false;
    bool authManager = false;
    uint32_t serviceAddress = 0, serviceMask = 0, serviceGateway = 0; // host order
    uint32_t serviceProtocol = 3;
    uint32_t managementVlan = 1;
    std::string managementMethod = "DHCP";
    uint32_t managementAddress = 0, managementMask = 0, managementGateway = 0;
    uint32_t clockPriority1 = 246, clockPriority2 = 248;
    bool autoLag = false;
    uint32_t autoLagHash = 3;
    bool autoTrunk = true;
    bool ptpTransparent = false;
    bool bufferedLogging = true;
    std::string bufferedSeverity = "info";
    bool consoleLogging = true;
    uint32_t consoleSeverity = 1;
    bool commandLogging = false;
    std::string activeImage, backupImage, activatedImage, activeLabel, backupLabel;
    int32_t utcOffset = 0;  // minutes
    std::string summerTime; // "", "EU" or "USA"
    uint32_t lagMaxMembers = 8;
    uint32_t ethernetHeader = 18;
};

struct VS_STATE_T {
    VS_SYSTEM_T system;
    std::vector<VS_UNIT_T> units;   // ascending
    std::vector<VS_PORT_T> ports;   // ascending interface number, also (unit, slot, port); fan-out sub-ports included
    std::vector<VS_LAG_T> lags;     // ascending interface number, after the ports
    std::vector<VS_VLAN_T> vlans;   // ascending
    std::vector<VS_FDB_T> fdb;      // ascending (VLAN, MAC)
    std::vector<VS_ARP_T> arp;      // ascending address
    std::vector<VS_LLDP_T> lldp;    // ascending (interface, index)
    std::vector<VS_GROUP_T> groups; // ascending (VLAN, address, interface)
    std::vector<VS_ACL_T> acls;
    std::vector<VS_RADIUS_T> radius;
    std::vector<VS_TIME_RANGE_T> timeRanges; // ascending name
    std::vector<VS_PTP_DOMAIN_T> ptpDomains;
    std::vector<std::string> log; // oldest first
    VS_MIRROR_T mirror;
    int64_t epoch = 0; // seconds since 1970 at which the scenario's time 0 lies
};

// ---- look-ups; null when there is none ----

const VS_PORT_T *vsPort(const VS_STATE_T &state, uint32_t ifNum);
const VS_PORT_T *vsPortAt(const VS_STATE_T &state, uint32_t unit, uint32_t slot, uint32_t port);
const VS_LAG_T *vsLag(const VS_STATE_T &state, uint32_t ifNum);
const VS_INTERFACE_T *vsInterface(const VS_STATE_T &state, uint32_t ifNum); // either kind
const VS_UNIT_T *vsUnit(const VS_STATE_T &state, uint32_t unit);            // present now or not
const VS_VLAN_T *vsVlan(const VS_STATE_T &state, uint32_t id);

// CLI name: "1/0/5", or "lag 2".
std::string vsPortName(const VS_PORT_T &port);
std::string vsLagName(const VS_LAG_T &lag);

// ---- what moves; `now` is seconds since the epoch ----

// The switch has been up for this long when the scenario's time begins, so that no counter starts from nothing.
constexpr double VS_SECONDS_BEFORE_EPOCH = 3600;

bool vsWindowOpen(const VS_WINDOW_T &window, double now);
// What was learned on an interface: its window is open and the unit of the port is there. A LAG is always there.
bool vsLearned(const VS_STATE_T &state, uint32_t ifNum, const VS_WINDOW_T &window, double now);
bool vsLinkUp(const VS_STATE_T &state, const VS_PORT_T &port,
              double now); // attached, enabled, its unit present, not flapped down
bool vsLagUp(const VS_STATE_T &state, const VS_LAG_T &lag, double now);            // some member is up
uint64_t vsCounter(const VS_INTERFACE_T &interface, uint32_t counter, double now); // numbers of rpcclt_openapiStatGet
uint64_t vsRate(const VS_INTERFACE_T &interface, bool inbound,
                double now); // bits per second, wobbles around the set one
double vsCpu(const VS_UNIT_T &unit, double now);
uint32_t vsFanSpeed(const VS_UNIT_T &unit, const VS_FAN_T &fan, double now); // rpm, wobbles a little around the set one
// Whether a port feeds power: it can, may, and something is attached that has a link.
bool vsPoeFeeds(const VS_STATE_T &state, const VS_PORT_T &port, double now);
uint32_t vsPoeConsumption(const VS_STATE_T &state, uint32_t unit, double now); // watts
