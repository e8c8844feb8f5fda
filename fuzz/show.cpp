// fuzz_show: the readers of show commands. The first line names a document and a command that it asks for, the rest is
// the command's output. Which documents ask for which commands is found by watching them.

#include "target.h"

#include <control.h>

static std::vector<std::string> pairsFind();
static void commandNote(void *context, const char *name, const char *key, bool isCommand);
static std::string patternOf(const std::string &command);
static const std::vector<std::string> &pairs();

constexpr char SEPARATOR[] = ": ";
constexpr size_t SEED_SIZE = 8192; // of a large scenario's text the first so many bytes

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    targetBegin();
    INPUT_T input = inputSplit(data, size);
    const std::string &pair = pairs()[nameIndex(input.head, pairs())];
    size_t end = pair.find(SEPARATOR);
    std::string command = pair.substr(end + sizeof(SEPARATOR) - 1);

    vsTextSet(command, std::string(input.rest));
    documentCheck(documentNamed(std::string_view(pair).substr(0, end)));
    vsTextsClear();
    return 0;
}

// Every pair with the text that each shipped scenario has for the command. Arguments may name what a scenario has not.
std::vector<std::string> targetSeeds()
{
    std::vector<std::string> seeds;

    targetBegin();
    (void)pairs(); // found on the switch that the inputs are for
    for (const std::string &scenario : shippedScenarios()) {
        if (!vsLoadFile(scenario).empty())
            abort();
        for (const std::string &pair : pairs()) {
            std::string text = vsShowText(pair.substr(pair.find(SEPARATOR) + sizeof(SEPARATOR) - 1));
            if (!text.empty())
                seeds.push_back(pair + "\n" + text.substr(0, SEED_SIZE));
        }
    }
    if (!vsLoadFile(FUZZ_DIR "/switch.json").empty())
        abort();
    return seeds;
}

static const std::vector<std::string> &pairs()
{
    static const std::vector<std::string> found = pairsFind();

    return found;
}

// Of commands that differ in their argument only, a document's first.
static std::vector<std::string> pairsFind()
{
    std::vector<std::string> found;

    for (const std::string &name : documentNames()) {
        std::vector<std::string> commands;
        vsObserverSet(commandNote, &commands);
        documentCheck(documentNamed(name));
        vsObserverSet(nullptr, nullptr);
        for (const std::string &command : commands)
            found.push_back(name + SEPARATOR + command);
    }
    return found;
}

static void commandNote(void *context, const char *name, const char *, bool isCommand)
{
    auto *commands = static_cast<std::vector<std::string> *>(context);

    if (!isCommand)
        return;
    for (const std::string &known : *commands) {
        if (patternOf(known) == patternOf(name))
            return;
    }
    commands->push_back(name);
}

// "show interface *" for "show interface 1/0/1"; a command of its own stands for itself.
static std::string patternOf(const std::string &command)
{
    std::string found = command;

    for (const std::string &pattern : vsCommandNames()) {
        size_t length = pattern.size() - 1;
        if (pattern == command)
            return command;
        if (pattern.back() == '*' && command.compare(0, length, pattern, 0, length) == 0)
            found = pattern;
    }
    return found;
}
