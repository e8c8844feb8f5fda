#include "model.h"

#include <algorithm>
#include <cmath>

// Look-ups in the state record and what moves in it. Look-ups are by position where the numbers run without gaps, else
// by halving, since long tables are walked entry by entry. Everything that moves is a function of the record and the
// time alone: no state, no random numbers, and no functions whose last digit depends on the machine.

template <typename ROW, typename KEY, typename OF> static const ROW *find(const std::vector<ROW> &rows, KEY key, OF of)
{
    auto at = std::lower_bound(rows.begin(), rows.end(), key, [&](const ROW &row, KEY k) { return of(row) < k; });
    return at != rows.end() && of(*at) == key ? &*at : nullptr;
}

const VS_PORT_T *vsPort(const VS_STATE_T &state, uint32_t ifNum)
{
    if (ifNum >= 1 && ifNum <= state.ports.size() && state.ports[ifNum - 1].ifNum == ifNum)
        return &state.ports[ifNum - 1];
    return find(state.ports, ifNum, [](const VS_PORT_T &port) { return port.ifNum; });
}

static uint64_t place(uint32_t unit, uint32_t slot, uint32_t port)
{
    return uint64_t{unit} << 48 | uint64_t{slot} << 32 | port;
}

const VS_PORT_T *vsPortAt(const VS_STATE_T &state, uint32_t unit, uint32_t slot, uint32_t port)
{
    if (unit > UINT16_MAX || slot > UINT16_MAX)
        return nullptr;
    return find(state.ports, place(unit, slot, port),
                [](const VS_PORT_T &row) { return place(row.unit, row.slot, row.port); });
}

const VS_LAG_T *vsLag(const VS_STATE_T &state, uint32_t ifNum)
{
    return find(state.lags, ifNum, [](const VS_LAG_T &lag) { return lag.ifNum; });
}

const VS_INTERFACE_T *vsInterface(const VS_STATE_T &state, uint32_t ifNum)
{
    if (const VS_PORT_T *port = vsPort(state, ifNum))
        return port;
    return vsLag(state, ifNum);
}

const VS_UNIT_T *vsUnit(const VS_STATE_T &state, uint32_t unit)
{
    return find(state.units, unit, [](const VS_UNIT_T &row) { return row.unit; });
}

const VS_VLAN_T *vsVlan(const VS_STATE_T &state, uint32_t id)
{
    return find(state.vlans, id, [](const VS_VLAN_T &vlan) { return vlan.id; });
}

std::string vsPortName(const VS_PORT_T &port)
{
    return std::to_string(port.unit) + "/" + std::to_string(port.slot) + "/" + std::to_string(port.port);
}

std::string vsLagName(const VS_LAG_T &lag)
{
    return "lag " + std::to_string(lag.number);
}

bool vsWindowOpen(const VS_WINDOW_T &window, double now)
{
    if (now < window.from)
        return false;
    if (window.lasts == 0)
        return true;
    double since = now - window.from;
    if (window.every > 0)
        since = std::fmod(since, window.every);
    return since < window.lasts;
}

// Seconds in 0..now for which a window of limited length was open.
static double secondsOpen(const VS_WINDOW_T &window, double now)
{
    if (window.lasts == 0 || now <= window.from)
        return 0;
    double since = now - window.from;
    if (window.every == 0)
        return std::min<double>(since, window.lasts);
    double rounds = std::floor(since / window.every);
    double lasts = std::min(window.lasts, window.every);
    return rounds * lasts + std::min(since - rounds * window.every, lasts);
}

static bool flappedDown(const VS_INTERFACE_T &interface, double now)
{
    return interface.down.lasts > 0 && vsWindowOpen(interface.down, now);
}

static bool carries(const VS_INTERFACE_T &interface, double now)
{
    return interface.adminUp && interface.linkUp && !flappedDown(interface, now);
}

static bool unitThere(const VS_STATE_T &state, uint32_t number, double now)
{
    const VS_UNIT_T *unit = vsUnit(state, number);
    return unit != nullptr && vsWindowOpen(unit->present, now);
}

bool vsLearned(const VS_STATE_T &state, uint32_t ifNum, const VS_WINDOW_T &window, double now)
{
    const VS_PORT_T *port = vsPort(state, ifNum);
    return vsWindowOpen(window, now) && (port == nullptr || unitThere(state, port->unit, now));
}

