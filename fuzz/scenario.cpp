// fuzz_scenario: the scenario loader. What it refuses it refuses with one line that names the place; what it takes can
// be shown by every command.

#include "target.h"

#include <control.h>
#include <cstdlib>
#include <model.h>
#include <unistd.h>

static void commandsShow();

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // An empty folder, so that a text file that a scenario names is not there.
    static const bool moved = chdir("/var/empty") == 0 || chdir("/") == 0;
    std::string text(reinterpret_cast<const char *>(data), size);
    (void)moved;

    if (text.find("/dev") != std::string::npos || text.find("\\u") != std::string::npos)
        return 0; // a device read to its end is no finding
    std::string error = vsLoadText(text);
    if (error.empty())
        commandsShow();
    else if (error.rfind("scenario:", 0) != 0 || error.find('\n') != std::string::npos) {
        fprintf(stderr, "no error line: %s\n", error.c_str());
        abort();
    }
    vsUnload();
    return 0;
}

static void commandsShow()
{
    constexpr size_t SMALL = 60; // ports; a larger switch is shown in the same way, only longer

    vsClockSet(FROZEN_AT);
    if (vsState().ports.size() > SMALL)
        return;
    for (std::string command : vsCommandNames()) {
        if (command.back() == '*')
            command.replace(command.size() - 1, 1, "1/0/1");
        (void)vsShowText(command);
    }
}

std::vector<std::string> targetSeeds()
{
    std::vector<std::string> seeds = {textRead(FUZZ_DIR "/switch.json")};

    for (const std::string &scenario : shippedScenarios())
        seeds.push_back(textRead(scenario));
    return seeds;
}
