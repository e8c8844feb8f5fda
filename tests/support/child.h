// child.h - running a piece of a test in a process of its own.
#pragma once

#include <cstdlib>
#include <functional>
#include <string>
#include <sys/types.h>

// Run the body in a forked process, which exits with its result. Its standard output is discarded.
pid_t childStart(const std::function<int()> &body);

// Wait for its end and give the wait status (WIFEXITED, WTERMSIG ...).
int childWait(pid_t child);

// Run to the end: "exit N" or "signal N"; *output, when given, receives what it wrote to standard output.
std::string childRun(const std::function<int()> &body, std::string *output = nullptr);

// The same text for a wait status.
std::string childEnd(int status);
