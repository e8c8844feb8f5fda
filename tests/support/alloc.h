// alloc.h - making allocations fail, one after the other.
//
// Counts the allocations of the code under test: its own (malloc, calloc, realloc through the linker's --wrap, operator
// new(nothrow)), cJSON's (its hooks) and, when asked for, SQLite's (its memory methods). Works under the address
// sanitizer. The virtual switch's own allocations are not touched.
#pragma once

#include <cstdint>

enum ALLOC_SOURCE : unsigned { ALLOC_OWN = 1, ALLOC_CJSON = 2, ALLOC_SQLITE = 4 };

// Route cJSON's (and SQLite's) allocations through the counter; once per process, before SQLite is used.
void allocInstall();

// From now on the n-th counted allocation (from 0) of the given sources fails, and only that one; counting starts anew.
void allocFailAt(int64_t n, unsigned sources);

// Stop failing. True when the chosen allocation was reached (and failed) since allocFailAt.
bool allocFailStop();

// Allocations counted since allocFailAt.
int64_t allocCount();
