// vlan_slots.h - the shape that the lists by VLAN share: entries in the order of arrival, and an index by VLAN ID.
//
// A list has `ids` (owning pointers, filled from slot 0), `count` and `index`. An index entry of 0 also stands for slot
// 0, so a look-up checks whose entry it came to.
#pragma once

#include "collectors/feature/vlan_model.h"
#include "runtime/owned.h"

// An empty list; null without memory. Freed by the list's own free routine.
template <typename LIST> [[nodiscard]] LIST *vlanSlotsCreate()
{
    return ownedArray<LIST>(1).release();
}

// Append a zeroed entry. Null when the list is full, the index has no place for the ID, or there is no memory.
template <typename ENTRY, typename LIST> [[nodiscard]] ENTRY *vlanSlotsAdd(LIST *list, uint32_t vlanId)
{
    if (list->count >= VLAN_SLOTS || vlanId >= VLAN_INDEX_SIZE)
        return nullptr;
    ENTRY *entry = ownedArray<ENTRY>(1).release();
    if (entry == nullptr)
        return nullptr;
    entry->vlanId = vlanId;
    list->index[vlanId] = list->count;
    list->ids[list->count++] = entry;
    return entry;
}

template <typename ENTRY, typename LIST> [[nodiscard]] ENTRY *vlanSlotsFind(const LIST *list, uint32_t vlanId)
{
    if (vlanId >= VLAN_INDEX_SIZE || list->index[vlanId] >= list->count)
        return nullptr;
    ENTRY *entry = list->ids[list->index[vlanId]];
    return entry != nullptr && entry->vlanId == vlanId ? entry : nullptr;
}
