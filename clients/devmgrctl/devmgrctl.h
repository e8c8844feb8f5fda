// devmgrctl.h - what the words of devmgrctl share.
#pragma once

#include <string>
#include <vector>

using WORDS_T = std::vector<std::string>;

// Statuses of the program.
enum CTL_STATUS : int {
    CTL_OK = 0,
    CTL_FOUND = 1,   // something is wrong, or different
    CTL_TROUBLE = 2, // cannot say: no cache, no account, no permission, wrong usage
};

// One word each: arguments behind it, a status. Messages about trouble go to standard error, one line.
int statusWord(const WORDS_T &arguments);
int commandsWord(const WORDS_T &arguments);
int metricsWord(const WORDS_T &arguments);
int listWord(const WORDS_T &arguments);
int getWord(const WORDS_T &arguments);
int watchWord(const WORDS_T &arguments);
int diffWord(const WORDS_T &arguments);
int rebuildWord(const WORDS_T &arguments);
int logWord(const WORDS_T &arguments);
int fibreWord(const WORDS_T &arguments);

// One line on standard error; CTL_TROUBLE.
int trouble(const std::string &what);

// "12 s", "5 min", "3 h", "2 d".
std::string durationText(double seconds);
