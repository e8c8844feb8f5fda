// document.cpp - the name of the document that a thread is building.
//
// One pointer for each thread: builders run on the monitor's task, the tools' on their own.
#include "runtime/document.h"

static thread_local const char *currentName = nullptr;

void documentSet(const char *apiName)
{
    currentName = apiName;
}

const char *documentCurrent()
{
    return currentName == nullptr ? "" : currentName;
}
