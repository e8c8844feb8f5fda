// process_state.h - one reset for everything that lives as long as the process.
//
// Whoever keeps state between calls (cycle counter, caches, chunk counts, buffers) registers how to put it back to what
// it is at process start. Tests call the one reset; the daemon never does.
#pragma once

// A static instance per piece of state registers its reset before main runs.
struct PROCESS_STATE_T {
    explicit PROCESS_STATE_T(void (*reset)());
    void (*reset)();
    PROCESS_STATE_T *next;
};

// Run every registered reset.
void processStateReset();
