#include "switch/columns.h"

// Bounded readers for the fixed columns of CLI tables, and the small text helpers that the parsers share. Uses the
// clock of runtime/ for random file names and nothing else. White space and digits are the C locale's.

#include "runtime/clock.h"

#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
constexpr size_t REPLACE_WORK_SIZE = 1024;

// Characters of the line from a column on; null when the line ends before it.
const char *columnAt(const char *line, size_t column);
// Copy so many characters, cut to size-1, terminated; the length kept.
size_t copyCut(char *out, size_t size, const char *from, size_t length);
bool prefixIgnoringCase(const char *text, const char *prefix);
int heldWithinInt(long value);
bool isBlank(char character);
} // namespace

size_t columnText(const char *line, size_t column, size_t length, char *out, size_t size)
{
    const char *from = columnAt(line, column);
    if (from == nullptr)
        return copyCut(out, size, "", 0);
    size_t end = strnlen(from, length);
    size_t begin = 0;
    while (begin < end && isBlank(from[begin]))
        begin++;
    while (end > begin && isBlank(from[end - 1]))
        end--;
    return copyCut(out, size, from + begin, end - begin);
}

size_t columnRest(const char *line, size_t column, char *out, size_t size)
{
    const char *from = columnAt(line, column);
    if (from == nullptr)
        from = "";
    return copyCut(out, size, from, strcspn(from, "\r\n"));
}

bool columnWord(const char *line, size_t column, char *out, size_t size)
{
    const char *from = columnAt(line, column);
    if (from == nullptr)
        return false;
    while (isBlank(*from))
        from++;
    size_t length = 0;
    while (from[length] != '\0' && !isBlank(from[length]))
        length++;
    if (length == 0)
        return false;
    copyCut(out, size, from, length);
    return true;
}

bool columnNumber(const char *line, size_t column, int *value)
{
    const char *from = columnAt(line, column);
    if (from == nullptr)
        return false;
    char *end = nullptr;
    long number = strtol(from, &end, 10);
    if (end == from)
        return false;
    *value = heldWithinInt(number);
    return true;
}

int columnStrtol(const char *line, size_t column)
{
    int value = 0;
    return columnNumber(line, column, &value) ? value : 0;
}

bool columnTake(const char **cursor, size_t count, char *out, size_t size)
{
    size_t taken = strnlen(*cursor, count);
    if (taken == 0)
        return false;
    if (out != nullptr)
        copyCut(out, size, *cursor, taken);
    *cursor += taken;
    return true;
}

bool textBegins(const char *line, const char *prefix)
{
    return strncmp(line, prefix, strlen(prefix)) == 0;
}

void textCopy(char *out, size_t size, const char *text)
{
    copyCut(out, size, text, strlen(text));
}

char *strTrimRight(char *text)
{
    if (text == nullptr)
        return nullptr;
    size_t length = strlen(text);
    while (length > 0 && isBlank(text[length - 1]))
        text[--length] = '\0';
    return text;
}

char *strTrimLeft(char *text)
{
    if (text == nullptr)
        return nullptr;
    const char *from = text;
    while (isBlank(*from))
        from++;
    memmove(text, from, strlen(from) + 1);
    return text;
}

void strReplaceAll(char *text, const char *pattern, const char *replacement)
{
    size_t length = strlen(text);
    size_t patternLength = strlen(pattern);
    size_t replacementLength = strlen(replacement);
    if (patternLength == 0)
        return;
    char work[REPLACE_WORK_SIZE];
    size_t room = sizeof work - 1;
    size_t used = 0;
    for (const char *from = text; *from != '\0' && used < room;) {
        bool found = strncmp(from, pattern, patternLength) == 0;
        const char *piece = found ? replacement : from;
        size_t pieceLength = found ? replacementLength : 1;
        if (pieceLength > room - used)
            pieceLength = room - used;
        memcpy(work + used, piece, pieceLength);
        used += pieceLength;
        from += found ? patternLength : 1;
    }
    copyCut(text, length + 1, work, used);
}

const char *strCaseStr(const char *haystack, const char *needle)
{
    for (; *haystack != '\0'; haystack++) {
        if (prefixIgnoringCase(haystack, needle))
            return haystack;
    }
    return nullptr;
}

void strToUpper(char *text)
{
    for (; *text != '\0'; text++)
        *text = static_cast<char>(toupper(static_cast<unsigned char>(*text)));
}

void prefixLenMaskText(uint32_t prefixLength, char out[16])
{
    uint32_t mask = UINT32_MAX;
    if (prefixLength == 0)
        mask = 0;
    else if (prefixLength < 32)
        mask = UINT32_MAX << (32 - prefixLength);
    ipv4Text(mask, out);
}

void ipv4Text(uint32_t address, char out[16])
{
    snprintf(out, 16, "%u.%u.%u.%u", address >> 24, (address >> 16) & 0xFFU, (address >> 8) & 0xFFU, address & 0xFFU);
}

void macText(const uint8_t mac[6], char out[18], char separator)
{
    static constexpr char DIGITS[] = "0123456789ABCDEF";
    bool printable = separator >= ' ' && separator <= '~';
    for (int i = 0; i < 6; i++) {
        if (i > 0 && printable)
            *out++ = separator;
        *out++ = DIGITS[mac[i] >> 4];
        *out++ = DIGITS[mac[i] & 0xF];
    }
    *out = '\0';
}

int randomSuffixGet()
{
    struct timespec now;
    ClockNow(&now);
    srand(static_cast<unsigned>(now.tv_nsec));
    return rand();
}

bool profileFileName(const char *profileType, char *out, size_t size)
{
    const bool named = strchr(profileType, '/') == nullptr;

    textCopy(out, size, named ? profileType : "");
    for (; *out != '\0'; out++) {
        if (*out == ' ')
            *out = '_';
    }
    return named;
}

namespace {
const char *columnAt(const char *line, size_t column)
{
    return strnlen(line, column) < column ? nullptr : line + column;
}

size_t copyCut(char *out, size_t size, const char *from, size_t length)
{
    size_t kept = length < size ? length : size - 1;
    memcpy(out, from, kept);
    out[kept] = '\0';
    return kept;
}

bool prefixIgnoringCase(const char *text, const char *prefix)
{
    for (; *prefix != '\0'; text++, prefix++) {
        if (tolower(static_cast<unsigned char>(*text)) != tolower(static_cast<unsigned char>(*prefix)))
            return false;
    }
    return true;
}

int heldWithinInt(long value)
{
    if (value > INT_MAX)
        return INT_MAX;
    return value < INT_MIN ? INT_MIN : static_cast<int>(value);
}

bool isBlank(char character)
{
    return isspace(static_cast<unsigned char>(character)) != 0;
}
} // namespace
