// chunks.h - documents that are too large for one record: a series of records "<name>/0", "<name>/1", ..., each a
// complete document of up to 500 rows, the last one marked.
//
//     CHUNK_SINK_T sink;
//     int result = chunkBegin(&sink, CHUNK_NEIGHBORS);
//     ... chunkRowAdd(&sink, row, length); ...
//     result = chunkEnd(&sink);
//
// One push at a time, on the monitor task; no lock is taken here.
#pragma once

#include "restcache/document.h"
#include "runtime/owned.h"

#include <cstddef>
#include <cstdint>

constexpr int CHUNK_ROW_LIMIT = 500;
constexpr size_t CHUNK_BUFFER_SIZE = 0x30000; // rows of one chunk, in bytes: at most one less

// Rows on their way into chunks.
struct CHUNK_SINK_T {
    const DOCUMENT_T *document = nullptr;
    OWNED_TEXT buffer; // rows of the current chunk, joined by commas
    size_t length = 0; // bytes used of it
    int chunkRows = 0;
    int chunkIndex = 0;    // of the current chunk
    uint32_t rowCount = 0; // accepted in total
    int error = 0;         // set: the push has failed and accepts no more rows
};

// Start a push of the document whose row is marked with this kind. 0, or 10000 when there is no such row or the row
// buffer cannot be allocated.
[[nodiscard]] int chunkBegin(CHUNK_SINK_T *sink, CHUNK_KIND kind);

// Add one row (a JSON value of so many bytes), writing the current chunk first when it is full.
void chunkRowAdd(CHUNK_SINK_T *sink, const char *row, size_t length);

// Write the last chunk, also an empty one, and delete the records beyond it that the previous push left. 0; 10000 when
// the push has failed: the chunks written so far stay then, and nothing more is written or deleted.
[[nodiscard]] int chunkEnd(CHUNK_SINK_T *sink);
