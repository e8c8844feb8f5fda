#include "restcache/chunks.h"

// The chunk writer. The two chunked documents share record layout and limits; where they differ stands in their row of
// the rules: what a row or chunk that cannot be held does, and how many chunks an earlier process may have left.

#include "restcache/store.h"
#include "runtime/log.h"
#include "runtime/process_state.h"
#include "runtime/result.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

enum CHUNK_TROUBLE : int {
    CHUNK_TROUBLE_FAILS, // the push ends
    CHUNK_TROUBLE_DROPS, // that row (with an error line) or chunk is lost, the push goes on
};

struct CHUNK_RULES_T {
    const char *rowFunction; // name in the line about a dropped row
    CHUNK_TROUBLE trouble;
    int firstPrevious; // chunks taken as written before the first push of a process
};

// Records of neighbours that an earlier process left stay until a push outgrows them; those of groups are deleted.
constexpr CHUNK_RULES_T chunkRules[] = {
    {}, // CHUNK_NONE
    {"", CHUNK_TROUBLE_FAILS, 0},
    {"mgeSinkEmitRow", CHUNK_TROUBLE_DROPS, 256},
};
static_assert(std::size(chunkRules) == CHUNK_KIND_COUNT, "one row for each kind");

constexpr size_t CHUNK_NAME_SIZE = 48;
constexpr size_t CHUNK_FRAME_SIZE = 256; // room for what stands around the rows
constexpr size_t CHUNK_BYTES_MAX = CHUNK_BUFFER_SIZE - 1;
constexpr size_t ROW_OVERHEAD = 2; // counted on top of each row: its comma and a terminator

// Chunks that the previous push left in the cache.
static int previousCount[CHUNK_KIND_COUNT] = {0, chunkRules[1].firstPrevious, chunkRules[2].firstPrevious};

static void chunksReset()
{
    for (size_t kind = 0; kind < CHUNK_KIND_COUNT; kind++)
        previousCount[kind] = chunkRules[kind].firstPrevious;
}
static PROCESS_STATE_T chunkState(chunksReset);

static const CHUNK_RULES_T &rulesOf(const CHUNK_SINK_T *sink)
{
    return chunkRules[sink->document->chunks];
}

static void chunkName(const CHUNK_SINK_T *sink, int index, char name[CHUNK_NAME_SIZE])
{
    snprintf(name, CHUNK_NAME_SIZE, "%s/%d", sink->document->name, index);
}

static void chunkWrite(CHUNK_SINK_T *sink, bool last)
{
    size_t size = sink->length + CHUNK_FRAME_SIZE;
    char name[CHUNK_NAME_SIZE];
    OWNED_TEXT text(static_cast<char *>(malloc(size)));

    if (text == nullptr) {
        sink->error = rulesOf(sink).trouble == CHUNK_TROUBLE_FAILS;
        return;
    }
    snprintf(text.get(), size,
             "{\"%s\":{\"rows\":[%.*s],\"chunkIndex\":%d,\"isLastChunk\":%s},"
             "\"resp\":{\"respCode\":0,\"respMsg\":\"Success\",\"status\":\"success\"}}",
             sink->document->payloadKey, static_cast<int>(sink->length), sink->buffer.get(), sink->chunkIndex,
             last ? "true" : "false");
    chunkName(sink, sink->chunkIndex, name);
    (void)restapi_db_operation(REST_DB_WRITE, name, text.get()); // logs its own failure
}

int chunkBegin(CHUNK_SINK_T *sink, CHUNK_KIND kind)
{
    *sink = CHUNK_SINK_T();
    for (const DOCUMENT_T &row : documentTable()) {
        if (row.chunks == kind)
            sink->document = &row;
    }
    sink->buffer.reset(static_cast<char *>(malloc(CHUNK_BUFFER_SIZE)));
    sink->error = sink->document == nullptr || sink->buffer == nullptr;
    return sink->error ? RESULT_FAILED : RESULT_OK;
}

void chunkRowAdd(CHUNK_SINK_T *sink, const char *row, size_t length)
{
    if (sink->error)
        return;
    if (length + ROW_OVERHEAD > CHUNK_BYTES_MAX) { // even an empty chunk cannot hold it
        sink->error = rulesOf(sink).trouble == CHUNK_TROUBLE_FAILS;
        if (!sink->error)
            LOG_ERROR_AS(rulesOf(sink).rowFunction, "%s: oversized row %zu >= %d bytes, dropping\n",
                         sink->document->name, length, static_cast<int>(CHUNK_BUFFER_SIZE));
        return;
    }
    if (sink->chunkRows >= CHUNK_ROW_LIMIT || sink->length + length + ROW_OVERHEAD > CHUNK_BYTES_MAX) {
        chunkWrite(sink, false);
        if (sink->error)
            return;
        sink->length = 0;
        sink->chunkRows = 0;
        sink->chunkIndex++;
    }
    if (sink->length != 0)
        sink->buffer.get()[sink->length++] = ',';
    memcpy(sink->buffer.get() + sink->length, row, length);
    sink->length += length;
    sink->chunkRows++;
    sink->rowCount++;
}

int chunkEnd(CHUNK_SINK_T *sink)
{
    char name[CHUNK_NAME_SIZE];

    if (sink->document == nullptr)
        return RESULT_FAILED;
    int *previous = &previousCount[sink->document->chunks];
    if (!sink->error)
        chunkWrite(sink, true);
    if (sink->error) {
        *previous = std::max(*previous, sink->chunkIndex); // a later push deletes what this one left behind
        return RESULT_FAILED;
    }
    for (int index = sink->chunkIndex + 1; index < *previous; index++) {
        chunkName(sink, index, name);
        (void)restapi_db_operation(REST_DB_DELETE, name, nullptr); // logs its own failure
    }
    *previous = sink->chunkIndex + 1;
    return RESULT_OK;
}
