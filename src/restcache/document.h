// document.h - what the cache knows of a document: one row of a table that the program hands in, in cycle order.
//
// A row is made by document() or direct(), and says by further words what is not the rule:
//
//     document("fiberOptics", "fiberOptics", BUILDER(fiberOpticsGet), ON_REQUEST).atStart(8).with(ROW_EMPTY_OK)
#pragma once

#include "switch/session.h"

#include <cJSON.h>
#include <cstddef>
#include <cstdint>
#include <string_view>

// How a builder gives its payload. All return 0 on success.
enum BUILDER_KIND : int {
    BUILDER_TEXT,   // *out becomes a newly allocated JSON text, which the caller frees
    BUILDER_BUFFER, // fills a zeroed buffer of the given size with a terminated JSON text
    BUILDER_OBJECT, // adds its members to a given object
    BUILDER_WRITES, // writes its own records into the cache
};

using BUILDER_TEXT_T = int (*)(CLIENT_HANDLE_T *clientHandle, char **out);
using BUILDER_BUFFER_T = int (*)(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size);
using BUILDER_OBJECT_T = int (*)(CLIENT_HANDLE_T *clientHandle, int session, cJSON *object);
using BUILDER_WRITES_T = int (*)(CLIENT_HANDLE_T *clientHandle);

// A builder: its name for log lines, and the routine; null for one that is not linked. Made with BUILDER(routine) or
// BUILDER(routine, bytes offered), so that kind and routine agree.
struct BUILDER_T {
    const char *name;
    BUILDER_KIND kind;
    BUILDER_TEXT_T text;
    BUILDER_BUFFER_T buffer;
    BUILDER_OBJECT_T object;
    BUILDER_WRITES_T writes;
    size_t size; // of the buffer
};
constexpr BUILDER_T builderOf(const char *name, BUILDER_TEXT_T routine)
{
    return {name, BUILDER_TEXT, routine, nullptr, nullptr, nullptr, 0};
}
constexpr BUILDER_T builderOf(const char *name, BUILDER_BUFFER_T routine, size_t size)
{
    return {name, BUILDER_BUFFER, nullptr, routine, nullptr, nullptr, size};
}
constexpr BUILDER_T builderOf(const char *name, BUILDER_OBJECT_T routine)
{
    return {name, BUILDER_OBJECT, nullptr, nullptr, routine, nullptr, 0};
}
constexpr BUILDER_T builderOf(const char *name, BUILDER_WRITES_T routine)
{
    return {name, BUILDER_WRITES, nullptr, nullptr, nullptr, routine, 0};
}
#define BUILDER(routine, ...) builderOf(#routine, routine __VA_OPT__(, ) __VA_ARGS__)

enum DUE_KIND : int {
    DUE_IN_NO_CYCLE, // at the start only, or only when somebody asks for it
    DUE_CYCLES,      // in cycle 1, and in each cycle whose number leaves `phase` when divided by `period`
    DUE_LINK_WATCH,  // in every cycle; then the links are watched
    DUE_PORT_UP,     // in the cycle in which that finds a port that came up, and in the next two
    DUE_REQUEST,     // when another process has asked for it in PATH_FIBER_REQUEST
};
struct DUE_T {
    DUE_KIND kind;
    uint32_t period;
    uint32_t phase;
};
constexpr DUE_T IN_NO_CYCLE = {DUE_IN_NO_CYCLE, 1, 0};
constexpr DUE_T EVERY_CYCLE = {DUE_CYCLES, 1, 0};
constexpr DUE_T WITH_LINK_WATCH = {DUE_LINK_WATCH, 1, 0};
constexpr DUE_T PORT_CAME_UP = {DUE_PORT_UP, 1, 0};
constexpr DUE_T ON_REQUEST = {DUE_REQUEST, 1, 0};
constexpr DUE_T everyCycles(uint32_t period, uint32_t phase)
{
    return {DUE_CYCLES, period, phase};
}

