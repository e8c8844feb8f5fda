// harness.h - the daemon's documents, made in a tool's own process: a seeded root, a scenario at a frozen time, one
// document or all of them, and what the cache holds afterwards. Knows no builder.
#pragma once

#include "restcache/document.h"

#include <map>
#include <string>
#include <vector>

// Seconds since the scenario's epoch at which everything stands still, unless a tool says otherwise.
constexpr double FROZEN_AT = 600;

// Text of each record by its API name.
using RECORDS_T = std::map<std::string, std::string>;

// A fresh root with the files that other programs leave there for this scenario, with vendors that are the same on
// every host; "" (said on stderr) when it cannot be made. rootCopy makes a second one of it. Removed by rootRemove.
[[nodiscard]] std::string rootSeed(const std::string &scenario);
[[nodiscard]] std::string rootCopy(const std::string &root);
void rootRemove(const std::string &root);

// Put the process on a root and, when `scenario` is not "", on a scenario frozen at so many seconds since its epoch.
// False (said on stderr) when the scenario is refused. The table must be registered.
[[nodiscard]] bool switchUse(const std::string &root, const std::string &scenario, double seconds = FROZEN_AT);

// All of that for a scenario, and every document built once: its root, "" (said on stderr) when it cannot be.
[[nodiscard]] std::string scenarioBegin(const std::string &scenario);

// The time of day and the switch's time, together: seconds since the scenario's epoch, or so many more.
void timeSet(double seconds);
void timeMove(double seconds);

// The process as it is when the monitor's task begins: state reset, clock at the frozen time, a client session, a
// table.
void processBegin();

// Every document that says something of the switch, in the table's order.
std::vector<DOCUMENT_T> documentsListed();

// Build and store: one document, as a cycle does; and what the monitor stores at its start, with one cycle, and each
// document that no cycle builds.
void documentRun(const DOCUMENT_T &row);
void documentsRunAll();

RECORDS_T recordsRead();
void recordsWrite(const RECORDS_T &records); // these and no others, behind the daemon's back
void recordsDelete(const std::vector<std::string> &names);

std::string textRead(const std::string &path); // "" when there is no such file
void textWrite(const std::string &path, const std::string &text);
