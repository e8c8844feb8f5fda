// docnames.cpp - the API names of the documents that this build of the daemon makes, one a line.
//
// Taken from the table of builders, so that a check expects neither more nor less than the daemon can write. With
// --scheduled only the names that start-up and the first cycle write, as they stand in the cache: a document written in
// chunks by its first record.

#include "builders.h"
#include "restcache/builder.h"
#include "restcache/writeback.h"

#include <cstdio>
#include <cstring>

// Written by the refresh cycle itself, without a row in the writeback table.
static const char *const directNames[] = {"portStats_outbound_ex", "portStats_inbound_ex", "stacking",
                                          "multicast_groups_ex",   "swcfg_poe_info",       "bufferedLog"};

// Built only when someone asks for a writeback of the name.
static const char *const unscheduledNames[] = {"vlan_list", "swcfg_port", "swcfg_ports_status", "sw_lag_cfg"};

static const char *const chunkedNames[] = {"neighbor_ex", "multicast_groups_ex"};

template <size_t COUNT> static bool contains(const char *const (&names)[COUNT], const char *name)
{
    for (const char *one : names)
        if (strcmp(one, name) == 0)
            return true;
    return false;
}

static bool hasBuilder(const char *name)
{
    static const BUILDER_KIND kinds[] = {BUILDER_TEXT, BUILDER_BUFFER, BUILDER_OBJECT, BUILDER_WRITES};

    for (BUILDER_KIND kind : kinds)
        if (builderFind(name, kind) != nullptr)
            return true;
    return false;
}

static void print(const char *name, bool scheduled)
{
    if (!hasBuilder(name) || (scheduled && contains(unscheduledNames, name)))
        return;
    printf("%s%s\n", name, scheduled && contains(chunkedNames, name) ? "/0" : "");
}

int main(int argc, char **argv)
{
    bool scheduled = argc == 2 && strcmp(argv[1], "--scheduled") == 0;
    const char *name;

    if (argc > 1 && !scheduled) {
        fputs("usage: docnames [--scheduled]\n", stderr);
        return 2;
    }
    buildersRegister();
    puts("init_complete");
    for (unsigned index = 0; (name = writebackName(index)) != nullptr; index++)
        print(name, scheduled);
    for (const char *direct : directNames)
        print(direct, scheduled);
    return 0;
}
