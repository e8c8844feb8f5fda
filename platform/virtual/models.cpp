#include "models.h"

#include <cstring>

// The models of the maker's catalogue, as far as a scenario needs them. Speeds are link speed codes; a multi-gigabit
// port links at 2.5 Gbit/s.

enum { G1 = 7, MULTI = 8, G10 = 10, G25 = 12, G40 = 13, G50 = 14, G100 = 15 };

static const VS_MODEL_T MODELS[] = {
    {"TK620-R05", 16, 16, {{16, G10}}},
    {"TK620-R04", 14, 14, {{12, MULTI}, {14, G10}}},
    {"TK620-R03", 12, 12, {{10, G1}, {12, G10}}},
    {"TK620-R01", 12, 12, {{12, G1}}},
    {"TK620-R02", 12, 12, {{10, G1}, {12, G10}}},
    {"TK620-R06", 30, 30, {{30, G1}}},
    {"TK620-R08", 30, 30, {{26, G1}, {30, G10}}},
    {"TK620-R07", 30, 30, {{30, G1}}},
    {"TK620-R09", 48, 48, {{48, G1}}},
    {"TK620-R10", 48, 48, {{40, G1}, {48, G10}}},
    {"TK620-R11", 48, 48, {{40, G1}, {48, G10}}},
    {"TK620-R12", 10, 10, {{8, G1}, {10, G10}}},
    {"TK620-R13", 10, 10, {{10, G1}}},
    {"TK700-S12", 16, 16, {{8, G10}, {16, G1}}},
    {"TK700-S02", 16, 16, {{16, G10}}},
    {"TK700-S01", 24, 24, {{24, G10}}},
    {"TK700-S03", 24, 24, {{24, G10}}},
    {"TK700-S05", 24, 24, {{24, G10}}},
    {"TK700-S04", 48, 48, {{48, G10}}},
    {"TK700-S08", 48, 48, {{48, G10}}},
    {"TK700-S09", 48, 48, {{48, G10}}},
    {"TK700-S06", 28, 28, {{24, G1}, {28, G10}}},
    {"TK700-S10", 52, 52, {{48, G1}, {52, G10}}},
    {"TK700-S07", 28, 28, {{24, G1}, {28, G10}}},
    {"TK700-S11", 52, 52, {{48, G1}, {52, G10}}},
    {"TK700-S13", 0, 0, {}}, // chassis: its ports are its cards'
    {"QMD-K2", 8, 8, {{8, G10}}},
    {"QMD-K4", 8, 8, {{8, G10}}},
    {"QMD-K3", 8, 8, {{8, G10}}},
    {"QMD-K1", 2, 8, {{8, G40}}},
    {"QMT-K9", 4, 4, {{4, G10}}},
    {"TK830-T07", 28, 28, {{24, G1}, {28, G10}}},
    {"TK830-T16", 52, 52, {{48, G1}, {52, G10}}},
    {"TK830-T15", 52, 52, {{44, MULTI}, {48, G10}, {52, G25}}},
    {"TK830-T18", 16, 16, {{16, G10}}},
    {"TK830-T01", 24, 24, {{24, G10}}},
    {"TK830-T09", 28, 28, {{24, G10}, {28, G25}}},
    {"TK830-T05", 28, 28, {{24, G10}, {28, G25}}},
    {"TK830-T10", 40, 40, {{32, G10}, {40, G25}}},
    {"TK830-T12", 40, 40, {{36, G10}, {40, G25}}},
    {"TK830-T11", 40, 40, {{32, G10}, {40, G25}}},
    {"TK830-T04", 20, 44, {{16, G25}, {20, G100}}},
    {"TK830-T14", 44, 68, {{40, G10}, {44, G100}}},
    {"TK830-T06", 28, 28, {{24, MULTI}, {28, G10}}},
    {"TK830-T17", 10, 10, {{8, MULTI}, {10, G25}}},
    {"TK830-T08", 32, 32, {{24, MULTI}, {28, G10}, {32, G25}}},
    {"TK830-T13", 44, 68, {{40, G10}, {44, G100}}},
    {"TK830-T03", 16, 16, {{16, MULTI}}},
    {"TK830-T02", 16, 80, {{16, G100}}},
    {"TK910-U01", 32, 352, {{32, G100}}},
    {"TK910-U02", 56, 136, {{48, G25}, {56, G100}}},
    {"QMD-K7", 4, 4, {{4, G25}}},
    {"QMD-K6", 4, 4, {{4, G25}}},
    {"QMD-K8", 4, 4, {{4, G25}}},
    {"QMD-K5", 4, 4, {{4, G10}}},
};

static const VS_FANOUT_T FANOUTS[] = {
    {"QMD-K1", 1, 5, 4, 1, 4, G10, "4x10G", "1x40G"}, // the front port is its own first sub-port
    {"TK830-T02", 1, 16, 1, 17, 4, G25, "4x25G", "1x100G"},   {"TK830-T04", 17, 20, 1, 21, 4, G25, "4x25G", "1x100G"},
    {"TK830-T04", 17, 20, 1, 37, 2, G50, "2x50G", "1x100G"},  {"TK830-T14", 41, 44, 1, 45, 4, G25, "4x25G", "1x100G"},
    {"TK830-T14", 41, 44, 1, 61, 2, G50, "2x50G", "1x100G"},  {"TK830-T13", 41, 44, 1, 45, 4, G25, "4x25G", "1x100G"},
    {"TK830-T13", 41, 44, 1, 61, 2, G50, "2x50G", "1x100G"},  {"TK910-U01", 1, 32, 1, 33, 4, G25, "4x25G", "1x100G"},
    {"TK910-U01", 1, 32, 1, 161, 2, G50, "2x50G", "1x100G"},  {"TK910-U01", 1, 32, 1, 225, 4, G10, "4x10G", "1x100G"},
    {"TK910-U02", 49, 56, 1, 57, 4, G25, "4x25G", "1x100G"},  {"TK910-U02", 49, 56, 1, 89, 2, G50, "2x50G", "1x100G"},
    {"TK910-U02", 49, 56, 1, 105, 4, G10, "4x10G", "1x100G"},
};

const VS_MODEL_T *vsModel(const char *name)
{
    for (const VS_MODEL_T &model : MODELS)
        if (strcmp(model.name, name) == 0)
            return &model;
    return nullptr;
}

uint32_t vsModelSpeed(const VS_MODEL_T &model, uint32_t port)
{
    for (const auto &range : model.speeds)
        if (port <= range.last)
            return range.speed;
    return G1;
}

uint32_t vsFanoutFirstSub(const VS_FANOUT_T &range, uint32_t root)
{
    return range.firstSub + (root - range.first) / range.step * range.count;
}

const VS_FANOUT_T *vsFanoutOfSub(const char *model, uint32_t port, uint32_t &root)
{
    for (const VS_FANOUT_T &range : FANOUTS) {
        uint32_t roots = (range.last - range.first) / range.step + 1;
        if (strcmp(range.model, model) != 0 || port < range.firstSub || port >= range.firstSub + roots * range.count)
            continue;
        root = range.first + (port - range.firstSub) / range.count * range.step;
        return root != port ? &range : nullptr;
    }
    return nullptr;
}

const VS_FANOUT_T *vsFanoutOfRoot(const char *model, uint32_t port, const char *mode)
{
    for (const VS_FANOUT_T &range : FANOUTS)
        if (strcmp(range.model, model) == 0 && port >= range.first && port <= range.last &&
            (port - range.first) % range.step == 0 && (mode == nullptr || strcmp(mode, range.mode) == 0))
            return &range;
    return nullptr;
}
