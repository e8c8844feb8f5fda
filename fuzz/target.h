// target.h - what the fuzz targets share. A target is one LLVMFuzzerTestOneInput, linked with libFuzzer for searching
// and with replay.cpp for running its seeds and past findings among the tests.
//
// An input begins with a line that names what the rest is for ("vlan_list: show vlan"), so that inputs stay readable
// and keep their meaning when documents are added. A name that nobody knows stands for any one, always the same.
#pragma once

#include "harness.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// In each target: one input, and inputs to begin with (beside those in fuzz/seeds). 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
std::vector<std::string> targetSeeds();

// Put the process on a fresh root and on fuzz/switch.json, at the first call only.
void targetBegin();

// The first line without its line end, and what follows it.
struct INPUT_T {
    std::string_view head;
    std::string_view rest;
};
INPUT_T inputSplit(const uint8_t *data, size_t size);

// Index of a name among so many.
size_t nameIndex(std::string_view name, const std::vector<std::string> &names);

// Names of all documents, and one of them by its name.
const std::vector<std::string> &documentNames();
const DOCUMENT_T &documentNamed(std::string_view name);

// Process state as at a start, without the files that processBegin writes.
void targetCold();

// Build a document as the daemon does. What it stores is checked and kept nowhere; a descriptor more than before, or a
// text that is no JSON, ends the process.
void documentCheck(const DOCUMENT_T &document);

// Texts of the files of a folder, by their names; and every rendered command of every shipped scenario.
std::vector<std::pair<std::string, std::string>> folderRead(const std::string &folder);
std::vector<std::string> shippedScenarios();
