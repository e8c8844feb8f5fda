// json_difference.h - where two documents differ, in few lines for a reader.
#pragma once

#include <cJSON.h>
#include <string>
#include <vector>

// One line for each place and new value, in the order of the document; none when the texts are equal:
//
//     rows[0-3,7].pvid: 10, 20 -> 1          five rows, which held 10 or 20, hold 1
//     rows[0-1].name: "a" -> "if-1", "if-2"  new texts may differ in numbers
//     rows[3] gone
//     rows[3] new: {"port":"1"}
//     rows[2].detect gone: "aja"
//
// The payload's own key is left out of a place. In lists of different lengths elements are paired so that few values
// differ, but never those of two ports, VLANs or names; indices of elements that are gone count in the old list, all
// others in the new one.
std::vector<std::string> jsonDifference(const std::string &was, const std::string &now);

// One changed value.
struct JSON_CHANGE_T {
    std::vector<std::string> path; // keys, and "[3]" of list elements
    std::vector<std::string> was;  // one value as JSON text, none when the place is new
    std::vector<std::string> now;  // one text: the value, "new: " and the value, or "gone"
};

// All changed values, each for itself, in the order of the documents; none when one of the texts is no JSON.
std::vector<JSON_CHANGE_T> jsonChanges(const std::string &was, const std::string &now);

// A place as a JSON Pointer: "/unit/0/slot/0". `first` parts at its beginning are left out.
std::string jsonPointer(const std::vector<std::string> &path, size_t first);

// The value at a JSON Pointer ("" is the whole), null when there is none. cJSON's own is in a library that Debian does
// not have.
const cJSON *jsonPointed(const cJSON *tree, const std::string &pointer);

// A text with '#' for each number, to find those that are alike.
std::string withoutNumbers(const std::string &text);
