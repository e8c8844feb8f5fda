#include "support/alloc.h"
#include "support/root.h"
#include "switch/columncut.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

// What comes through a pipe from a command line: the first line, at most size-1 characters of it.
static std::string piped(const std::string &command, size_t size = CUT_SIZE)
{
    std::string line(size, '\0');
    FILE *pipe = popen(("LC_ALL=C; export LC_ALL; " + command).c_str(), "r");
    EXPECT_NE(pipe, nullptr) << command;
    if (fgets(&line[0], static_cast<int>(size), pipe) == nullptr)
        line[0] = '\0';
    while (getc(pipe) != EOF) // a writer must not be stopped by a closed pipe
        ;
    pclose(pipe);
    line.resize(strcspn(line.c_str(), "\r\n"));
    return line.find("N/A") == std::string::npos ? line : "";
}

static void fileLoad(const std::string &path, CUT_FILE_T *file)
{
    OWNED_FILE stream(fopen(path.c_str(), "r"));
    ASSERT_EQ(cutFileLoad(file, stream.get()), 0);
}

// Every cut of a text, both ways.
static void expectCutAsPiped(const std::string &path, const std::string &text)
{
    fileWrite(path, text);
    CUT_FILE_T file;
    fileLoad(path, &file);
    char out[CUT_SIZE];

    EXPECT_EQ(std::to_string(cutLineCount(&file)), piped("awk 'END{print NR}' " + path, 5)) << text;
    for (const char *wanted : {"--------", "1\\/0\\/5"}) {
        const std::string plain = wanted[0] == '-' ? wanted : "1/0/5";
        uint32_t found = cutFirstLineWith(&file, plain.c_str());
        EXPECT_EQ(found == 0 ? "" : std::to_string(found),
                  piped(std::string("awk '/") + wanted + "/{print NR; exit}' " + path, 5))
            << text;
    }
    for (uint32_t line : {1u, 2u, file.lines, file.lines + 1}) {
        const std::string row = "awk 'FNR == " + std::to_string(line) + " {print ";
        cutFirstWord(&file, line, out);
        EXPECT_EQ(out, piped(row + "$1}' " + path)) << text;
        cutColumns(&file, line, 9, 14, out);
        EXPECT_EQ(out, piped(row + "substr($0,9,14)}' " + path)) << text;
        if (line == 0)
            continue;
        cutColumns(&file, line, 80, 3, out);
        EXPECT_EQ(out, piped("sed -n '" + std::to_string(line) + "p' " + path + " | cut -c 80-82")) << text;
    }
}

TEST(ColumnCut, CutsWhatTheCommandLinesCut)
{
    TEST_ROOT_T root;
    const std::string path = root.dir + "/tmp/cut.txt";
    for (const char *text : {"", "\n", "\n\n", "x", "a\r\n\r\n", " 1/0/50  x\n1/0/5\n", "-------\n---------\n--------"})
        expectCutAsPiped(path, text);

    static const char *const pieces[] = {"1/0/5", "11/0/51", "--------", "N/A",      "N/",       "A",        "\r",
                                         "\n",    "\n",      "\t",       "\v\f",     " ",        "        ", "%s",
                                         "\\",    "'$1'",    "Yes",      "\xC3\xA9", "\xFF\x01", "["};
    std::mt19937 random(7);
    for (int round = 0; round < 25; round++) {
        std::string text;
        for (unsigned count = random() % 60; count > 0; count--)
            text += pieces[random() % std::size(pieces)] + std::string(random() % 8 == 0 ? random() % 150 : 0, 'w');
        expectCutAsPiped(path, text);
    }
}

TEST(ColumnCut, LargeFilesAndMissingMemory)
{
    TEST_ROOT_T root;
    const std::string path = root.dir + "/tmp/cut.txt";
    std::string text;
    for (int i = 1; i <= 12345; i++)
        text += i == 12340 ? "1/0/5 here\n" : "line of a large file\n";
    expectCutAsPiped(path, text);

    CUT_FILE_T file;
    EXPECT_EQ(cutFileLoad(&file, nullptr), 0);
    EXPECT_EQ(cutFirstLineWith(&file, "x"), 0u);
    for (int n : {0, 1}) {
        OWNED_FILE stream(fopen(path.c_str(), "r"));
        allocFailAt(n, ALLOC_OWN);
        EXPECT_EQ(cutFileLoad(&file, stream.get()), -7);
        EXPECT_TRUE(allocFailStop());
        EXPECT_EQ(cutLineCount(&file), 0u);
    }
}
