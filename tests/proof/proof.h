// proof.h - what the long proofs share: records as a neighbouring program reads them, time, and the real daemon.
#pragma once

#include "support/read.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <vector>

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

inline bool parses(const std::string &text)
{
    return OWNED_JSON(cJSON_ParseWithOpts(text.c_str(), nullptr, 1)) != nullptr;
}

inline int recordsRead(const std::string &path, RECORDS_T *records, const std::string &name = "")
{
    return recordsRead(path, records, name, HANG * 1000);
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
