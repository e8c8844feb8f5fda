#include "control.h"

#include <call_table.h>

// Names of all client calls, for tools that list them and for tests that fail each in turn.

const char *const vsCallNames[] = {
#define CALL(name, arguments, meaning) #name,
#include <calls.def>
    nullptr,
};
