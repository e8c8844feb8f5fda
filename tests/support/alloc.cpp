// alloc.cpp - one counter for the allocations of the code under test, which fails the chosen one.
//
// The test executables are linked with --wrap, so malloc, calloc and realloc of the code linked into them arrive here;
// shared libraries keep the real ones. operator new(nothrow) is replaced by one that goes through the plain operator,
// so that an address sanitizer still sees new paired with delete.
#include "support/alloc.h"

#include <atomic>
#include <cJSON.h>
#include <cstdlib>
#include <mutex>
#include <new>
#include <sqlite3.h>

extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void *__wrap_malloc(size_t size);
void *__wrap_calloc(size_t count, size_t size);
void *__wrap_realloc(void *block, size_t size);
}

static std::atomic<unsigned> countedSources{0};
static std::atomic<int64_t> counted{0};
static std::atomic<int64_t> failingAt{-1};
static std::atomic<bool> failed{false};
static sqlite3_mem_methods sqliteReal;

// Count one allocation; true when it is the one to fail.
static bool fails(unsigned source)
{
    if ((countedSources.load(std::memory_order_relaxed) & source) == 0)
        return false;
    if (counted.fetch_add(1) != failingAt.load())
        return false;
    failed.store(true);
    return true;
}

extern "C" void *__wrap_malloc(size_t size)
{
    return fails(ALLOC_OWN) ? nullptr : __real_malloc(size);
}

extern "C" void *__wrap_calloc(size_t count, size_t size)
{
    return fails(ALLOC_OWN) ? nullptr : __real_calloc(count, size);
}

extern "C" void *__wrap_realloc(void *block, size_t size)
{
    return fails(ALLOC_OWN) ? nullptr : __real_realloc(block, size);
}

void *operator new(size_t size, const std::nothrow_t &) noexcept
{
    if (fails(ALLOC_OWN))
        return nullptr;
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

void *operator new[](size_t size, const std::nothrow_t &) noexcept
{
    if (fails(ALLOC_OWN))
        return nullptr;
    try {
        return ::operator new[](size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

static void *cjsonMalloc(size_t size)
{
    return fails(ALLOC_CJSON) ? nullptr : __real_malloc(size);
}

static void cjsonFree(void *block)
{
    free(block);
}

static void *sqliteMalloc(int size)
{
    return fails(ALLOC_SQLITE) ? nullptr : sqliteReal.xMalloc(size);
}

static void *sqliteRealloc(void *block, int size)
{
    return fails(ALLOC_SQLITE) ? nullptr : sqliteReal.xRealloc(block, size);
}

static void installOnce()
{
    cJSON_Hooks hooks = {cjsonMalloc, cjsonFree};
    cJSON_InitHooks(&hooks);
    sqlite3_shutdown();
    if (sqlite3_config(SQLITE_CONFIG_GETMALLOC, &sqliteReal) != SQLITE_OK)
        abort();
    sqlite3_mem_methods methods = sqliteReal;
    methods.xMalloc = sqliteMalloc;
    methods.xRealloc = sqliteRealloc;
    if (sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) != SQLITE_OK)
        abort();
}

void allocInstall()
{
    static std::once_flag installed;
    std::call_once(installed, installOnce);
}

void allocFailAt(int64_t n, unsigned sources)
{
    countedSources.store(0);
    counted.store(0);
    failed.store(false);
    failingAt.store(n);
    countedSources.store(sources);
}

bool allocFailStop()
{
    countedSources.store(0);
    return failed.load();
}

int64_t allocCount()
{
    return counted.load();
}
