// fault_golden.h - what each fault of what a document asks for changes in the document and in the log, as a text.
#pragma once

#include "harness.h"

#include <set>

// Text of each document (of `only`, when that is not empty) by its API name, for the scenario and the root that
// scenarioBegin has made:
//
//     no fault
//           DEBUG [namesGet] 4 names                        what a cold build of the document logs
//     rows[0].name: "a" -> ""                               what becomes different in the document
//     (cache/json_difference.h), rows[1-3] gone                                        in other records that it writes
//     with their name
//       when openapiIfNameGet fails for its first key 1
//           ERROR [namesGet] no name of interface 1         ... and in the log
//       when openapiIfNameGet fails
//           ERROR [namesGet] no name of interface 1 (4 such)
//     no difference
//       when openapiIfSpeedGet fails
//
// Lines of the log have neither time nor line number. Those that differ in numbers only are one, the first, with their
// count. Debug lines are told when there is no such line if nothing fails. Files are told when they make a difference.
RECORDS_T faultTexts(const std::set<std::string> &only);
