#include "restcache/link_watch.h"

// Ports are known by their interface numbers; those from 1000 on are not watched. A port whose state cannot be read
// counts as not looked at.

#include "runtime/process_state.h"
#include "switch/walk.h"

constexpr uint32_t WATCHED_INTERFACES = 1000;
constexpr uint8_t VENDOR_REPEATS = 2; // further looks that count as "came up"

struct LINK_WATCH_T {
    uint32_t state[WATCHED_INTERFACES] = {};
    uint8_t repeats[WATCHED_INTERFACES] = {}; // left
    bool first = true;
};
static LINK_WATCH_T watch;

static void watchReset()
{
    watch = LINK_WATCH_T();
}
static PROCESS_STATE_T watchState(watchReset);

static bool cameUp(uint32_t ifNum, uint32_t state)
{
    uint8_t *repeats = &watch.repeats[ifNum];

    if (state != OPENCLT_LINK_UP) {
        *repeats = 0;
        return false;
    }
    if (watch.first || watch.state[ifNum] != OPENCLT_LINK_UP) {
        *repeats = VENDOR_REPEATS;
        return true;
    }
    if (*repeats == 0)
        return false;
    (*repeats)--;
    return true;
}

bool linkWatch(CLIENT_HANDLE_T *clientHandle)
{
    bool any = false;

    for (IF_WALK_T port = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port)) {
        uint32_t state = OPENCLT_LINK_DOWN;

        if (port.ifNum >= WATCHED_INTERFACES || openapiIfLinkStateGet(clientHandle, port.ifNum, &state) != OPENCLT_OK)
            continue;
        any |= cameUp(port.ifNum, state);
        watch.state[port.ifNum] = state;
    }
    watch.first = false;
    return any;
}

void linkWatchRestart()
{
    watch.first = true;
}
