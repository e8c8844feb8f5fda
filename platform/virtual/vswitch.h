// vswitch.h - inside the virtual switch: how a client call and a show command reach the state.
#pragma once

#include "control.h"
#include "model.h"

#include <functional>
#include <openclt.h>
#include <string>

// A client call in progress: it is counted, its latency has been waited out, a changed scenario file has been read
// again, and a fault has been looked for. Holds the switch's lock for as long as it lives.
struct VS_CALL_T {
    // `name` with or without rpcclt_, or the text of a show command; `key` gives the key as text.
    VS_CALL_T(const char *name, const std::function<std::string()> &key, bool isCommand);
    ~VS_CALL_T();
    VS_CALL_T(const VS_CALL_T &) = delete;
    VS_CALL_T &operator=(const VS_CALL_T &) = delete;

    const VS_FAULT_T *fault; // what strikes; null: nothing
    int result;              // of a fault that lets the call fail; OPENCLT_FAIL without a scenario
    uint32_t key = 0;        // a key that is a number
    const VS_STATE_T &state() const;
    double now() const;
    void roomNote(const char *name, uint32_t room) const; // offered for a text or block
};

// Text into a buffer descriptor as openclt.h says: OPENCLT_FAIL when it does not fit, else `size` becomes the length
// with terminator.
int vsTextOut(const std::string &text, openclt_buffer_t *buffer);
int vsBytesOut(const void *bytes, uint32_t length, openclt_buffer_t *buffer);
std::string vsTextIn(const openclt_buffer_t *buffer);

// ---- show commands ----

// One show command: `command` may end in one " *" that matches any argument, handed over as `argument`.
using VS_SHOW_T = std::string (*)(const VS_STATE_T &state, double now, const std::string &argument);
struct VS_SHOW_ROW_T {
    const char *command;
    VS_SHOW_T render;
};

// Rows of each show_*.cpp, joined in show.cpp.
extern const VS_SHOW_ROW_T vsShowSystem[];
extern const VS_SHOW_ROW_T vsShowPorts[];
extern const VS_SHOW_ROW_T vsShowTraffic[];
extern const VS_SHOW_ROW_T vsShowFeatures[];
// (each ends with a row whose command is null)

// Printf into a string, for column-exact lines.
std::string vsFormat(const char *format, ...) __attribute__((format(printf, 1, 2)));
