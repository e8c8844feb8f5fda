#include "switch/models.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {
constexpr uint32_t CLASSED_PORTS = 82; // port numbers above have no speed class

std::vector<std::string> allModels()
{
    struct {
        const char *series;
        int first, last;
    } series[] = {{"TK620-R", 1, 13}, {"TK700-S", 1, 12}, {"TK830-T", 1, 18},
                  {"TK910-U", 1, 2},  {"QMD-K", 1, 8},    {"QMT-K", 9, 9}};
    std::vector<std::string> models;
    for (const auto &row : series) {
        for (int i = row.first; i <= row.last; i++) {
            models.push_back(row.series + std::string(i < 10 && row.series[0] == 'T' ? "0" : "") + std::to_string(i));
        }
    }
    return models;
}

uint32_t portCount(const std::string &model)
{
    uint32_t count = 0;
    EXPECT_EQ(modelPortCountGet(model.c_str(), &count), 0) << model;
    return count;
}

uint32_t physicalCount(const std::string &model)
{
    uint32_t count = 0;
    EXPECT_EQ(modelPhysicalPortCountGet(model.c_str(), &count), 0) << model;
    return count;
}

int capability(const std::string &model, uint32_t port)
{
    uint32_t code = 99;
    int result = modelPortCapabilityGet(model.c_str(), port, &code);
    return result == 0 ? static_cast<int>(code) : -static_cast<int>(code);
}

uint32_t rootOf(const std::string &model, uint32_t port)
{
    uint32_t root = 99;
    int result = modelFanoutRootGet(model.c_str(), port, &root);
    EXPECT_EQ(result, root == 0 ? 10000 : 0) << model << " " << port;
    return root;
}

std::string modesOf(const std::string &model, uint32_t port)
{
    char text[32] = "";
    int result = modelFanoutModesGet(model.c_str(), port, text, sizeof text);
    EXPECT_EQ(result, text[0] == '\0' ? 10000 : 0) << model << " " << port;
    return text;
}
} // namespace

TEST(Models, SubPortsFollowTheFrontPortsModeByMode)
{
    struct {
        const char *mode;
        uint32_t subPorts;
        int code;
    } modes[] = {{"4x25G", 4, 8}, {"2x50G", 2, 10}, {"4x10G", 4, -3}};

    int fannedOut = 0;
    for (const std::string &model : allModels()) {
        if (model == "QMD-K1")
            continue; // its sub-ports begin at the front port itself
        uint32_t next = physicalCount(model) + 1;
        for (uint32_t port = 1; port < next; port++)
            EXPECT_EQ(rootOf(model, port), 0U) << model << " " << port;
        for (const auto &mode : modes) {
            for (uint32_t front = 1; front <= physicalCount(model); front++) {
                if (modesOf(model, front).find(mode.mode) == std::string::npos)
                    continue;
                EXPECT_EQ(capability(model, front), 11) << model << " " << front;
                for (uint32_t i = 0; i < mode.subPorts; i++, next++) {
                    uint32_t root;
                    uint8_t isFirst = 99;
                    EXPECT_EQ(modelFanoutRootFirstGet(model.c_str(), next, &root, &isFirst), 0);
                    EXPECT_EQ(root, front) << model << " " << next;
                    EXPECT_EQ(isFirst, i == 0) << model << " " << next;
                    if (next < CLASSED_PORTS) {
                        EXPECT_EQ(capability(model, next), mode.code) << model << " " << next;
                    }
                }
            }
        }
        EXPECT_EQ(next - 1, portCount(model)) << model;
        EXPECT_EQ(rootOf(model, next), 0U) << model;
        fannedOut += portCount(model) > physicalCount(model);
    }
    EXPECT_EQ(fannedOut, 6);
}

TEST(Models, SpotValues)
{
    struct {
        const char *model;
        uint32_t physical, maximum;
        std::vector<std::pair<uint32_t, int>> codes;
    } rows[] = {
        {"TK700-S12", 16, 16, {{8, 6}, {9, 3}}},
        {"QMD-K1", 2, 8, {{2, 9}, {3, 0}}},
        {"TK830-T15", 52, 52, {{44, 4}, {45, 6}, {48, 6}, {49, 8}}},
        {"TK830-T04", 20, 44, {{16, 8}, {17, 11}, {36, 8}, {37, 10}}},
        {"TK830-T02", 16, 80, {{16, 11}, {17, 8}, {80, 8}, {81, -3}}},
        {"TK910-U01", 32, 352, {{32, 11}, {81, 8}, {82, 0}, {83, -3}}},
        {"TK910-U02", 56, 136, {{48, 8}, {56, 11}, {81, 8}, {82, 0}, {83, -3}}},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(physicalCount(row.model), row.physical) << row.model;
        EXPECT_EQ(portCount(row.model), row.maximum) << row.model;
        for (const auto &code : row.codes)
            EXPECT_EQ(capability(row.model, code.first), code.second) << row.model << " " << code.first;
    }
    EXPECT_EQ(rootOf("TK830-T04", 38), 17U);
    EXPECT_EQ(rootOf("TK910-U01", 352), 32U);
    EXPECT_EQ(modesOf("TK910-U02", 56), "4x10G,4x25G,2x50G,1x100G");
}

TEST(Models, UnknownModelLeavesThePresets)
{
    for (const char *model : {"", "TK830", "TK830-T020", "tk830-t02", "TK700-S13"}) {
        uint32_t count = 77;
        char text[8] = "kept";
        EXPECT_EQ(modelPortCountGet(model, &count), 10000) << model;
        EXPECT_EQ(modelPhysicalPortCountGet(model, &count), 10000) << model;
        EXPECT_EQ(count, 77U) << model;
        EXPECT_EQ(modelFanoutModesGet(model, 1, text, sizeof text), 10000) << model;
        EXPECT_STREQ(text, "kept") << model;
        EXPECT_EQ(capability(model, 1), -3) << model;
        EXPECT_EQ(rootOf(model, 17), 0U) << model;
    }
}
