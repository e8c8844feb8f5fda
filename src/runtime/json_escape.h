// json_escape.h - escaping a text for documents that are printed by a format instead of through a tree.
#pragma once

#include <cstddef>

// What becomes of control characters that have no short escape, and of bytes that are no UTF-8 character.
enum JSON_CONTROLS : int {
    JSON_CONTROLS_DROP, // left out; replaced by U+FFFD
    JSON_CONTROLS_HEX,  // "\u%04x"; copied
};

// Escape the inside of a JSON string (no quotes around it) into `out`, always terminated: '"' and '\' get a backslash,
// and backspace, form feed, line feed, carriage return and tab become \b \f \n \r \t. Characters of 0x80 and above are
// copied. A text that does not fit is cut between characters: never inside an escape, never inside a UTF-8 sequence.
// Returns the length.
size_t jsonEscape(const char *text, JSON_CONTROLS controls, char *out, size_t size);
