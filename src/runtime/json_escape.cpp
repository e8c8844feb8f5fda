#include "runtime/json_escape.h"

// Documents with a fixed spacing are printed by a format; the texts in them come from the wire and from files of other
// programs, and must not end the string they stand in. Nothing is allocated here.

#include "runtime/utf8.h"

#include <cstdio>
#include <cstring>

// Longest escape: "\u001f" with its terminator.
constexpr size_t ESCAPE_SIZE = 7;

static bool asItIs(char character);
static size_t characterEscape(char character, JSON_CONTROLS controls, char escape[ESCAPE_SIZE]);

size_t jsonEscape(const char *text, JSON_CONTROLS controls, char *out, size_t size)
{
    size_t length = 0;

    if (size == 0)
        return 0;
    while (*text != '\0') {
        if (asItIs(*text)) { // nearly all of a text
            if (length + 1 >= size)
                break;
            out[length++] = *text++;
            continue;
        }
        char escape[ESCAPE_SIZE];
        size_t taken = utf8Length(text);
        size_t given = taken;
        const char *piece = text;

        if (taken == 0) { // no character
            taken = 1;
            given = controls == JSON_CONTROLS_DROP ? UTF8_REPLACEMENT_LENGTH : 1;
            piece = controls == JSON_CONTROLS_DROP ? UTF8_REPLACEMENT : text;
        } else if (taken == 1) {
            given = characterEscape(*text, controls, escape);
            piece = escape;
        }
        if (length + given >= size)
            break;
        memcpy(out + length, piece, given);
        length += given;
        text += taken;
    }
    out[length] = '\0';
    return length;
}

static bool asItIs(char character)
{
    auto byte = static_cast<unsigned char>(character);
    return byte >= 0x20 && byte < 0x80 && character != '"' && character != '\\';
}

static size_t characterEscape(char character, JSON_CONTROLS controls, char escape[ESCAPE_SIZE])
{
    static const char special[] = "\"\\\b\f\n\r\t";
    static const char letters[] = "\"\\bfnrt";
    const char *found = strchr(special, character);

    if (found != nullptr) {
        escape[0] = '\\';
        escape[1] = letters[found - special];
        return 2;
    }
    if (static_cast<unsigned char>(character) < 0x20) {
        if (controls == JSON_CONTROLS_DROP)
            return 0;
        snprintf(escape, ESCAPE_SIZE, "\\u%04x", static_cast<unsigned>(character));
        return 6;
    }
    escape[0] = character;
    return 1;
}
