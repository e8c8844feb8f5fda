// case_golden.h - what a document becomes when the switch or the files beside the daemon are different, as a text.
#pragma once

#include <string>

// Text of a file of cases; false (said on stderr) when it cannot be run. The file:
//
//     {"documents": ["sw_lag_cfg"],               default: the file's name; built in this order
//      "given": {"files": {"tmp/x": "text"},      files of the root before a build; no text: JSON; null: removed;
//                                                "tmp/x/": a folder, "tmp/x|": a pipe, "tmp/x -> /y": a link
//                "vlanInfo": "delete ...",         SQL run on the profile database, and on that of vendors
//                "oui": "...", "at": 600},         seconds since the epoch
//      "scenario": {...},
//      "cases": {"a row is cut": {"texts": {...}}}}
//
// A case holds what is different: its members take the place of the scenario's, in objects member by member (null takes
// one away); its own "given" comes on top of the file's. The text: the documents of the scenario itself, and for each
// case the lines of differences.h.
[[nodiscard]] bool caseText(const std::string &file, const std::string &document, std::string *text);
