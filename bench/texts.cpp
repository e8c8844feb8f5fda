// texts.cpp - the processor time that a document takes from its show texts to its stored record, and the texts, for a
// rival to read.
//
// DIR receives the text of each show command that one of the documents runs, in a file named after it with "_" for each
// blank. The switch then plays those texts back, so that rendering them is in nobody's time. One line a document: its
// name, the microseconds of each run, and "|" before each command.

#include "builders.h"
#include "documents.h"
#include "restcache/builder.h"

#include <algorithm>
#include <control.h>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <set>

constexpr int RUNS = 15;

static void documentTime(const DOCUMENT_T &document, const std::string &folder);
static void textKeep(const std::string &command, const std::string &folder);
static void observe(void *context, const char *name, const char *key, bool isCommand);
static double processorMicroseconds();

int main(int argc, char **argv)
{
    if (argc < 4) {
        fputs("usage: texts SCENARIO DIR NAME...\n", stderr);
        return 2;
    }
    std::set<std::string> names(argv + 3, argv + argc);
    std::string root = rootSeed(argv[1]);
    buildersRegister();
    if (root.empty() || !switchUse(root, argv[1]))
        return 2;
    processBegin();
    documentsRunAll();
    for (const DOCUMENT_T &document : documentsListed()) {
        if (names.count(document.name) != 0)
            documentTime(document, argv[2]);
    }
    rootRemove(root);
    return 0;
}

static void documentTime(const DOCUMENT_T &document, const std::string &folder)
{
    std::set<std::string> commands;

    vsObserverSet(observe, &commands);
    documentRun(document);
    vsObserverSet(nullptr, nullptr);
    for (const std::string &command : commands)
        textKeep(command, folder);
    printf("%s", document.name);
    for (int run = 0; run < RUNS; run++) {
        recordsDelete({document.name}); // so that each run stores
        double begin = processorMicroseconds();
        documentRun(document);
        printf(" %.0f", processorMicroseconds() - begin);
    }
    for (const std::string &command : commands)
        printf("|%s", command.c_str());
    putchar('\n');
}

static void textKeep(const std::string &command, const std::string &folder)
{
    std::string file = command, text = vsShowText(command);

    std::replace(file.begin(), file.end(), ' ', '_');
    std::replace(file.begin(), file.end(), '/', '-');
    textWrite(folder + "/" + file, text);
    vsTextSet(command, text);
}

static void observe(void *context, const char *name, const char *, bool isCommand)
{
    if (isCommand)
        static_cast<std::set<std::string> *>(context)->insert(name);
}

static double processorMicroseconds()
{
    struct timespec now;

    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now); // cannot fail
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}
