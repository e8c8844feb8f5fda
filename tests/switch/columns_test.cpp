#include "switch/columns.h"

#include <climits>
#include <gtest/gtest.h>

TEST(Columns, TextOfAColumnIsTrimmedAndCut)
{
    struct ROW_T {
        const char *line;
        size_t column, length;
        const char *expected;
    };
    static const ROW_T rows[] = {
        {"1/0/5     Up     ", 10, 7, "Up"},
        {"1/0/5", 3, 9, "/5"},    // the line ends within the column
        {"1/0/5", 5, 9, ""},      // ... right before it
        {"1/0/5", 6, 9, ""},      // ... well before it
        {"ab  \r\n", 0, 6, "ab"}, // line ends are white space
        {"0123456789", 0, 10, "0123456"},
    };
    for (const ROW_T &row : rows) {
        char out[8];
        EXPECT_EQ(columnText(row.line, row.column, row.length, out, sizeof out), strlen(row.expected)) << row.line;
        EXPECT_STREQ(out, row.expected) << row.line;
    }
}

TEST(Columns, MissingWordAndNumberLeaveTheOutput)
{
    for (const char *line : {"", "abc", "abcd", "abcd   \r\n"}) {
        char word[8] = "kept";
        int number = 7;
        EXPECT_FALSE(columnWord(line, 4, word, sizeof word)) << line;
        EXPECT_FALSE(columnNumber(line, 4, &number)) << line;
        EXPECT_STREQ(word, "kept");
        EXPECT_EQ(number, 7);
        EXPECT_EQ(columnStrtol(line, 4), 0);
    }
    char word[4];
    EXPECT_TRUE(columnWord("abcd  longword next", 4, word, sizeof word));
    EXPECT_STREQ(word, "lon");
}

TEST(Columns, NumbersAreHeldWithinInt)
{
    struct ROW_T {
        const char *text;
        bool found;
        int value;
    };
    static const ROW_T rows[] = {
        {"12", true, 12},
        {"  -3x", true, -3},
        {"x1", false, 0},
        {"-", false, 0},
        {"99999999999999999999999", true, INT_MAX},
        {"-99999999999999999999999", true, INT_MIN},
    };
    for (const ROW_T &row : rows) {
        int value = 0;
        EXPECT_EQ(columnNumber(row.text, 0, &value), row.found) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
        EXPECT_EQ(columnStrtol(row.text, 0), row.value) << row.text;
    }
}

TEST(Columns, TakeAcceptsFewerCharactersAndFailsAtTheEnd)
{
    const char *cursor = "1/0/1    ab";
    char name[6];
    EXPECT_TRUE(columnTake(&cursor, 9, name, sizeof name));
    EXPECT_STREQ(name, "1/0/1");
    EXPECT_TRUE(columnTake(&cursor, 9, nullptr, 0));
    EXPECT_FALSE(columnTake(&cursor, 1, name, sizeof name));
    EXPECT_STREQ(name, "1/0/1");
}

TEST(TextHelpers, ReplaceNeverLengthens)
{
    struct ROW_T {
        const char *text, *pattern, *replacement, *expected;
    };
    static const ROW_T rows[] = {
        {"a,b,c", ",", ";", "a;b;c"},   {"a, b, c", ", ", ",", "a,b,c"},
        {"a,b,c", ",", " - ", "a - b"}, // cut to the old length
        {"aaa", "aa", "b", "ba"},       {"abc", "", "x", "abc"},
        {"abc", "abcd", "x", "abc"},    {"", "a", "b", ""},
    };
    for (const ROW_T &row : rows) {
        char text[16];
        textCopy(text, sizeof text, row.text);
        strReplaceAll(text, row.pattern, row.replacement);
        EXPECT_STREQ(text, row.expected) << row.text << " / " << row.pattern;
    }
    std::string longer(3000, 'a');
    strReplaceAll(longer.data(), "a", "bb");
    EXPECT_EQ(std::string(longer.c_str()), std::string(1023, 'b')); // the work buffer's length
}

TEST(TextHelpers, SearchWithoutCase)
{
    const char *haystack = "Vendor: KraMer AV";
    EXPECT_EQ(strCaseStr(haystack, "kramer"), haystack + 8);
    EXPECT_EQ(strCaseStr(haystack, ""), haystack);
    EXPECT_EQ(strCaseStr(haystack, "avx"), nullptr);
    EXPECT_EQ(strCaseStr("", ""), nullptr);
}
