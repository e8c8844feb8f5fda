// utf8.h - which bytes are characters. Texts come from the wire, from files of other programs and from CLI columns that
// cut a character in two; a document that is not UTF-8 is refused by its readers as a whole.
#pragma once

#include <cstddef>

// Bytes of the UTF-8 character at `text` (1 to 4); 0 when the byte there begins none. A terminator counts 1.
[[nodiscard]] size_t utf8Length(const char *text);

// Whether a text is UTF-8 from end to end.
[[nodiscard]] bool utf8Valid(const char *text);

// Stands for each byte that is no character: U+FFFD.
constexpr char UTF8_REPLACEMENT[] = "\xef\xbf\xbd";
constexpr size_t UTF8_REPLACEMENT_LENGTH = 3;

// A newly allocated copy with each byte that is no character replaced, which the caller frees; null without memory.
[[nodiscard]] char *utf8Clean(const char *text);
