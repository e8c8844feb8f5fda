// json_escape.h - escaping a text for documents that are printed by a format instead of through a tree.
#pragma once

#include <cstddef>

// What becomes of control characters that have no short escape.
enum JSON_CONTROLS : int { JSON_CONTROLS_DROP, JSON_CONTROLS_HEX }; // left out, or "\u%04x"

// Escape the inside of a JSON string (no quotes around it) into `out`, always terminated: '"' and '\' get a backslash,
// and backspace, form feed, line feed, carriage return and tab become \b \f \n \r \t. Bytes of 0x80 and above are
// copied. A text that does not fit is cut between characters: never inside an escape, never inside a UTF-8 sequence.
// Returns the length.
size_t jsonEscape(const char *text, JSON_CONTROLS controls, char *out, size_t size);
