// texts.cpp - the processor time that a document takes from its show texts to its stored record, and the texts, for a
// rival to read.
//
// DIR receives the text of each show command that the document runs, in a file named after it with "_" for each blank.
// The switch then plays those texts back, so that rendering them is in nobody's time. Prints a line: the microseconds
// of each run, "|" and those of the handling alone (each command's file had, read and removed, the finished text
// stored: what would be left if parsing and JSON cost nothing), and "|" before each command.

#include "documents.h"
#include "harness.h"
#include "restcache/cycle.h"
#include "restcache/store.h"
#include "switch/cli.h"

#include <algorithm>
#include <control.h>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <functional>
#include <set>
#include <sqlite3.h>

constexpr int RUNS = 15;

static double platformMicroseconds; // in show commands, so far

static void observe(void *context, const char *name, const char *, bool isCommand)
{
    if (isCommand)
        static_cast<std::set<std::string> *>(context)->insert(name);
}

static void textKeep(const std::string &command, const std::string &folder)
{
    std::string file = command, text = vsShowText(command);

    std::replace(file.begin(), file.end(), ' ', '_');
    std::replace(file.begin(), file.end(), '/', '-');
    textWrite(folder + "/" + file, text);
    vsTextSet(command, text);
}

static double processorMicroseconds()
{
    struct timespec now;

    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now); // cannot fail
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

static void timesPrint(const std::string &name, const std::function<void()> &body)
{
    for (int run = 0; run < RUNS; run++) {
        recordsDelete({name}); // so that each run stores
        double begin = processorMicroseconds() - platformMicroseconds;
        body();
        printf(" %.0f", processorMicroseconds() - platformMicroseconds - begin);
    }
}

static void handling(const std::set<std::string> &commands, const std::string &name, const std::string &text)
{
    char line[CLI_LINE_SIZE];

    for (const std::string &command : commands) {
        SHOW_FILE_T show;
        const SHOW_REQUEST_T request = {__func__, command.c_str(), PATH_SHOW_SLOT};
        if (showFileRun(&show, monitorClientHandle(), request) != 0)
            exit(2);
        while (showFileLine(&show, line, sizeof(line))) {
        }
    }
    if (restapi_db_operation(REST_DB_WRITE, name.c_str(), text.c_str()) != SQLITE_DONE)
        exit(2);
}

static void documentTime(const DOCUMENT_T &document, const std::string &folder)
{
    std::set<std::string> commands;

    vsObserverSet(observe, &commands);
    documentRun(document);
    vsObserverSet(nullptr, nullptr);
    for (const std::string &command : commands)
        textKeep(command, folder);
    const std::string text = recordsRead()[document.name];
    timesPrint(document.name, [&document] { documentRun(document); });
    putchar('|');
    timesPrint(document.name, [&] { handling(commands, document.name, text); });
    for (const std::string &command : commands)
        printf("|%s", command.c_str());
    putchar('\n');
}

int main(int argc, char **argv)
{
    if (argc != 4) {
        fputs("usage: texts SCENARIO DIR NAME\n", stderr);
        return 2;
    }
    documentsRegister();
    std::string root = scenarioBegin(argv[1]);
    if (root.empty())
        return 2;
    for (const DOCUMENT_T &document : documentsListed()) {
        if (strcmp(document.name, argv[3]) == 0)
            documentTime(document, argv[2]);
    }
    rootRemove(root);
    return 0;
}

// Stands before the platform's own, which does the work.
int rpcclt_openapiCliShowExecuteToFile(openclt_handle_t *handle, openclt_buffer_t *command, openclt_buffer_t *file)
{
    using CALL = int (*)(openclt_handle_t *, openclt_buffer_t *, openclt_buffer_t *);
    static const CALL platform = reinterpret_cast<CALL>(dlsym(RTLD_NEXT, __func__));
    double begin = processorMicroseconds();
    int result = platform(handle, command, file);

    platformMicroseconds += processorMicroseconds() - begin;
    return result;
}
