// child.cpp - forked pieces of tests. A child never returns into the test framework: it ends by _exit.
#include "support/child.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

static pid_t forkWithOutput(const std::function<int()> &body, int output)
{
    fflush(nullptr);
    pid_t child = fork();
    if (child != 0)
        return child;
    if (dup2(output, STDOUT_FILENO) < 0)
        _exit(120);
    int result = body();
    fflush(nullptr);
    _exit(result);
}

pid_t childStart(const std::function<int()> &body)
{
    int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    pid_t child = forkWithOutput(body, nowhere);
    close(nowhere);
    return child;
}

int childWait(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

std::string childRun(const std::function<int()> &body, std::string *output)
{
    if (output == nullptr)
        return childEnd(childWait(childStart(body)));
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
        return "no pipe";
    pid_t child = forkWithOutput(body, ends[1]);
    close(ends[1]);
    char buffer[4096];
    ssize_t length = 0;
    output->clear();
    while ((length = read(ends[0], buffer, sizeof(buffer))) > 0)
        output->append(buffer, static_cast<size_t>(length));
    close(ends[0]);
    return childEnd(childWait(child));
}

std::string childEnd(int status)
{
    if (WIFEXITED(status))
        return "exit " + std::to_string(WEXITSTATUS(status));
    return "signal " + std::to_string(WTERMSIG(status));
}
