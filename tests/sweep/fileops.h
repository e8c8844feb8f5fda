// fileops.h - making file operations fail, one after the other.
//
// Counts the file operations of the code under test: those of the C library through the linker's --wrap, and those of
// SQLite through its table of system calls. A failed operation does nothing and answers as the C library would with
// EIO; one that closes still closes. The virtual switch's own operations are not touched.
#pragma once

#include <cstdint>
#include <string>

enum FILEOPS_SOURCE : unsigned { FILEOPS_OWN = 1, FILEOPS_SQLITE = 2 };

// Route SQLite's system calls through the counter; once per process.
void fileopsInstall();

// From now on the n-th counted operation (from 0) of the given sources fails, and only that one.
void fileopsFailAt(int64_t n, unsigned sources);

// Stop failing. True when the chosen operation was reached since fileopsFailAt.
bool fileopsFailStop();

// Name of the operation that failed last, and the path it was given ("" when it had none).
const char *fileopsFailedName();
std::string fileopsFailedPath();
