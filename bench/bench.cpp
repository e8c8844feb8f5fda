// bench.cpp - runs a full cycle and single documents, each followed by its floor, for a counter of instructions.
//
// What is counted happens inside benchMeasured; the counter writes one profile whenever that function ends. A line on
// standard output, "cycle" or a document's name, then "cost" or "floor", says which profile comes next.

#include "documents.h"
#include "floor.h"
#include "harness.h"
#include "restcache/cycle.h"
#include "runtime/paths.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <set>
#include <valgrind/callgrind.h>

using BODY_T = std::function<void()>;

// A document with what it stores when nothing changed.
struct MEASURED_T {
    DOCUMENT_T document;
    std::vector<FLOOR_T> floors; // one a record
};

extern "C" void benchMeasured(const BODY_T *body);

// A builder that writes its own records is taken to print the shorter form.
static bool formattedPayload(const BUILDER_T &builder)
{
    static char buffer[65536];
    char *text = nullptr;

    if (builder.kind == BUILDER_TEXT) {
        (void)builder.text(monitorClientHandle(), &text); // no text: no line ends either
        OWNED_TEXT owned(text);
        return text != nullptr && strchr(text, '\n') != nullptr;
    }
    if (builder.kind == BUILDER_BUFFER) {
        memset(buffer, 0, sizeof(buffer));
        (void)builder.buffer(monitorClientHandle(), buffer, sizeof(buffer)); // likewise
        return strchr(buffer, '\n') != nullptr;
    }
    return builder.kind == BUILDER_OBJECT;
}

// Every document, warm: which records it stores is seen by taking them away.
static std::vector<MEASURED_T> measuredList()
{
    std::vector<MEASURED_T> list;
    RECORDS_T all;

    for (int warm = 0; warm < 3; warm++) {
        for (const DOCUMENT_T &document : documentsListed())
            documentRun(document);
    }
    all = recordsRead();
    for (const DOCUMENT_T &document : documentsListed()) {
        recordsWrite({});
        documentRun(document);
        list.push_back({document, {}});
        for (const auto &[name, text] : recordsRead()) {
            FLOOR_T floor;
            if (floorPrepare(name, text, formattedPayload(document.builder), &floor))
                list.back().floors.push_back(std::move(floor));
        }
    }
    recordsWrite(all);
    return list;
}

static void measure(const char *name, const char *what, const BODY_T &body)
{
    body(); // what only a first run costs stays out
    printf("%s %s\n", name, what);
    fflush(stdout);
    benchMeasured(&body);
}

static bool floorsRun(const MEASURED_T &one)
{
    bool good = true;

    for (const FLOOR_T &floor : one.floors)
        good &= floorRun(floor, PathGet(PATH_REST_DB));
    return good;
}

// All rows of a cycle, whether due in the same one or not; nothing has changed.
static bool cycleMeasure(const std::vector<MEASURED_T> &list)
{
    bool good = true;

    measure("cycle", "cost", [&list] {
        for (const MEASURED_T &one : list) {
            if (documentIsInCycle(one.document))
                documentRun(one.document);
        }
    });
    measure("cycle", "floor", [&list, &good] {
        for (const MEASURED_T &one : list) {
            if (documentIsInCycle(one.document))
                good &= floorsRun(one);
        }
    });
    return good;
}

int main(int argc, char **argv)
{
    if (argc < 2) {
        fputs("usage: bench SCENARIO [NAME]...\n", stderr);
        return 2;
    }
    std::set<std::string> names(argv + 2, argv + argc);
    documentsRegister();
    std::string root = scenarioBegin(argv[1]);
    if (root.empty())
        return 2;
    std::vector<MEASURED_T> list = measuredList();
    CALLGRIND_START_INSTRUMENTATION; // all before it was only to get here
    bool good = cycleMeasure(list);
    for (const MEASURED_T &one : list) {
        if (!names.empty() && names.count(one.document.name) == 0)
            continue;
        measure(one.document.name, "cost", [&one] { documentRun(one.document); });
        measure(one.document.name, "floor", [&one, &good] { good &= floorsRun(one); });
    }
    rootRemove(root);
    if (good)
        return 0;
    fputs("bench: a floor did not give the stored text\n", stderr);
    return 1;
}

extern "C" __attribute__((noinline)) void benchMeasured(const BODY_T *body)
{
    (*body)();
}
