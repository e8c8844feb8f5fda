#include "change_list.h"

// change_list.cpp - the batches of the change list: take the list away, read what arrives late, let go of what settled.

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

static void batchRead(CHANGE_BATCH_T *batch, std::map<std::string, unsigned> *fresh);
static void listTake(CHANGE_LIST_T *list, double now, std::map<std::string, unsigned> *fresh);

bool changeListAllDue(CHANGE_LIST_T *list, bool bySignal, double now)
{
    struct stat status = {};
    bool there = stat(list->cache.c_str(), &status) == 0;

    if (there && status.st_ino != list->inode) {
        list->inode = status.st_ino;
        list->beganAt = now;
        list->signalled = false;
        list->settled = false;
        return true;
    }
    if (!there || list->settled)
        return false;
    list->signalled |= bySignal;
    list->settled = list->signalled && now - list->beganAt >= SETTLE_SECONDS;
    return true;
}

std::map<std::string, unsigned> changeListLook(CHANGE_LIST_T *list, bool bySignal, double now)
{
    std::map<std::string, unsigned> names;

    for (auto batch = list->batches.begin(); batch != list->batches.end();) {
        batch->signalled |= bySignal;
        batchRead(&*batch, &names);
        for (const auto &name : batch->names)
            names[name.first] += 0;
        if (batch->signalled && now - batch->takenAt >= SETTLE_SECONDS)
            batch = list->batches.erase(batch);
        else
            ++batch;
    }
    listTake(list, now, &names);
    return names;
}

static void listTake(CHANGE_LIST_T *list, double now, std::map<std::string, unsigned> *fresh)
{
    std::string taken = list->path + ".taken";

    if (rename(list->path.c_str(), taken.c_str()) != 0)
        return; // nothing announced since the last look
    CHANGE_BATCH_T &batch = list->batches.emplace_back();
    batch.fd.fd = open(taken.c_str(), O_RDONLY | O_CLOEXEC);
    (void)unlink(taken.c_str()); // the next rename would replace it anyway
    batch.takenAt = now;
    batchRead(&batch, fresh);
}

// Whole lines that arrived since the last read.
static void batchRead(CHANGE_BATCH_T *batch, std::map<std::string, unsigned> *fresh)
{
    char bytes[4096];
    ssize_t count;

    while ((count = read(batch->fd.fd, bytes, sizeof(bytes))) > 0)
        batch->partial.append(bytes, static_cast<size_t>(count));
    size_t begin = 0;
    for (size_t end; (end = batch->partial.find('\n', begin)) != std::string::npos; begin = end + 1) {
        std::string name = batch->partial.substr(begin, end - begin);
        batch->names[name]++;
        (*fresh)[name]++;
    }
    batch->partial.erase(0, begin);
}
