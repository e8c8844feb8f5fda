// main.cpp - devmgrctl: what the daemon does, what the cache holds and how it changes, for people on the switch.

#include "devmgrctl.h"

#include "runtime/log.h"
#include "runtime/paths.h"

#include <cstdio>
#include <cstring>

struct WORD_T {
    const char *name;
    const char *arguments;
    const char *text; // one line for the list
    const char *more; // for its own --help
    size_t least;     // arguments
    size_t most;
    int (*run)(const WORDS_T &arguments);
};

constexpr size_t ANY = 1000;

static const WORD_T words[] = {
    {"status", "[NAME]", "whether all is well, how old each document is",
     "What is failing or overdue stands first. With NAME all that is known of that document.\n"
     "Status: 0 when all is well, 1 when something is failing, overdue or not running, 2 without an account.\n",
     0, 1, statusWord},
    {"list", "", "names of the documents in the cache", "", 0, 0, listWord},
    {"get", "NAME [POINTER]", "one document, or a value in it",
     "POINTER is a JSON Pointer into the document, or into its payload: /systemInfo/model or /model.\n"
     "Status: 1 when there is no such document or value.\n",
     1, 2, getWord},
    {"watch", "[--fields] [NAME]...", "what changes, as it changes; Ctrl-C ends it",
     "Without NAME all documents. With --fields each changed value:\n"
     "  interfaces_status /unit/0/slot/0/port/4/linkState 1 -> 0\n",
     0, ANY, watchWord},
    {"diff", "OLD NEW", "two cache files, value by value", "Status: 0 when they hold the same, 1 when not.\n", 2, 2,
     diffWord},
    {"rebuild", "NAME", "rebuild one document now, on a schedule or not",
     "As root. Asks the platform with the environment of the running daemon.\n", 1, 1, rebuildWord},
    {"commands", "", "the show commands: result, bytes, lines, rows",
     "\"no rows\": the text had lines, and none of them was recognised.\n"
     "Status: 1 when a command failed or gave no rows.\n",
     0, 0, commandsWord},
    {"metrics", "", "the same as Prometheus' text", "", 0, 0, metricsWord},
    {"log", "[LEVEL]", "show or set the log level", "LEVEL is error, warn, info or debug, or 3, 4, 6 or 7.\n", 0, 1,
     logWord},
    {"fibre", "", "ask the daemon for fresh optics", "As root. They are there within a cycle.\n", 0, 0, fibreWord},
};

int trouble(const std::string &what)
{
    fprintf(stderr, "devmgrctl: %s\n", what.c_str());
    return CTL_TROUBLE;
}

std::string durationText(double seconds)
{
    if (seconds < 0)
        seconds = 0;
    if (seconds < 120)
        return std::to_string(static_cast<long>(seconds)) + " s";
    if (seconds < 7200)
        return std::to_string(static_cast<long>(seconds / 60)) + " min";
    if (seconds < 172800)
        return std::to_string(static_cast<long>(seconds / 3600)) + " h";
    return std::to_string(static_cast<long>(seconds / 86400)) + " d";
}

static void usagePrint(FILE *where)
{
    fputs("usage: devmgrctl [--root DIR] WORD ...\n"
          "Looks at devmgr and its cache; takes nothing from the programs that read it.\n\n",
          where);
    for (const WORD_T &word : words) {
        std::string use = std::string(word.name) + " " + word.arguments;
        fprintf(where, "  %-28s %s\n", use.c_str(), word.text);
    }
    fputs("\n  --root DIR   root that the daemon was given (default: none, the switch's own)\n"
          "  --version    show the version\n"
          "\"devmgrctl WORD --help\" says more of one. devmgrctl(1).\n",
          where);
}

static int wordRun(const WORD_T &word, const WORDS_T &arguments)
{
    for (const std::string &argument : arguments) {
        if (argument == "--help" || argument == "-h") {
            printf("usage: devmgrctl %s %s\n%s: %s\n%s", word.name, word.arguments, word.name, word.text, word.more);
            return CTL_OK;
        }
    }
    if (arguments.size() < word.least || arguments.size() > word.most)
        return trouble(std::string("usage: devmgrctl ") + word.name + " " + word.arguments);
    return word.run(arguments);
}

int main(int argc, char **argv)
{
    int at = 1;

    LogInit(0, 8, "devmgrctl"); // the daemon's log is the daemon's
    for (; at < argc && strncmp(argv[at], "--", 2) == 0; at++) {
        std::string option = argv[at];
        if (option == "--help") {
            usagePrint(stdout);
            return CTL_OK;
        }
        if (option == "--version") {
            puts("devmgrctl " DEVMGR_VERSION);
            return CTL_OK;
        }
        bool joined = option.compare(0, 7, "--root=") == 0;
        if (!joined && (option != "--root" || at + 1 == argc))
            return trouble("option " + option +
                           (option == "--root" ? " needs a directory" : " is unknown (see --help)"));
        std::string root = joined ? option.substr(7) : argv[++at];
        if (PathsInit(root.c_str(), nullptr) != 0)
            return trouble("--root " + root + ": longer than " + std::to_string(PATH_ROOT_MAX) + " characters");
    }
    if (at == argc) {
        usagePrint(stderr);
        return CTL_TROUBLE;
    }
    for (const WORD_T &word : words) {
        if (strcmp(word.name, argv[at]) == 0)
            return wordRun(word, WORDS_T(argv + at + 1, argv + argc));
    }
    fprintf(stderr, "devmgrctl: no word '%s'; there are:", argv[at]);
    for (const WORD_T &word : words)
        fprintf(stderr, " %s", word.name);
    fputc('\n', stderr);
    return CTL_TROUBLE;
}
