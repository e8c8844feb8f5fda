#include "devmgrctl.h"

// The words that ask the daemon for something, by the files that it reads: rebuild, log, fibre.

#include "cache/account.h"
#include "runtime/files.h"
#include "runtime/paths.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <unistd.h>

struct LEVEL_T {
    const char *name;
    char digit;
};
static const LEVEL_T levels[] = {{"error", '3'}, {"warn", '4'}, {"info", '6'}, {"debug", '7'}};
static constexpr char LEVEL_UNTOLD[] = "error"; // what holds without a file

// One of the files that the daemon looks at. A link, or another user's file, at its place is moved aside.
static int requestWrite(PATH_ID id, const std::string &text)
{
    char aside[FILE_ASIDE_SIZE];
    OWNED_FD_T file(fileOpenOwn(PathGet(id), 0, 0644, aside));

    if (file.fd < 0 || ftruncate(file.fd, 0) != 0 ||
        write(file.fd, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        return trouble(std::string(PathGet(id)) + ": " + strerror(errno));
    return CTL_OK;
}

static int logLevelShow()
{
    OWNED_FILE file(fileOpenRead(PathGet(PATH_LOG_LEVEL)));
    int digit = file == nullptr ? EOF : fgetc(file.get());

    for (const LEVEL_T &level : levels) {
        if (level.digit == digit) {
            puts(level.name);
            return CTL_OK;
        }
    }
    if (digit == EOF)
        puts(LEVEL_UNTOLD);
    else
        printf("%c\n", digit);
    return CTL_OK;
}

int logWord(const WORDS_T &arguments)
{
    if (arguments.empty())
        return logLevelShow();
    for (const LEVEL_T &level : levels) {
        if (arguments[0] == level.name || arguments[0] == std::string(1, level.digit))
            return requestWrite(PATH_LOG_LEVEL, std::string(1, level.digit) + "\n");
    }
    return trouble("log: no level '" + arguments[0] + "'; there are: error, warn, info, debug (3, 4, 6, 7)");
}

int fibreWord(const WORDS_T &)
{
    return requestWrite(PATH_FIBER_REQUEST, std::to_string(time(nullptr)) + "\n");
}

// The environment of the daemon names the folder of the platform's libraries.
static std::vector<std::string> environmentTake(int process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/environ", std::ios::binary);
    std::vector<std::string> variables;
    std::string variable;

    while (std::getline(file, variable, '\0'))
        variables.push_back(variable);
    return variables;
}

int rebuildWord(const WORDS_T &arguments)
{
    ACCOUNT_T account = accountRead();
    const cJSON *daemon = cJSON_GetObjectItemCaseSensitive(account.tree.get(), "daemon");
    std::vector<std::string> variables;
    std::vector<char *> environment;
    std::string root = PathGet(PATH_REST_DB);

    root.resize(root.rfind("/tmp/"));
    if (account.state == ACCOUNT_ALIVE)
        variables = environmentTake(static_cast<int>(accountNumber(daemon, "pid", 0)));
    for (std::string &variable : variables)
        environment.push_back(&variable[0]);
    environment.push_back(nullptr);
    std::string helper = REBUILD_HELPER;
    const char *asked[] = {helper.c_str(), "--root", root.c_str(), arguments[0].c_str(), nullptr};
    execve(asked[0], const_cast<char *const *>(asked), variables.empty() ? environ : environment.data());
    return trouble(helper + ": " + strerror(errno));
}
