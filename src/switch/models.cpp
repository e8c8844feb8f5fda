#include "switch/models.h"

// What is known of each model, as three tables: its ports with their speed classes, the modes of the front ports that
// fan out, and the numbers of their sub-ports. The look-ups below them only search; they use nothing but text copying.

#include "runtime/result.h"
#include "switch/columns.h"

#include <cstring>

namespace {
constexpr uint32_t CAPABILITY_PORTS = 82; // port numbers above have no speed class, whatever the model uses
constexpr uint32_t CAPABILITY_PRESET = 3;

// Ports first to last are of one speed class (models.h).
struct CAPABILITY_RANGE_T {
    uint32_t first, last, code;
};
struct MODEL_T {
    const char *name;
    uint32_t physicalPorts, maximumPorts; // front ports; all port numbers
    CAPABILITY_RANGE_T ranges[4];         // a range that begins with 0 ends the list
};
constexpr MODEL_T MODELS[] = {
    {"TK620-R05", 16, 16, {{1, 16, 6}}},
    {"TK620-R04", 14, 14, {{1, 12, 4}, {13, 14, 6}}},
    {"TK620-R03", 12, 12, {{1, 10, 3}, {11, 12, 6}}},
    {"TK620-R01", 12, 12, {{1, 12, 3}}},
    {"TK620-R02", 12, 12, {{1, 10, 3}, {11, 12, 6}}},
    {"TK620-R06", 30, 30, {{1, 30, 3}}},
    {"TK620-R08", 30, 30, {{1, 26, 3}, {27, 30, 6}}},
    {"TK620-R07", 30, 30, {{1, 30, 3}}},
    {"TK620-R09", 48, 48, {{1, 48, 3}}},
    {"TK620-R10", 48, 48, {{1, 40, 3}, {41, 48, 6}}},
    {"TK620-R11", 48, 48, {{1, 40, 3}, {41, 48, 6}}},
    {"TK620-R12", 10, 10, {{1, 8, 3}, {9, 10, 6}}},
    {"TK620-R13", 10, 10, {{1, 10, 3}}},
    {"TK700-S12", 16, 16, {{1, 8, 6}, {9, 16, 3}}},
    {"TK700-S02", 16, 16, {{1, 16, 6}}},
    {"TK700-S01", 24, 24, {{1, 24, 6}}},
    {"TK700-S03", 24, 24, {{1, 24, 6}}},
    {"TK700-S05", 24, 24, {{1, 24, 6}}},
    {"TK700-S04", 48, 48, {{1, 48, 6}}},
    {"TK700-S08", 48, 48, {{1, 48, 6}}},
    {"TK700-S09", 48, 48, {{1, 48, 6}}},
    {"TK700-S06", 28, 28, {{1, 24, 3}, {25, 28, 6}}},
    {"TK700-S10", 52, 52, {{1, 48, 3}, {49, 52, 6}}},
    {"TK700-S07", 28, 28, {{1, 24, 3}, {25, 28, 6}}},
    {"TK700-S11", 52, 52, {{1, 48, 3}, {49, 52, 6}}},
    {"QMD-K2", 8, 8, {{1, 8, 6}}},
    {"QMD-K4", 8, 8, {{1, 8, 6}}},
    {"QMD-K3", 8, 8, {{1, 8, 6}}},
    {"QMD-K1", 2, 8, {{1, 2, 9}, {3, 8, 0}}},
    {"QMT-K9", 4, 4, {{1, 4, 6}}},
    {"TK830-T07", 28, 28, {{1, 24, 3}, {25, 28, 6}}},
    {"TK830-T16", 52, 52, {{1, 48, 3}, {49, 52, 6}}},
    {"TK830-T15", 52, 52, {{1, 44, 4}, {45, 48, 6}, {49, 52, 8}}},
    {"TK830-T18", 16, 16, {{1, 16, 6}}},
    {"TK830-T01", 24, 24, {{1, 24, 6}}},
    {"TK830-T09", 28, 28, {{1, 24, 6}, {25, 28, 8}}},
    {"TK830-T05", 28, 28, {{1, 24, 6}, {25, 28, 8}}},
    {"TK830-T10", 40, 40, {{1, 32, 6}, {33, 40, 8}}},
    {"TK830-T12", 40, 40, {{1, 36, 6}, {37, 40, 8}}},
    {"TK830-T11", 40, 40, {{1, 32, 6}, {33, 40, 8}}},
    {"TK830-T04", 20, 44, {{1, 16, 8}, {17, 20, 11}, {21, 36, 8}, {37, 44, 10}}},
    {"TK830-T14", 44, 68, {{1, 40, 6}, {41, 44, 11}, {45, 60, 8}, {61, 68, 10}}},
    {"TK830-T06", 28, 28, {{1, 24, 4}, {25, 28, 6}}},
    {"TK830-T17", 10, 10, {{1, 8, 4}, {9, 10, 8}}},
    {"TK830-T08", 32, 32, {{1, 24, 4}, {25, 28, 6}, {29, 32, 8}}},
    {"TK830-T13", 44, 68, {{1, 40, 6}, {41, 44, 11}, {45, 60, 8}, {61, 68, 10}}},
    {"TK830-T03", 16, 16, {{1, 16, 4}}},
    {"TK830-T02", 16, 80, {{1, 16, 11}, {17, 80, 8}}},
    {"TK910-U01", 32, 352, {{1, 32, 11}, {33, 81, 8}, {82, 82, 0}}},
    {"TK910-U02", 56, 136, {{1, 48, 8}, {49, 56, 11}, {57, 81, 8}, {82, 82, 0}}},
    {"QMD-K7", 4, 4, {{1, 4, 8}}},
    {"QMD-K6", 4, 4, {{1, 4, 8}}},
    {"QMD-K8", 4, 4, {{1, 4, 8}}},
    {"QMD-K5", 4, 4, {{1, 4, 6}}},
};
static_assert(sizeof MODELS / sizeof MODELS[0] == 54, "models");

// Front ports first to last of a model can run in these modes.
struct FANOUT_MODES_T {
    const char *model;
    uint32_t first, last;
    const char *modes;
};
constexpr FANOUT_MODES_T FANOUT_MODES[] = {
    {"QMD-K1", 1, 1, "4x10G,1x40G"},
    {"QMD-K1", 5, 5, "4x10G,1x40G"},
    {"TK830-T02", 1, 16, "4x25G,1x100G"},
    {"TK830-T04", 17, 20, "4x25G,2x50G,1x100G"},
    {"TK830-T14", 41, 44, "4x25G,2x50G,1x100G"},
    {"TK830-T13", 41, 44, "4x25G,2x50G,1x100G"},
    {"TK910-U01", 1, 32, "4x10G,4x25G,2x50G,1x100G"},
    {"TK910-U02", 49, 56, "4x10G,4x25G,2x50G,1x100G"},
};

// Each front port firstRoot to lastRoot of a model owns `size` sub-port numbers, one block after the other from `base`.
enum FANOUT_KIND : uint32_t { FANOUT_4X10G = 2, FANOUT_4X25G = 3, FANOUT_2X50G = 4 };
struct FANOUT_RANGES_T {
    const char *model;
    uint32_t firstRoot, lastRoot, base, size;
    FANOUT_KIND kind;
};
constexpr FANOUT_RANGES_T FANOUT_RANGES[] = {
    {"QMD-K1", 1, 1, 1, 4, FANOUT_4X10G}, // a 40G port counts as its own first sub-port
    {"QMD-K1", 5, 5, 5, 4, FANOUT_4X10G},       {"TK830-T02", 1, 16, 17, 4, FANOUT_4X25G},
    {"TK830-T04", 17, 20, 21, 4, FANOUT_4X25G}, {"TK830-T04", 17, 20, 37, 2, FANOUT_2X50G},
    {"TK830-T14", 41, 44, 45, 4, FANOUT_4X25G}, {"TK830-T14", 41, 44, 61, 2, FANOUT_2X50G},
    {"TK830-T13", 41, 44, 45, 4, FANOUT_4X25G}, {"TK830-T13", 41, 44, 61, 2, FANOUT_2X50G},
    {"TK910-U01", 1, 32, 33, 4, FANOUT_4X25G},  {"TK910-U01", 1, 32, 161, 2, FANOUT_2X50G},
    {"TK910-U01", 1, 32, 225, 4, FANOUT_4X10G}, {"TK910-U02", 49, 56, 57, 4, FANOUT_4X25G},
    {"TK910-U02", 49, 56, 89, 2, FANOUT_2X50G}, {"TK910-U02", 49, 56, 105, 4, FANOUT_4X10G},
};
constexpr bool fanoutSizesFitKinds()
{
    for (const FANOUT_RANGES_T &row : FANOUT_RANGES) {
        if (row.size != (row.kind == FANOUT_2X50G ? 2 : 4))
            return false;
    }
    return true;
}
static_assert(fanoutSizesFitKinds(), "sub-ports of a kind");

const MODEL_T *modelFind(const char *name);
} // namespace

