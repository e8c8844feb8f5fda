// build.h - running one builder by itself, the way the cache runs it.
#pragma once

#include "restcache/builder.h"
#include "runtime/json.h"
#include "support/alloc.h"

#include <gtest/gtest.h>
#include <string>

// Result and payload text of one run; the text is "" when the builder gave none.
struct BUILT_T {
    int result;
    std::string text;
};

inline BUILT_T buildText(BUILDER_TEXT_T builder)
{
    static CLIENT_HANDLE_T handle;
    char *text = nullptr;
    jsonBuildBegin();
    int result = builder(&handle, &text);
    OWNED_TEXT owned(text);
    return {result, text == nullptr ? "" : text};
}

inline BUILT_T buildBuffer(BUILDER_BUFFER_T builder, size_t size)
{
    static CLIENT_HANDLE_T handle;
    std::string buffer(size, '\0');
    jsonBuildBegin();
    int result = builder(&handle, &buffer[0], size);
    return {result, buffer.c_str()};
}

// Fail each JSON allocation of a builder in turn, until a run meets no failure: each failed run gives the result and no
// text. (A document that lacks a key would be stored as if it were whole.)
inline void expectNoDocumentWithoutMemory(BUILDER_TEXT_T builder, int result)
{
    const BUILT_T clean = buildText(builder);
    bool reached = true;
    for (int n = 0; reached; n++) {
        allocFailAt(n, ALLOC_CJSON);
        BUILT_T built = buildText(builder);
        reached = allocFailStop();
        EXPECT_EQ(built.result, reached ? result : 0) << n;
        EXPECT_EQ(built.text, reached ? "" : clean.text) << n;
    }
}
