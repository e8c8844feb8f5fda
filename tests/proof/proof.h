// proof.h - what the long proofs share: records as a neighbouring program reads them, time, and the real daemon.
#pragma once

#include "runtime/owned.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <random>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

using RECORDS_T = std::map<std::string, std::string>;

constexpr int HANG = 600; // seconds that only a hang takes, however busy the machine is

inline double steadySeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

inline std::mt19937 &dice()
{
    static std::mt19937 engine(std::random_device{}());
    return engine;
}
inline unsigned roll(unsigned sides) // 0 to sides - 1
{
    return static_cast<unsigned>(dice()() % sides);
}

inline std::string fileText(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

inline bool parses(const std::string &text)
{
    return OWNED_JSON(cJSON_ParseWithOpts(text.c_str(), nullptr, 1)) != nullptr;
}

// Records of a cache, on a connection of its own: all, or that of one name. SQLITE_DONE, or the code of what failed.
inline int recordsRead(const std::string &path, RECORDS_T *records, const std::string &name = "")
{
    const char *sql = name.empty() ? "SELECT api_name, data FROM restapi_db NOT INDEXED"
                                   : "SELECT api_name, data FROM restapi_db WHERE api_name = ?";
    sqlite3 *opened = nullptr;
    sqlite3_stmt *prepared = nullptr;
    int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
    OWNED_DB db(opened);

    if (result != SQLITE_OK)
        return result;
    sqlite3_busy_timeout(opened, HANG * 1000);
    result = sqlite3_prepare_v2(opened, sql, -1, &prepared, nullptr);
    OWNED_STATEMENT select(prepared);
    if (result != SQLITE_OK)
        return result;
    if (!name.empty())
        sqlite3_bind_text(prepared, 1, name.c_str(), -1, SQLITE_STATIC);
    while ((result = sqlite3_step(prepared)) == SQLITE_ROW) {
        const unsigned char *key = sqlite3_column_text(prepared, 0);
        const unsigned char *data = sqlite3_column_text(prepared, 1);
        (*records)[key == nullptr ? "" : reinterpret_cast<const char *>(key)] =
            data == nullptr ? "" : reinterpret_cast<const char *>(data);
    }
    return result;
}

// The daemon of the same build on a root, with these variables besides the caller's and so many milliseconds a tick; 0
// when it cannot be started.
inline pid_t daemonStart(const std::string &root, const std::vector<std::string> &variables, const char *tick = "1")
{
    std::string output = root + "/devmgr.out";
    std::vector<std::string> arguments = {DEVMGR_BINARY, "--root", root, "--tick-ms", tick};
    std::vector<char *> argv, env;
    posix_spawn_file_actions_t files;
    pid_t pid = 0;

    for (std::string &argument : arguments)
        argv.push_back(&argument[0]);
    argv.push_back(nullptr);
    for (const std::string &variable : variables)
        env.push_back(const_cast<char *>(variable.c_str()));
    for (char **variable = environ; *variable != nullptr; variable++)
        env.push_back(*variable);
    env.push_back(nullptr);
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
    if (posix_spawn(&pid, argv[0], &files, nullptr, argv.data(), env.data()) != 0)
        pid = 0;
    posix_spawn_file_actions_destroy(&files);
    return pid;
}

// Whether a child has ended; it is not waited for.
inline bool ended(pid_t pid)
{
    siginfo_t info = {};
    return waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid == pid;
}

inline void end(pid_t pid, int number)
{
    kill(pid, number);
    waitpid(pid, nullptr, 0);
}
