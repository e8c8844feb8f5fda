#include "collectors/feature/sw_portmirroring.h"
#include "support/build.h"
#include "switch/fixture.h"

using PortMirroring = SWITCH_TEST;

TEST_F(PortMirroring, WhatCannotBeReadIsNought)
{
    const VS_MIRROR_T session = {true, 1, 3, 2, {{1, 2}, {2, 3}}};
    struct {
        VS_MIRROR_T mirror;
        VS_FAULT_T fault;
        const char *document; // after the session's number
    } cases[] = {
        {session,
         {"nothing"},
         R"(1,"reflectorPort":2,"destPort":3,"srcPort":[{"intfNum":1,"direction":2},)"
         R"({"intfNum":2,"direction":3}]})"},
        {session, {"*"}, R"(0,"reflectorPort":0,"destPort":0,"srcPort":[]})"},
        {VS_MIRROR_T(), {"nothing"}, R"(0,"reflectorPort":0,"destPort":0,"srcPort":[]})"},
    };
    for (const auto &one : cases) {
        vsState().mirror = one.mirror;
        vsFaultAdd(one.fault);
        OWNED_JSON object(cJSON_CreateObject());
        EXPECT_EQ(getPortMirroring(&handle, 1, object.get()), 0);
        EXPECT_EQ(OWNED_TEXT(cJSON_PrintUnformatted(object.get())).get(),
                  std::string(R"({"sessionNum":1,"sessionMode":)") + one.document);
        vsFaultsClear();
    }
}
