// engine.h - between the parts of the virtual switch's engine: the scenario as loaded, its loader, and the use of a
// name.
#pragma once

#include "control.h"
#include "model.h"

#include <map>
#include <string>
#include <vector>

// A scenario: the state and how the interface misbehaves.
struct VS_SCENARIO_T {
    VS_STATE_T state;
    std::vector<VS_FAULT_T> faults;
    std::map<std::string, uint32_t> latency;  // microseconds by call (without rpcclt_) or command
    std::map<std::string, std::string> texts; // literal output by command
    std::vector<std::string> files;           // every file that was read or looked for, also when the load fails
};

// "" and a filled scenario, or one error line; `name` stands in the line, `directory` is where text files are looked
// for.
std::string vsScenarioParse(const std::string &json, const std::string &name, const std::string &directory,
                            VS_SCENARIO_T &scenario);
std::string vsScenarioRead(const std::string &path, VS_SCENARIO_T &scenario);

// Output of a command, literal or rendered; false when it is not known. The caller holds the lock.
bool vsShow(const std::string &command, std::string &text);
bool vsShowRendered(const std::string &command); // whether there is a renderer, for a command with its arguments
bool vsLiteral(const std::string &command, std::string &text);
