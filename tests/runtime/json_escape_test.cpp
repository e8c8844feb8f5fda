#include "runtime/json_escape.h"

#include <gtest/gtest.h>
#include <string>

static std::string escaped(const char *text, JSON_CONTROLS controls, size_t size)
{
    std::string out(size, '?');
    size_t length = jsonEscape(text, controls, &out[0], size);
    EXPECT_EQ(strlen(out.c_str()), length);
    return out.c_str();
}

TEST(JsonEscape, EscapesWhatWouldEndTheString)
{
    const char text[] = "a\"b\\c\b\f\n\r\t\x01\x1f\x7f\xc3\xa4\xff";
    EXPECT_EQ(escaped(text, JSON_CONTROLS_HEX, 100), "a\\\"b\\\\c\\b\\f\\n\\r\\t\\u0001\\u001f\x7f\xc3\xa4\xff");
    EXPECT_EQ(escaped(text, JSON_CONTROLS_DROP, 100), "a\\\"b\\\\c\\b\\f\\n\\r\\t\x7f\xc3\xa4\xef\xbf\xbd");
}

TEST(JsonEscape, CutsBetweenCharactersOnly)
{
    struct {
        const char *text;
        size_t size;
        const char *out;
    } cases[] = {
        {"abc", 4, "abc"},
        {"a\"", 3, "a"},
        {"a\"", 4, "a\\\""},
        {"a\x01", 7, "a"},
        {"a\x01", 8, "a\\u0001"},
        {"a\xc3\xa4", 3, "a"},
        {"a\xc3\xa4", 4, "a\xc3\xa4"},
        {"\xf0\x9f\x8e\xb5", 4, ""},
        {"\xf0\x9f\x8e\xb5", 5, "\xf0\x9f\x8e\xb5"},
        {"\xf0\x9f"
         "a",
         4,
         "\xf0\x9f"
         "a"}, // a sequence that is none
        {"abc", 1, ""},
    };
    for (const auto &one : cases)
        EXPECT_EQ(escaped(one.text, JSON_CONTROLS_HEX, one.size), one.out) << one.text << " in " << one.size;
}
