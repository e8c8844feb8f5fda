#include "runtime/utf8.h"

// A character is checked for its shape, its shortest form, and its range: no surrogates, nothing above U+10FFFF.

#include <cstdint>
#include <cstdlib>
#include <cstring>

struct UTF8_FORM_T {
    uint8_t mask; // of the lead byte
    uint8_t lead;
    uint32_t least; // smallest code point that needs this form
};
constexpr UTF8_FORM_T FORMS[] = {{0x80, 0x00, 0}, {0xe0, 0xc0, 0x80}, {0xf0, 0xe0, 0x800}, {0xf8, 0xf0, 0x10000}};
constexpr uint32_t CODE_POINT_MAX = 0x10ffff;

static bool asciiOnly(const char *text, size_t length);

size_t utf8Length(const char *text)
{
    auto lead = static_cast<uint8_t>(text[0]);

    for (size_t length = 1; length <= 4; length++) {
        const UTF8_FORM_T &form = FORMS[length - 1];
        if ((lead & form.mask) != form.lead)
            continue;
        uint32_t point = lead & static_cast<uint8_t>(~form.mask);
        for (size_t i = 1; i < length; i++) {
            auto byte = static_cast<uint8_t>(text[i]);
            if ((byte & 0xc0) != 0x80)
                return 0;
            point = point << 6 | (byte & 0x3fU);
        }
        bool surrogate = point >= 0xd800 && point <= 0xdfff;
        return point < form.least || point > CODE_POINT_MAX || surrogate ? 0 : length;
    }
    return 0;
}

bool utf8Valid(const char *text)
{
    if (asciiOnly(text, strlen(text)))
        return true;
    while (*text != '\0') {
        size_t length = utf8Length(text);
        if (length == 0)
            return false;
        text += length;
    }
    return true;
}

char *utf8Clean(const char *text)
{
    char *clean = static_cast<char *>(malloc(strlen(text) * UTF8_REPLACEMENT_LENGTH + 1));
    if (clean == nullptr)
        return nullptr;
    char *out = clean;
    while (*text != '\0') {
        size_t length = utf8Length(text);
        size_t given = length == 0 ? UTF8_REPLACEMENT_LENGTH : length;
        memcpy(out, length == 0 ? UTF8_REPLACEMENT : text, given);
        out += given;
        text += length == 0 ? 1 : length;
    }
    *out = '\0';
    return clean;
}

// Most documents are; eight bytes at a time.
static bool asciiOnly(const char *text, size_t length)
{
    uint64_t seen = 0;
    size_t i = 0;

    for (; i + sizeof(uint64_t) <= length; i += sizeof(uint64_t)) {
        uint64_t bytes;
        memcpy(&bytes, text + i, sizeof(bytes));
        seen |= bytes;
    }
    for (; i < length; i++)
        seen |= static_cast<uint8_t>(text[i]);
    return (seen & 0x8080808080808080U) == 0;
}
