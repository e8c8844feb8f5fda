// port_name_index.h - look-ups of what belongs to a port by the port's name: started, filled, sorted, then searched.
#pragma once

#include "runtime/owned.h"
#include "switch/columns.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

constexpr size_t INDEXED_NAME_SIZE = 12; // names are cut at 11 characters

template <typename ITEM> struct PORT_NAME_INDEX_T {
    struct ENTRY_T {
        char name[INDEXED_NAME_SIZE];
        ITEM *item;
    };
    OWNED_ARRAY<ENTRY_T> entries;
    uint32_t count = 0;
};

// Room for so many names. False without memory; the index then stays empty.
template <typename ITEM> [[nodiscard]] bool portNameIndexStart(PORT_NAME_INDEX_T<ITEM> *index, uint32_t room)
{
    index->entries = ownedArray<typename PORT_NAME_INDEX_T<ITEM>::ENTRY_T>(room);
    return index->entries != nullptr;
}

template <typename ITEM> void portNameIndexAdd(PORT_NAME_INDEX_T<ITEM> *index, const char *name, ITEM *item)
{
    auto &entry = index->entries[index->count++];
    textCopy(entry.name, sizeof(entry.name), name);
    entry.item = item;
}

template <typename ITEM> void portNameIndexSort(PORT_NAME_INDEX_T<ITEM> *index)
{
    std::stable_sort(index->entries.get(), index->entries.get() + index->count,
                     [](const auto &a, const auto &b) { return strcmp(a.name, b.name) < 0; });
}

// Null when there is none; of several with one name the one that was added first.
template <typename ITEM> [[nodiscard]] ITEM *portNameIndexFind(const PORT_NAME_INDEX_T<ITEM> &index, const char *name)
{
    const typename PORT_NAME_INDEX_T<ITEM>::ENTRY_T *begin = index.entries.get(), *end = begin + index.count;
    const auto *found = std::lower_bound(
        begin, end, name, [](const auto &entry, const char *text) { return strcmp(entry.name, text) < 0; });

    return found != end && strcmp(found->name, name) == 0 ? found->item : nullptr;
}
