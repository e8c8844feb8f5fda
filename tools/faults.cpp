#include "faults.h"

// A document is built cold, that is with every cache of the process empty. So one that lives off a cache asks for what
// fills it itself, and shows what a failure of that does.

#include "runtime/paths.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <unistd.h>

// Names with their keys, both in the order of their first use.
struct ASKED_T {
    std::vector<std::string> calls;
    std::map<std::string, std::vector<std::string>> keys; // by call
    std::vector<std::string> commands;
};

struct COMMAND_MODE_T {
    const char *label;
    VS_FAULT_KIND kind;
    uint32_t bytes;
    bool wide;
};
static const COMMAND_MODE_T commandModes[] = {
    {"fails", VS_FAIL, 0, false},
    {"leaves no file", VS_NO_FILE, 0, false},
    {"is empty", VS_EMPTY, 0, false},
    {"is cut at a third", VS_CUT_PART, 333, false},
    {"has CRLF", VS_CRLF, 0, false},
    {"is cut at two thirds", VS_CUT_PART, 667, true},
    {"has garbage bytes", VS_GARBAGE, 0, true},
};

static void askedNote(void *context, const char *name, const char *key, bool isCommand)
{
    ASKED_T *asked = static_cast<ASKED_T *>(context);
    auto add = [](std::vector<std::string> *texts, const char *text) {
        if (std::find(texts->begin(), texts->end(), text) == texts->end())
            texts->push_back(text);
    };

    add(isCommand ? &asked->commands : &asked->calls, name);
    if (!isCommand)
        add(&asked->keys[name], key);
}

static ASKED_T askedRecord(const DOCUMENT_T &document)
{
    ASKED_T asked;

    coldBegin();
    vsObserverSet(askedNote, &asked);
    documentRun(document);
    vsObserverSet(nullptr, nullptr);
    return asked;
}

static CASE_T callCase(const std::string &name, const std::string &key, const std::string &mode)
{
    CASE_T one = {name, mode, {}, "", false};

    one.fault.name = name;
    one.fault.key = key;
    return one;
}

// A call without keys, or with one, can only fail always.
std::vector<CASE_T> platformCases(const DOCUMENT_T &document, bool wide, bool keys)
{
    ASKED_T asked = askedRecord(document);
    std::vector<CASE_T> cases;

    for (const std::string &call : asked.calls) {
        const std::vector<std::string> &used = asked.keys.at(call);
        if (keys && used.size() > 1) {
            cases.push_back(callCase(call, used.front(), "fails for its first key " + used.front()));
            cases.push_back(callCase(call, used.back(), "fails for its last key " + used.back()));
        }
        cases.push_back(callCase(call, "", "fails"));
    }
    for (const std::string &command : asked.commands) {
        for (const COMMAND_MODE_T &mode : commandModes) {
            CASE_T one = {"\"" + command + "\"", mode.label, {}, "", false};
            one.fault.name = command;
            one.fault.kind = mode.kind;
            one.fault.bytes = mode.bytes;
            if (wide || !mode.wide)
                cases.push_back(one);
        }
    }
    return cases;
}

std::vector<CASE_T> fileCases(const NAMES_T &files)
{
    std::vector<CASE_T> cases;

    for (const std::string &file : files) {
        if (file == PathGet(PATH_REST_DB))
            continue;
        cases.push_back({file, "is missing", {}, file, false});
        cases.push_back({file, "is cut in half", {}, file, true});
    }
    return cases;
}

void coldBegin()
{
    processBegin();
    textWrite(PathGet(PATH_REST_DELTA), "");
}

void caseRun(const CASE_T &one, const DOCUMENT_T &document)
{
    if (one.file.empty()) {
        vsFaultAdd(one.fault);
        documentRun(document);
        vsFaultsClear();
        return;
    }
    std::string text = textRead(one.file);
    if (one.cut)
        textWrite(one.file, text.substr(0, text.size() / 2));
    else
        unlink(one.file.c_str());
    documentRun(document);
    textWrite(one.file, text);
}

NAMES_T rootFiles()
{
    NAMES_T files;

    for (const auto &entry : std::filesystem::recursive_directory_iterator(rootName())) {
        const std::string path = entry.path();
        bool changing = path == PathGet(PATH_LOG) || path == PathGet(PATH_LOG_OLD) ||
                        path == PathGet(PATH_REST_DELTA) || path == PathGet(PATH_BOOTVAR_LOCK) ||
                        path == PathGet(PATH_MGMT_PORT_LOCK) || path.rfind(PathGet(PATH_LOCK_DIR), 0) == 0;
        if (!changing && entry.is_regular_file())
            files.insert(path);
    }
    return files;
}

std::string rootName()
{
    std::string root = PathGet(PATH_REST_DB);

    root.resize(root.size() - strlen("/tmp/restapi_db"));
    return root;
}
