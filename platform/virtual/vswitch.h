// vswitch.h - inside the virtual switch: how a client call and a show command reach the state.
#pragma once

#include "model.h"

#include <openclt.h>
#include <string>

// Every client call begins with this: counts, waits out the call's latency, re-reads a changed scenario file, and looks
// for a fault. Holds the switch's lock for as long as it lives.
//
//     VS_CALL_T call("openapiIfNameGet", ifNum);
//     if (call.result != OPENCLT_OK) return call.result;
//     const VS_STATE_T &state = call.state();  double now = call.now();
//
// Without a scenario every call gives OPENCLT_FAIL.
struct VS_CALL_T {
    explicit VS_CALL_T(const char *name);
    VS_CALL_T(const char *name, uint32_t key);
    VS_CALL_T(const char *name, const std::string &key);
    ~VS_CALL_T();
    VS_CALL_T(const VS_CALL_T &) = delete;
    VS_CALL_T &operator=(const VS_CALL_T &) = delete;

    const std::string *value = nullptr; // what a fault has the call answer; null: what the state says
    int result;
    const VS_STATE_T &state() const;
    double now() const;
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
