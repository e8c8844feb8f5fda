// columns.h - bounded readers for lines of fixed columns, and the text helpers of the parsers.
//
// A text from outside never decides how much memory is written, and a line shorter than a column gives what the comment
// says. Columns are 0-based.
#pragma once

#include <cstddef>
#include <cstdint>

// Up to `length` characters from `column`, trimmed of white space at both ends, cut to size-1; "" when the line ends
// before the column. Returns the length kept.
size_t columnText(const char *line, size_t column, size_t length, char *out, size_t size);

// The rest of the line from `column` without its line end (CR, LF), cut to size-1; "" when the line is shorter.
size_t columnRest(const char *line, size_t column, char *out, size_t size);

// The word (run of non-blanks after leading white space) at `column`, cut to size-1. False, and *out untouched, when
// the line ends before a word.
[[nodiscard]] bool columnWord(const char *line, size_t column, char *out, size_t size);

// The decimal number at `column` (leading white space and sign allowed), as sscanf's "%d" reads it, but held within
// int. False, and *value untouched, when there is none.
[[nodiscard]] bool columnNumber(const char *line, size_t column, int *value);

// Base-10 conversion as strtol does it, held within int; 0 when there is no number or the line is shorter.
int columnStrtol(const char *line, size_t column);

// One "%Nc" step: moves *cursor over up to `count` characters, copying them (cut to size-1, terminated) when `out` is
// not null. False at the end of the text, as sscanf fails there; fewer characters than asked are accepted.
[[nodiscard]] bool columnTake(const char **cursor, size_t count, char *out, size_t size);

// Whether the line begins with the prefix.
[[nodiscard]] bool textBegins(const char *line, const char *prefix);

// Copy, cut to size-1, always terminated.
void textCopy(char *out, size_t size, const char *text);

// Cut trailing white space in place; a null text is returned as is. Both return their argument.
char *strTrimRight(char *text);
char *strTrimLeft(char *text);

// Replace every occurrence, left to right, in place; the text never gets longer than it was (a longer result is cut to
// the old length). Works in 1024 bytes.
void strReplaceAll(char *text, const char *pattern, const char *replacement);

// First occurrence ignoring case; an empty needle matches at the start, an empty haystack never.
const char *strCaseStr(const char *haystack, const char *needle);

void strToUpper(char *text);

// IPv4 mask of a prefix length 0 to 32 (above: 32) into 16 bytes, for example 20 gives 255.255.240.0.
void prefixLenMaskText(uint32_t prefixLength, char out[16]);

// IPv4 address in host order as dotted text into 16 bytes.
void ipv4Text(uint32_t address, char out[16]);

// MAC address as six upper-case pairs, joined by the separator when it is printable, into 18 bytes.
void macText(const uint8_t mac[6], char out[18], char separator = ':');

// A number for a file name: the C generator, seeded with the nanoseconds of the clock.
int randomSuffixGet();

// File name of a profile type: every blank an underscore, cut to size-1. False, and out "", for a type with a slash,
// which would name a file of another folder.
[[nodiscard]] bool profileFileName(const char *profileType, char *out, size_t size);
