// builder.h - what the cache knows of builders: a name, how the builder gives its document, and the routine.
//
// The table that joins API names with builders is made above this room and handed in, so the cache never includes a
// collector. A name without a builder fails with its "not linked" line.
#pragma once

#include "switch/session.h"

#include <cJSON.h>
#include <cstddef>

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

// One builder. Made with the four functions below, so that kind and routine agree.
struct BUILDER_T {
    const char *apiName;
    BUILDER_KIND kind;
    BUILDER_TEXT_T text;
    BUILDER_BUFFER_T buffer;
    BUILDER_OBJECT_T object;
    BUILDER_WRITES_T writes;
};
constexpr BUILDER_T builderText(const char *apiName, BUILDER_TEXT_T routine)
{
    return {apiName, BUILDER_TEXT, routine, nullptr, nullptr, nullptr};
}
constexpr BUILDER_T builderBuffer(const char *apiName, BUILDER_BUFFER_T routine)
{
    return {apiName, BUILDER_BUFFER, nullptr, routine, nullptr, nullptr};
}
constexpr BUILDER_T builderObject(const char *apiName, BUILDER_OBJECT_T routine)
{
    return {apiName, BUILDER_OBJECT, nullptr, nullptr, routine, nullptr};
}
constexpr BUILDER_T builderWrites(const char *apiName, BUILDER_WRITES_T routine)
{
    return {apiName, BUILDER_WRITES, nullptr, nullptr, nullptr, routine};
}

// Hand in the table (kept by reference) that the writeback and the refresh cycle look builders up in.
void builderTableSet(const BUILDER_T *table, size_t count);

// Builder of an API name with the kind its row wants; null when there is none.
[[nodiscard]] const BUILDER_T *builderFind(const char *apiName, BUILDER_KIND kind);
