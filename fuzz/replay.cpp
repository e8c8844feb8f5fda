// replay - runs a target over files: the seeds and past findings of a folder, and the target's own inputs, whole and
// spoiled in ways that are the same in each run. A finding ends the process as it does while searching.
//
//     replay [--spoil N] FOLDER...     every N-th of the spoiled inputs (default: all)
//     replay --write FOLDER            writes the target's own inputs, for the search to begin with

#include "target.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

static unsigned long runs;

static int seedsWrite(const std::string &folder);
static void folderRun(const char *folder);
static void spoiledRun(unsigned every);
static std::vector<std::string> spoiled(const std::string &text);
static void run(const std::string &text);

int main(int argc, char **argv)
{
    unsigned every = 1;
    int at = 1;

    if (argc == 3 && strcmp(argv[1], "--write") == 0)
        return seedsWrite(argv[2]);
    if (argc > 2 && strcmp(argv[1], "--spoil") == 0) {
        every = std::max(1U, static_cast<unsigned>(strtoul(argv[2], nullptr, 10)));
        at = 3;
    }
    for (; at < argc; at++)
        folderRun(argv[at]);
    spoiledRun(every);
    printf("%lu inputs\n", runs);
    return runs == 0;
}

static int seedsWrite(const std::string &folder)
{
    unsigned number = 0;

    std::filesystem::create_directories(folder);
    for (const std::string &text : targetSeeds())
        textWrite(folder + "/own-" + std::to_string(number++), text);
    return 0;
}

// A folder that is not there has no findings yet.
static void folderRun(const char *folder)
{
    if (!std::filesystem::is_directory(folder))
        return;
    for (const auto &[name, text] : folderRead(folder)) {
        fprintf(stderr, "%s/%s\n", folder, name.c_str());
        run(text);
    }
}

static void spoiledRun(unsigned every)
{
    unsigned number = 0;

    for (const std::string &seed : targetSeeds()) {
        for (const std::string &text : spoiled(seed)) {
            if (number++ % every != 0)
                continue;
            fprintf(stderr, "%.60s, %u\n", seed.substr(0, seed.find('\n')).c_str(), number - 1);
            run(text);
        }
    }
}

// The first line stays, since it names what the rest is for.
static std::vector<std::string> spoiled(const std::string &text)
{
    size_t head = std::min(text.find('\n'), text.size() - 1) + 1;
    std::string name = text.substr(0, head);
    std::string rest = text.substr(head);
    std::string crlf;
    std::string joined;
    std::string other = rest;
    std::string digits = rest;

    for (size_t i = 0; i < rest.size(); i++) {
        crlf += rest[i] == '\n' ? "\r\n" : std::string(1, rest[i]);
        joined += rest[i] == '\n' ? "" : std::string(1, rest[i]);
        if (i % 13 == 5)
            other[i] = static_cast<char>(other[i] ^ (0x80 | (i % 127)));
        if (digits[i] >= '0' && digits[i] <= '9')
            digits[i] = '9';
    }
    return {text,
            name + rest.substr(0, rest.size() / 3),
            name + rest.substr(0, rest.size() * 2 / 3),
            name + crlf,
            name + joined,
            name + other,
            name + digits,
            name + rest + rest};
}

static void run(const std::string &text)
{
    runs++;
    (void)LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(text.data()), text.size());
}
