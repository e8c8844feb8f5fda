// differences.h - what became different in the records and in the log, as lines of a golden text.
#pragma once

#include "harness.h"

using LINES_T = std::vector<std::string>;

// Lines of a log by their text without numbers: the first of each kind, how many there are, and the kinds in the order
// of their first.
struct LOG_T {
    std::map<std::string, std::string> first;
    std::map<std::string, unsigned> count;
    LINES_T order;
};

// Lines about another record than the document's begin with its name.
LINES_T recordsDifference(const std::string &document, const RECORDS_T &was, const RECORDS_T &now);

// What was logged since the last time.
LOG_T logTake();

// Debug lines are told only when there is no such line in the log before.
LINES_T logDifference(const LOG_T &was, const LOG_T &now);
