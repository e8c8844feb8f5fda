// columncut.h - cutting columns out of a show command's output, byte for byte as these one-liners do, without a
// process:
//
//     awk 'END{print NR}' FILE                             cutLineCount
//     awk '/TEXT/{print NR; exit}' FILE                    cutFirstLineWith
//     awk 'FNR == LINE {print $1}' FILE                    cutFirstWord
//     awk 'FNR == LINE {print substr($0,FROM,LENGTH)}'     cutColumns
//     sed -n 'LINEp' FILE | cut -c FROM-TO                 cutColumns, LENGTH = TO - FROM + 1
//
// A cut is at most 127 characters, ends at a carriage return, and is empty when it contains "N/A" or the line does not
// exist. Numbers keep their first four digits. Lines and columns count from 1; a last line without a line end is a
// line.
#pragma once

#include "runtime/owned.h"

#include <cstddef>
#include <cstdint>

constexpr size_t CUT_SIZE = 128;

// A whole file in memory, with the begin of each line. Zeroed: a file without lines.
struct CUT_FILE_T {
    OWNED_TEXT text;
    size_t length = 0;
    OWNED_ARRAY<size_t> begins;
    uint32_t lines = 0;
};

// Read the rest of a stream (null: nothing). 0; -7 without memory, the file has no lines then.
[[nodiscard]] int cutFileLoad(CUT_FILE_T *file, FILE *stream);

[[nodiscard]] uint32_t cutLineCount(const CUT_FILE_T *file);

// Number of the first line that contains the text (which has no line end), 0 when there is none.
[[nodiscard]] uint32_t cutFirstLineWith(const CUT_FILE_T *file, const char *text);

// The first word of the line, between blanks and tabs.
void cutFirstWord(const CUT_FILE_T *file, uint32_t line, char out[CUT_SIZE]);

// `length` bytes from column `from`, not trimmed; fewer where the line ends.
void cutColumns(const CUT_FILE_T *file, uint32_t line, size_t from, size_t length, char out[CUT_SIZE]);
