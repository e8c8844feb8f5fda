// floor.h - the least that a stored document costs when its values are at hand.
#pragma once

#include "runtime/owned.h"

#include <string>

// A stored document, taken apart beforehand.
struct FLOOR_T {
    std::string name; // API name
    std::string text; // as stored
    std::string key;  // of the payload in the envelope
    OWNED_JSON payload;
    bool formatted; // how the builder prints its payload
    bool enveloped; // false: written by the builder in a form of its own; `payload` is the whole text's tree
};

// False when the text is no response with a payload.
[[nodiscard]] bool floorPrepare(const std::string &name, const std::string &text, bool formatted, FLOOR_T *document);

// Build the payload's tree and print it, parse it into the envelope and print that (not for a form of the builder's
// own), look the record up in the database and compare. False when the result is not the stored text, so that a floor
// never measures something else.
[[nodiscard]] bool floorRun(const FLOOR_T &document, const char *database);
