// process_state.cpp - the list of what must be put back to its state at process start.
//
// The list is filled by static constructors, in no particular order, before main; nothing is added later.
#include "runtime/process_state.h"

static PROCESS_STATE_T *firstState = nullptr;

PROCESS_STATE_T::PROCESS_STATE_T(void (*resetFunction)()) : reset(resetFunction), next(firstState)
{
    firstState = this;
}

void processStateReset()
{
    for (PROCESS_STATE_T *state = firstState; state != nullptr; state = state->next)
        state->reset();
}