enum ROW_FLAG : unsigned {
    ROW_NO_PAYLOAD_OK = 1,  // a success without a payload stores an envelope of "resp" alone
    ROW_EMPTY_OK = 2,       // builder result 10015 counts as success
    ROW_SHARED_BUFFER = 4,  // the buffer is the one that such rows share
    ROW_ALLOC_SILENT = 8,   // no line when the buffer cannot be allocated
    ROW_FIXED_ENVELOPE = 16 // the envelope must fit 1024 bytes
};

enum CHUNK_KIND : int {
    CHUNK_NONE,
    CHUNK_NEIGHBORS,        // a row that cannot be added fails the push
    CHUNK_MULTICAST_GROUPS, // a row that cannot be added is left out
    CHUNK_KIND_COUNT
};

// Words of a row's log lines; null for the rule.
struct ROW_WORDS_T {
    const char *caller;    // loggedBy(): "wb_" and the name
    const char *failed;    // failing(): the builder's name and "failed"
    const char *notLinked; // missing(): the builder's name
};

struct DOCUMENT_T {
    const char *name;       // API name
    const char *payloadKey; // key of the payload in the envelope
    BUILDER_T builder;
    DUE_T due;
    bool isDirect;     // written without the name's lock; the end of the cycle signals its changes
    unsigned start;    // place among what is written once, before the first cycle; 0 for none
    unsigned flags;    // ROW_FLAG
    CHUNK_KIND chunks; // that the builder writes
    ROW_WORDS_T words;

    [[nodiscard]] constexpr DOCUMENT_T atStart(unsigned place) const
    {
        DOCUMENT_T row = *this;
        row.start = place;
        return row;
    }
    [[nodiscard]] constexpr DOCUMENT_T with(unsigned added) const
    {
        DOCUMENT_T row = *this;
        row.flags |= added;
        return row;
    }
    [[nodiscard]] constexpr DOCUMENT_T inChunks(CHUNK_KIND kind) const
    {
        DOCUMENT_T row = *this;
        row.chunks = kind;
        return row;
    }
    [[nodiscard]] constexpr DOCUMENT_T loggedBy(const char *caller) const
    {
        DOCUMENT_T row = *this;
        row.words.caller = caller;
        return row;
    }
    [[nodiscard]] constexpr DOCUMENT_T failing(const char *text) const
    {
        DOCUMENT_T row = *this;
        row.words.failed = text;
        return row;
    }
    [[nodiscard]] constexpr DOCUMENT_T missing(const char *builderName) const
    {
        DOCUMENT_T row = *this;
        row.words.notLinked = builderName;
        return row;
    }
};

// A document that is built and written under its name's lock; the websocket server is signalled at once.
constexpr DOCUMENT_T document(const char *name, const char *payloadKey, const BUILDER_T &builder, const DUE_T &due)
{
    return {name, payloadKey, builder, due, false, 0, 0, CHUNK_NONE, {}};
}

// A document that is written directly. One whose builder writes its own records logs its own failures.
constexpr DOCUMENT_T direct(const char *name, const char *payloadKey, const BUILDER_T &builder, const DUE_T &due)
{
    return {name, payloadKey, builder, due, true, 0, 0, CHUNK_NONE, {}};
}

constexpr unsigned START_MARK = 1; // place of "init_complete", before anything is waited for
constexpr size_t DOCUMENTS_MAX = 64;

struct DOCUMENT_TABLE_T {
    const DOCUMENT_T *rows;
    size_t count;
    [[nodiscard]] const DOCUMENT_T *begin() const
    {
        return rows;
    }
    [[nodiscard]] const DOCUMENT_T *end() const
    {
        return rows + count;
    }
};

// Hand the table in (kept by reference; rows beyond DOCUMENTS_MAX are left out). Called once, before all else here.
void documentTableSet(const DOCUMENT_T *rows, size_t count);
[[nodiscard]] const DOCUMENT_TABLE_T &documentTable();

// Row of an API name; null when there is none.
[[nodiscard]] const DOCUMENT_T *documentFind(std::string_view name);

// Whether the row has its turn in cycles: all but those in no cycle and those that the link watch builds.
[[nodiscard]] bool documentIsInCycle(const DOCUMENT_T &row);
