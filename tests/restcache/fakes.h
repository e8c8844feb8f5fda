// fakes.h - builders that answer what the test says and remember which document was asked for, and a thread that
// stands for the websocket server.
#pragma once

#include "restcache/notify.h"
#include "restcache/run.h"
#include "restcache/store.h"
#include "runtime/paths.h"
#include "support/root.h"

#include <atomic>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

// No file grows beyond so many bytes while this lives, as on a full disk.
struct FULL_DISK_T {
    struct rlimit usual = {};
    explicit FULL_DISK_T(size_t size)
    {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &usual);
        struct rlimit full = {size, usual.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
    }
    ~FULL_DISK_T()
    {
        setrlimit(RLIMIT_FSIZE, &usual);
    }
};

// What every fake builder answers.
struct FAKE_T {
    int result = 0;
    std::string text = "[1]";
    bool payload = true;  // false: success without a text
    std::string lockName; // when set: whether that lock was held during the build is noted
    bool lockHeld = false;
    std::string holdAt;
    size_t bufferSize = 0;          // bytes that were offered
    bool bufferClean = false;       // ... all of them zero
    std::vector<std::string> built; // API names, in the order of building
};
inline FAKE_T fake;
inline std::atomic<bool> fakeHeld; // a builder has come to `holdAt` and stays there for ever

inline void fakeNote()
{
    fake.built.push_back(documentCurrent());
    if (fake.holdAt == documentCurrent()) {
        fakeHeld = true;
        for (;;)
            pause();
    }
    if (fake.lockName.empty())
        return;
    std::string path = std::string(PathGet(PATH_LOCK_DIR)) + "/" + fake.lockName + ".lock";
    int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
    fake.lockHeld = fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(fd);
}
inline int fakeText(CLIENT_HANDLE_T *, char **out)
{
    fakeNote();
    *out = fake.payload ? strdup(fake.text.c_str()) : nullptr;
    return fake.result;
}
inline int fakeBuffer(CLIENT_HANDLE_T *, char *buffer, size_t size)
{
    fakeNote();
    fake.bufferSize = size;
    fake.bufferClean = std::string(buffer, size) == std::string(size, '\0');
    memset(buffer, ' ', size - 1); // leaves dirt behind for the next user
    memcpy(buffer, fake.text.c_str(), fake.text.size());
    return fake.result;
}
inline int fakeObject(CLIENT_HANDLE_T *, int session, cJSON *object)
{
    fakeNote();
    cJSON_AddNumberToObject(object, "session", session);
    return fake.result;
}
inline int fakeWrites(CLIENT_HANDLE_T *)
{
    fakeNote();
    return fake.result;
}

// A thread waiting for SIGINT as the websocket server does; its ids stand in the id file.
struct LISTENER_T {
    LISTENER_T()
    {
        sigemptyset(&set);
        sigaddset(&set, SIGINT);
        sigaddset(&set, SIGUSR1);
        pthread_sigmask(SIG_BLOCK, &set, nullptr);
        thread = std::thread([this] { wait(); });
        while (threadId == 0)
            std::this_thread::yield();
        fileWrite(PathGet(PATH_WS_PID), ids());
    }
    ~LISTENER_T()
    {
        end();
    }
    std::string ids() const
    {
        return std::to_string(getpid()) + " " + std::to_string(threadId.load()) + "\n";
    }

    // Whether a change has been signalled, to this thread; ends the listening.
    bool signalled()
    {
        end();
        return changes > 0;
    }

private:
    void wait()
    {
        siginfo_t info;
        threadId = static_cast<int>(syscall(SYS_gettid));
        // The C library's sigwaitinfo hides SI_TKILL. Pending signals come lowest number first.
        while (syscall(SYS_rt_sigtimedwait, &set, &info, nullptr, _NSIG / 8) == SIGINT)
            changes += info.si_code == SI_TKILL;
    }
    void end()
    {
        if (!thread.joinable())
            return;
        pthread_kill(thread.native_handle(), SIGUSR1);
        thread.join();
    }
    sigset_t set;
    std::atomic<int> threadId{0};
    std::atomic<int> changes{0};
    std::thread thread;
};
