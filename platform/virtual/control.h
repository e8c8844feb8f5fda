// control.h - driving the virtual switch from tests and tools: load a scenario, change a fact, inject a fault, move the
// clock, count calls. It belongs to the virtual switch, not to the client interface; the daemon knows nothing of it.
//
// The scenario of a process comes from the environment variable VSWITCH_SCENARIO (a path) or from
// vsLoadText/vsLoadFile. VSWITCH_TIME (seconds since the scenario's epoch) freezes its clock; VSWITCH_EPOCH (seconds
// since 1970) takes the place of the scenario's epoch, so that a run can begin at the scenario's time 0.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct VS_STATE_T;

// Load a scenario. "" on success; otherwise one line "<file>:<line>: <key>: what was expected", and the state is what
// it was before. Faults, latencies and literal texts are replaced by the scenario's; calls are counted from 0 again.
std::string vsLoadText(const std::string &json, const std::string &name = "scenario");
std::string vsLoadFile(const std::string &path);

// Back to a switch that has no facts: every call fails.
void vsUnload();

// The record, to change facts between calls (the caller keeps the orders that model.h states).
VS_STATE_T &vsState();

// Clock: seconds since the scenario's epoch, frozen at that until vsClockRun.
void vsClockSet(double seconds);
void vsClockRun();
double vsClock();

// ---- faults ----

// What an injected fault does. Client calls: VS_FAIL with a result, or VS_ANSWER. Show commands (named by their text):
// any but VS_ANSWER.
enum VS_FAULT_KIND {
    VS_FAIL,     // the call answers `result` and does nothing else; a show command leaves no file
    VS_NO_FILE,  // a show command succeeds, but there is no file
    VS_EMPTY,    // ... the file is empty
    VS_CUT,      // ... the file ends after `bytes` bytes
    VS_CUT_PART, // ... the file ends after bytes/1000 of its length
    VS_CRLF,     // ... its lines end in CR LF
    VS_GARBAGE,  // ... bytes are replaced by pseudo-random ones, from a fixed seed
    VS_ANSWER,   // a client call succeeds with `value`
};
struct VS_FAULT_T {
    std::string name; // call ("openapiIfNameGet", with or without rpcclt_) or command ("show vlan"); "*" is any call
    std::string key;  // "" any; otherwise the call's key as text: an interface number, a unit, a name ...
    uint32_t nth = 0; // 0: every use; n: only the n-th matching one, from 1
    VS_FAULT_KIND kind = VS_FAIL;
    int result = -1;
    uint32_t bytes = 0;
    uint32_t from = 0;  // seconds since the epoch from which it acts ...
    uint32_t until = 0; // ... and at which it ends; 0: never
    // Of each output of the call in turn, with a zero byte between: a text (cut to the room), a number, a place
    // ("unit/slot/port"), or the bytes of a block or record. The result, of a call that has no output.
    std::string value;
};
void vsFaultAdd(const VS_FAULT_T &fault);
void vsFaultsClear();

// Exact output of a show command instead of the rendered one.
void vsTextSet(const std::string &command, const std::string &text);
void vsTextsClear();

// Rendered output of a show command as the platform would write it now; "" for an unknown command.
std::string vsShowText(const std::string &command);

// ---- calls ----

// Called for every client call and show command before it answers; null: nobody. For tests that list calls by document.
// `name` is a call, or a command's text when `isCommand`.
using VS_OBSERVER_T = void (*)(void *context, const char *name, const char *key, bool isCommand);
void vsObserverSet(VS_OBSERVER_T observer, void *context);

// Calls of a name since the last load or reset; "" counts all calls. Show commands are counted by their text.
uint64_t vsCallCount(const std::string &name);

// Least room in bytes that a call has been offered for a text or block, likewise; UINT32_MAX: none.
uint32_t vsRoomOffered(const std::string &name);
void vsCallsReset();

// The commands that are rendered, where " *" stands for an argument.
std::vector<std::string> vsCommandNames();
