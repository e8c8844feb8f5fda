// build.h - running one builder by itself, the way the cache runs it.
#pragma once

#include "documents.h"
#include "restcache/document.h"
#include "runtime/json.h"
#include "runtime/paths.h"
#include "support/root.h"

#include "control.h"
#include "model.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

// A fresh root and a switch without facts, to which a test adds its own.
struct BUILDER_TEST : testing::Test {
    BUILDER_TEST()
    {
        documentsRegister(); // chunks are named by their rows
        EXPECT_EQ(vsLoadText("{}"), "");
        state = VS_STATE_T();
    }
    ~BUILDER_TEST() override
    {
        vsUnload();
    }
    static VS_PORT_T &portAdd(uint32_t ifNum, uint32_t unit, uint32_t slot, uint32_t number)
    {
        VS_PORT_T &port = vsState().ports.emplace_back();
        port.ifNum = ifNum;
        port.unit = unit;
        port.slot = slot;
        port.port = number;
        return port;
    }
    TEST_ROOT_T root;
    VS_STATE_T &state = vsState();
    CLIENT_HANDLE_T handle = {};
};

inline bool has(const std::string &text, const std::string &piece)
{
    return text.find(piece) != std::string::npos;
}

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

// Text of a builder that must succeed, without layout.
inline std::string documentOf(BUILDER_TEXT_T builder)
{
    BUILT_T built = buildText(builder);
    EXPECT_EQ(built.result, 0);
    return compact(built.text);
}
