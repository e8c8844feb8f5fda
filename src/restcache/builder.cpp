#include "restcache/builder.h"

// The table of builders as the program handed it in. A row serves a name only when it gives its document the way the
// asking side wants it, so that a wrong row is reported as missing instead of being called through the wrong type.

#include <cstring>

static const BUILDER_T *builderTable;
static size_t builderCount;

void builderTableSet(const BUILDER_T *table, size_t count)
{
    builderTable = table;
    builderCount = count;
}

const BUILDER_T *builderFind(const char *apiName, BUILDER_KIND kind)
{
    for (size_t i = 0; i < builderCount; i++) {
        if (builderTable[i].kind == kind && strcmp(builderTable[i].apiName, apiName) == 0)
            return &builderTable[i];
    }
    return nullptr;
}
