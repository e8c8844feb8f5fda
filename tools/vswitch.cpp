// vswitch - looks at a scenario of the virtual switch without running the daemon: does it load, and what would a show
// command print. The scenario's faults do not act here; its literal texts do.

#include <call_table.h>
#include <control.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static const char USAGE[] = "usage: vswitch --check SCENARIO\n"
                            "       vswitch --show COMMAND SCENARIO [SECONDS]\n"
                            "       vswitch --list\n"
                            "SECONDS since the scenario's epoch freeze its clock.\n";

static int check(const char *path)
{
    std::string error = vsLoadFile(path);
    if (error.empty())
        return 0;
    fprintf(stderr, "%s\n", error.c_str());
    return 2;
}

static int show(const char *command, const char *path, const char *seconds)
{
    int result = check(path);
    if (result != 0)
        return result;
    if (seconds != nullptr)
        vsClockSet(strtod(seconds, nullptr));
    std::string text = vsShowText(command);
    fwrite(text.data(), 1, text.size(), stdout);
    if (!text.empty())
        return 0;
    fprintf(stderr, "vswitch: nothing answers \"%s\"; --list names the commands\n", command);
    return 2;
}

static int list()
{
    for (const std::string &command : vsCommandNames())
        printf("%s\n", command.c_str());
    for (const OPENCLT_CALL_T &call : opencltCalls)
        printf("%s\n", call.name);
    return 0;
}

int main(int argc, char **argv)
{
    if (argc == 3 && strcmp(argv[1], "--check") == 0)
        return check(argv[2]);
    if ((argc == 4 || argc == 5) && strcmp(argv[1], "--show") == 0)
        return show(argv[2], argv[3], argv[4]);
    if (argc == 2 && strcmp(argv[1], "--list") == 0)
        return list();
    fputs(USAGE, stderr);
    return 2;
}
