// builders.cpp - the one place that knows both sides: the cache's API names and the collectors' builders.

#include "builders.h"

#include "restcache/builder.h"

void buildersRegister()
{
    builderTableSet(nullptr, 0);
}
