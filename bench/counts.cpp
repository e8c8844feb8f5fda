// counts.cpp - what each document asks of its surroundings when nothing has changed: one line a document with its name,
// the platform's calls, the show commands, the bytes of their texts, the allocations (the daemon's, cJSON's and
// SQLite's) and the processes started.
//
// Calls and commands are seen by the virtual switch's observer, allocations and processes through the linker's --wrap;
// the switch's own are in neither.

#include "documents.h"
#include "harness.h"
#include "support/alloc.h"

#include <control.h>
#include <cstdio>
#include <spawn.h>
#include <unistd.h>

struct ASKED_T {
    unsigned calls = 0;
    std::vector<std::string> commands;
};

static unsigned processes;

extern "C" {
int __real_system(const char *command);
FILE *__real_popen(const char *command, const char *mode);
pid_t __real_fork();
int __real_posix_spawn(pid_t *pid, const char *path, const posix_spawn_file_actions_t *actions,
                       const posix_spawnattr_t *attributes, char *const argv[], char *const envp[]);

int __wrap_system(const char *command)
{
    processes++;
    return __real_system(command);
}

FILE *__wrap_popen(const char *command, const char *mode)
{
    processes++;
    return __real_popen(command, mode);
}

pid_t __wrap_fork()
{
    processes++;
    return __real_fork();
}

int __wrap_posix_spawn(pid_t *pid, const char *path, const posix_spawn_file_actions_t *actions,
                       const posix_spawnattr_t *attributes, char *const argv[], char *const envp[])
{
    processes++;
    return __real_posix_spawn(pid, path, actions, attributes, argv, envp);
}
}

static void observe(void *context, const char *name, const char *, bool isCommand)
{
    auto *asked = static_cast<ASKED_T *>(context);

    if (isCommand)
        asked->commands.emplace_back(name);
    else
        asked->calls++;
}

static void documentCount(const DOCUMENT_T &document)
{
    ASKED_T asked;
    size_t bytes = 0;
    const unsigned processesBefore = processes;

    vsObserverSet(observe, &asked);
    allocFailAt(-1, ALLOC_OWN | ALLOC_CJSON | ALLOC_SQLITE);
    documentRun(document);
    (void)allocFailStop(); // none was to fail
    vsObserverSet(nullptr, nullptr);
    for (const std::string &command : asked.commands)
        bytes += vsShowText(command).size();
    printf("%s %u %zu %zu %lld %u\n", document.name, asked.calls, asked.commands.size(), bytes,
           static_cast<long long>(allocCount()), processes - processesBefore);
}

int main(int argc, char **argv)
{
    if (argc != 2) {
        fputs("usage: counts SCENARIO\n", stderr);
        return 2;
    }
    allocInstall();
    documentsRegister();
    std::string root = scenarioBegin(argv[1]);
    if (root.empty())
        return 2;
    for (const DOCUMENT_T &document : documentsListed()) {
        for (int warm = 0; warm < 3; warm++) // what only the first runs ask stays out
            documentRun(document);
        documentCount(document);
    }
    rootRemove(root);
    return 0;
}