bool vsLinkUp(const VS_STATE_T &state, const VS_PORT_T &port, double now)
{
    return port.attached && carries(port, now) && unitThere(state, port.unit, now);
}

bool vsLagUp(const VS_STATE_T &state, const VS_LAG_T &lag, double now)
{
    if (!lag.adminUp)
        return false;
    return std::any_of(lag.members.begin(), lag.members.end(), [&](uint32_t member) {
        const VS_PORT_T *port = vsPort(state, member);
        return port != nullptr && vsLinkUp(state, *port, now);
    });
}

// Between -1 and 1, up and down once every `period` seconds, each `phase` at another place.
static double wobble(double now, double period, uint32_t phase)
{
    double at = std::fmod(now / period + (phase * 37 % 100) / 100.0, 1.0);
    return at < 0.5 ? 4 * at - 1 : 3 - 4 * at;
}

uint64_t vsRate(const VS_INTERFACE_T &interface, bool inbound, double now)
{
    if (!carries(interface, now))
        return 0;
    uint64_t set = inbound ? interface.inRate : interface.outRate;
    return static_cast<uint64_t>(static_cast<double>(set) * (1 + 0.08 * wobble(now, 60, interface.ifNum)));
}

// Traffic of an AV network: every 1000 packets hold 600 to one receiver, 385 to many, 15 to all, 800 bytes each.
static constexpr uint32_t PACKET_BYTES = 800;
static constexpr uint32_t SHARE_UCAST = 600, SHARE_MCAST = 385, SHARE_BCAST = 15;

static uint64_t packets(double octets, uint32_t share)
{
    return static_cast<uint64_t>(octets / PACKET_BYTES * share / 1000);
}

static uint64_t allPackets(double octets)
{
    return packets(octets, SHARE_UCAST) + packets(octets, SHARE_MCAST) + packets(octets, SHARE_BCAST);
}

uint64_t vsCounter(const VS_INTERFACE_T &interface, uint32_t counter, double now)
{
    if (!interface.adminUp || !interface.linkUp)
        return 0;
    double up = VS_SECONDS_BEFORE_EPOCH + std::max(now, 0.0) - secondsOpen(interface.down, now);
    double in = std::floor(static_cast<double>(interface.inRate) / 8 * up);
    double out = std::floor(static_cast<double>(interface.outRate) / 8 * up);
    auto perHour = [&](uint32_t events) {
        return static_cast<uint64_t>(events * up / 3600);
    };
    switch (counter) {
    case 1:
        return static_cast<uint64_t>(in);
    case 13:
        return packets(in, SHARE_UCAST);
    case 14:
        return packets(in, SHARE_MCAST);
    case 15:
        return packets(in, SHARE_BCAST);
    case 20:
        return static_cast<uint64_t>(out);
    case 28:
        return packets(out, SHARE_UCAST);
    case 29:
        return packets(out, SHARE_MCAST);
    case 30:
        return packets(out, SHARE_BCAST);
    case 49:
        return perHour(interface.outDrops);
    case 50:
        return perHour(interface.inDrops);
    case 51:
        return allPackets(in);
    case 52:
        return perHour(interface.inErrors);
    case 53:
        return allPackets(out);
    case 54:
        return perHour(interface.outErrors);
    case 58:
        return vsRate(interface, true, now);
    case 59:
        return vsRate(interface, false, now);
    default:
        return 0;
    }
}

double vsCpu(const VS_UNIT_T &unit, double now)
{
    return std::clamp(unit.cpu * (1 + 0.15 * wobble(now, 90, unit.unit)), 0.0, 100.0);
}

uint32_t vsFanSpeed(const VS_UNIT_T &unit, const VS_FAN_T &fan, double now)
{
    return static_cast<uint32_t>(fan.speed * (1 + 0.02 * wobble(now, 45, unit.unit * 8 + fan.id)));
}

bool vsPoeFeeds(const VS_STATE_T &state, const VS_PORT_T &port, double now)
{
    return port.poe.valid && port.poe.enable && vsLinkUp(state, port, now);
}

uint32_t vsPoeConsumption(const VS_STATE_T &state, uint32_t unit, double now)
{
    uint64_t milliwatts = 0;
    for (const VS_PORT_T &port : state.ports)
        if (port.unit == unit && vsPoeFeeds(state, port, now))
            milliwatts += port.poe.power;
    return static_cast<uint32_t>(milliwatts / 1000);
}
