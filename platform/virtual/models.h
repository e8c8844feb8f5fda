// models.h - the machine and card models a scenario can name: front ports, speeds, and what a front port splits into.
#pragma once

#include <cstdint>

struct VS_MODEL_T {
    const char *name;
    uint32_t frontPorts;
    uint32_t ports; // highest port number, sub-ports included
    struct {
        uint32_t last;  // port of the range, which begins after the previous one
        uint32_t speed; // code of openapiIfSpeedGet; 0 in a further range: none
    } speeds[3];
};

// Front ports first to last of a model split into `count` sub-ports each, numbered on from `firstSub`.
struct VS_FANOUT_T {
    const char *model;
    uint32_t first, last, step;
    uint32_t firstSub, count;
    uint32_t speed;
    const char *mode;  // "4x25G"
    const char *whole; // mode of the undivided port, "1x100G"
};

const VS_MODEL_T *vsModel(const char *name); // null when there is none
uint32_t vsModelSpeed(const VS_MODEL_T &model, uint32_t port);

// Range that contains a sub-port, or belongs to a front port in a mode; null when there is none. `root` is the front
// port.
const VS_FANOUT_T *vsFanoutOfSub(const char *model, uint32_t port, uint32_t &root);
const VS_FANOUT_T *vsFanoutOfRoot(const char *model, uint32_t port, const char *mode); // mode null: any
uint32_t vsFanoutFirstSub(const VS_FANOUT_T &range, uint32_t root);