int modelPortCapabilityGet(const char *model, uint32_t port, uint32_t *capability)
{
    *capability = CAPABILITY_PRESET;
    const MODEL_T *record = modelFind(model);
    if (record == nullptr || port == 0 || port > record->maximumPorts || port > CAPABILITY_PORTS)
        return RESULT_FAILED;
    *capability = 0;
    for (const CAPABILITY_RANGE_T &range : record->ranges) {
        if (port >= range.first && port <= range.last)
            *capability = range.code;
    }
    return RESULT_OK;
}

bool modelIsSfpCard(const char *model)
{
    return strcmp(model, "QMD-K6") == 0 || strcmp(model, "QMD-K7") == 0 || strcmp(model, "QMD-K8") == 0;
}

int modelPortCountGet(const char *model, uint32_t *count)
{
    const MODEL_T *record = modelFind(model);
    if (record == nullptr)
        return RESULT_FAILED;
    *count = record->maximumPorts;
    return RESULT_OK;
}

int modelPhysicalPortCountGet(const char *model, uint32_t *count)
{
    const MODEL_T *record = modelFind(model);
    if (record == nullptr)
        return RESULT_FAILED;
    *count = record->physicalPorts;
    return RESULT_OK;
}

int modelFanoutModesGet(const char *model, uint32_t port, char *text, size_t size)
{
    for (const FANOUT_MODES_T &row : FANOUT_MODES) {
        if (port >= row.first && port <= row.last && strcmp(row.model, model) == 0) {
            textCopy(text, size, row.modes);
            return RESULT_OK;
        }
    }
    return RESULT_FAILED;
}

int modelFanoutRootGet(const char *model, uint32_t port, uint32_t *root)
{
    uint8_t isFirst;
    return modelFanoutRootFirstGet(model, port, root, &isFirst);
}

int modelFanoutRootFirstGet(const char *model, uint32_t port, uint32_t *root, uint8_t *isFirst)
{
    int result = RESULT_FAILED;
    *root = 0;
    *isFirst = 0;
    for (const FANOUT_RANGES_T &row : FANOUT_RANGES) {
        uint32_t ports = (row.lastRoot - row.firstRoot + 1) * row.size;
        if (port < row.base || port - row.base >= ports || strcmp(row.model, model) != 0)
            continue;
        *root = row.firstRoot + (port - row.base) / row.size;
        if ((port - row.base) % row.size == 0)
            *isFirst = 1;
        result = RESULT_OK;
    }
    return result;
}

namespace {
const MODEL_T *modelFind(const char *name)
{
    for (const MODEL_T &model : MODELS) {
        if (strcmp(model.name, name) == 0)
            return &model;
    }
    return nullptr;
}
} // namespace
