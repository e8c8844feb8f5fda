// vlan_slots.h - a list of what is known of each VLAN: entries in the order of arrival, and an index by VLAN ID.
//
// The list owns its entries. A kind of entry has a `vlanId` and a routine vlanEntryRelease, which frees what the entry
// itself owns.
#pragma once

#include "runtime/owned.h"

#include <cstdint>

constexpr uint32_t VLAN_SLOTS = 4096;
constexpr uint32_t VLAN_INDEX_SIZE = 4097; // VLAN ID 4096 is accepted from "show vlan"

// An index entry of 0 also stands for slot 0: look with vlanSlotsFind, which checks whose entry it came to.
template <typename ENTRY> struct VLAN_SLOTS_T {
    ENTRY *ids[VLAN_SLOTS];
    uint32_t count;
    uint32_t index[VLAN_INDEX_SIZE];
};

template <typename ENTRY> struct VLAN_SLOTS_DELETER_T {
    void operator()(VLAN_SLOTS_T<ENTRY> *list) const
    {
        for (uint32_t i = 0; i < list->count; i++) {
            vlanEntryRelease(list->ids[i]);
            free(list->ids[i]);
        }
        free(list);
    }
};
template <typename ENTRY> using OWNED_VLAN_SLOTS = std::unique_ptr<VLAN_SLOTS_T<ENTRY>, VLAN_SLOTS_DELETER_T<ENTRY>>;

// An empty list; null without memory.
template <typename ENTRY> [[nodiscard]] OWNED_VLAN_SLOTS<ENTRY> vlanSlotsCreate()
{
    return OWNED_VLAN_SLOTS<ENTRY>(ownedArray<VLAN_SLOTS_T<ENTRY>>(1).release());
}

// Append a zeroed entry. Null when the list is full, the index has no place for the ID, or there is no memory.
template <typename ENTRY> [[nodiscard]] ENTRY *vlanSlotsAdd(VLAN_SLOTS_T<ENTRY> *list, uint32_t vlanId)
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

// Entry of a VLAN; null when there is none.
template <typename ENTRY> [[nodiscard]] ENTRY *vlanSlotsFind(const VLAN_SLOTS_T<ENTRY> *list, uint32_t vlanId)
{
    if (vlanId >= VLAN_INDEX_SIZE || list->index[vlanId] >= list->count)
        return nullptr;
    ENTRY *entry = list->ids[list->index[vlanId]];
    return entry != nullptr && entry->vlanId == vlanId ? entry : nullptr;
}
