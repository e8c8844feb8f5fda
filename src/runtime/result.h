// result.h - the numeric results that every floor returns. Their messages for the documents stand in restcache.
//
// 0 is success. Codes of 10000 and above and -7 appear in documents and logs; -1 is the runtime's and the cache's own
// failure; platform results (small negative numbers, platform/openclt/openclt.h) pass through where that is documented.
#pragma once

enum RESULT_CODE : int {
    RESULT_OK = 0,
    RESULT_ERROR = -1,     // runtime and cache layers
    RESULT_NO_MEMORY = -7, // a table of a builder could not be allocated
    RESULT_FAILED = 10000, // general failure
    RESULT_INVALID_POINTER = 10002,
    RESULT_INVALID_ARGUMENT = 10003,
    RESULT_EMPTY = 10015,       // nothing found
    RESULT_OPEN_FAILED = 10016, // a file could not be opened
};
