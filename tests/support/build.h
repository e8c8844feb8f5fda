// build.h - running one builder by itself, the way the cache runs it, and tables of what it makes of failures and
// texts.
#pragma once

#include "documents.h"
#include "restcache/document.h"
#include "runtime/json.h"
#include "runtime/paths.h"
#include "support/alloc.h"
#include "support/root.h"

#include "control.h"
#include "model.h"

#include <cstring>
#include <filesystem>
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
    // Whether builders have left an output of a show command.
    bool filesLeft() const
    {
        return !std::filesystem::is_empty(root.dir + "/mnt/application/kelo/tmp");
    }
    TEST_ROOT_T root;
    VS_STATE_T &state = vsState();
    CLIENT_HANDLE_T handle = {};
};

inline bool has(const std::string &text, const std::string &piece)
{
    return text.find(piece) != std::string::npos;
}

// A text with parts in others' places (from, to, from, to ...), each of which must be there.
inline std::string changed(std::string text, const std::vector<std::string> &parts)
{
    for (size_t i = 0; i + 1 < parts.size(); i += 2) {
        size_t at = text.find(parts[i]);
        EXPECT_NE(at, std::string::npos) << parts[i] << "\n" << text;
        if (at != std::string::npos)
            text.replace(at, parts[i].size(), parts[i + 1]);
    }
    return text;
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

// Text of a builder that must succeed, without layout.
inline std::string documentOf(BUILDER_TEXT_T builder)
{
    BUILT_T built = buildText(builder);
    EXPECT_EQ(built.result, 0);
    return compact(built.text);
}

// What one failure changes in a document: parts of the clean one, each before what stands there then; and the log.
struct FAILURE_T {
    VS_FAULT_T fault;
    std::vector<std::string> parts;
    std::string log = "any";
};

template <typename DOCUMENT>
void expectFailures(DOCUMENT document, const std::string &clean, const std::vector<FAILURE_T> &cases)
{
    for (const FAILURE_T &one : cases) {
        SCOPED_TRACE(one.fault.name + " " + one.fault.key + " " + std::to_string(one.fault.kind));
        logClear();
        vsFaultAdd(one.fault);
        EXPECT_EQ(document(), changed(clean, one.parts));
        vsFaultsClear();
        EXPECT_EQ(one.log == "any" ? "any" : logText(), one.log);
    }
}

// Outputs of a show command that the virtual switch does not print, each with the document that comes of it.
using SHOWN_T = std::pair<std::string, std::string>;

template <typename DOCUMENT> void expectShown(const char *command, DOCUMENT document, const std::vector<SHOWN_T> &cases)
{
    for (const auto &[text, expected] : cases) {
        vsTextSet(command, text);
        EXPECT_EQ(document(), expected) << text;
    }
}
