#include "baselib/HeapMonitor.h"

#include "baselib/Log.h"

#include <algorithm>
#include <cstring>

namespace k7 {

// All of this is ready before any code of the process runs: other static objects allocate.
constinit std::int32_t hm_enabled = 0;
constinit std::int32_t hm_tracking = 0;
constinit std::int32_t hm_tracing = 0;
constinit std::int32_t hm_use_hooks = 0;
constinit std::int32_t hm_use_image_hooks = 0;
constinit HeapHooks hm_hooks{};
constinit ImageHeapHooks hm_image_hooks{};
constinit HeapInfo hm_normal{};
constinit HeapInfo hm_image{};
constinit NodeMalloc hm_node_malloc = std::malloc;
constinit std::recursive_mutex hm_mutex;
constinit std::int32_t hm_mutex_init = 0;

namespace {

constinit bool normalReady = false;
constinit bool imageReady = false;

/// The end of a path, as much as an entry holds.
void StoreFile(HeapEntry& entry, const char* path) {
    constexpr std::size_t room = sizeof entry.File - 1;
    const std::size_t length = std::strlen(path);
    std::strcpy(entry.File, path + (length > room ? length - room : 0));
}

/// The link in a slot's chain that leads to a block's node, or to the null at the end. The slot's own entry
/// is not looked at.
HeapEntry** FindLink(HeapEntry& slot, std::uintptr_t pointer) {
    HeapEntry** link = &slot.Next;
    while (*link && (*link)->Pointer != pointer) link = &(*link)->Next;
    return link;
}

/// Takes the node at a link out of its chain.
void DropNode(HeapEntry** link) {
    HeapEntry* node = *link;
    *link = node->Next;
    std::free(node);
}

} // namespace

void acquire_hm_mutex() {
    hm_mutex.lock();
    hm_mutex_init = 1;
}

void release_hm_mutex() {
    if (!hm_mutex_init) {
        k7_log(kLogError, "K7-HM-DEBUG: INTERNAL ERROR: release_hm_mutex() found hm_mutex_init=0!\n");
        return;
    }
    hm_mutex.unlock();
}

void init_info(HeapInfo* info) {
    if (info != &hm_normal && info != &hm_image) {
        k7_log(kLogError, "K7-HM-DEBUG: INTERNAL ERROR: Asked to initialize unknown info at: %p.\n",
               static_cast<void*>(info));
        return;
    }
    bool& ready = info == &hm_normal ? normalReady : imageReady;
    if (ready) return;
    std::memset(info, 0, sizeof *info);
    std::strcpy(info->Name, info == &hm_normal ? "NORMAL" : "IMAGE");
    ready = true;
}

std::uint32_t hm_hash(const unsigned char* bytes, std::size_t count) {
    std::uint32_t hash = 0;
    for (std::size_t i = 0; i < count; ++i) {
        hash += bytes[i];
        hash += hash << 10;
        hash ^= hash >> 6;
    }
    hash += hash << 3;
    hash ^= hash >> 11;
    return hash + (hash << 15);
}

std::size_t hm_slot(std::uintptr_t pointer) {
    unsigned char bytes[8];
    for (int i = 0; i < 8; ++i)
        bytes[i] = static_cast<unsigned char>(static_cast<std::uint64_t>(pointer) >> 8 * i);
    return hm_hash(bytes, sizeof bytes) % HeapInfo::kSlots;
}

void hm_insert(HeapInfo* info, std::uintptr_t pointer, std::size_t size, const char* file, int line) {
    init_info(info);
    HeapEntry& slot = info->Slots[hm_slot(pointer)];

    // The newest block lies in the slot itself; older ones move down the chain.
    if (slot.Pointer) {
        ++info->Collisions;
        auto* node = static_cast<HeapEntry*>(hm_node_malloc(sizeof(HeapEntry)));
        if (!node) {
            k7_log(kLogError, "K7-HM-DEBUG: INTERNAL ERROR: Cannot allocate space for info node.\n");
            info->OutOfMemory = 1;
            return;
        }
        *node = slot;
        slot.Next = node;
    }
    slot.Pointer = pointer;
    slot.Size = size;
    slot.Line = line;
    StoreFile(slot, file);

    info->BytesInUse += size;
    ++info->Allocations;
    info->PeakBytes = std::max(info->PeakBytes, info->BytesInUse);
}

bool hm_lookup(HeapInfo* info, std::uintptr_t pointer, HeapEntry* found) {
    init_info(info);
    HeapEntry& slot = info->Slots[hm_slot(pointer)];
    const HeapEntry* entry = slot.Pointer == pointer ? &slot : *FindLink(slot, pointer);
    if (!entry || !pointer) return false;
    *found = *entry;
    return true;
}

void hm_remove(HeapInfo* info, std::uintptr_t pointer) {
    init_info(info);
    HeapEntry& slot = info->Slots[hm_slot(pointer)];
    HeapEntry removed;
    if (!hm_lookup(info, pointer, &removed)) {
        k7_log(kLogError, "K7-HM-DEBUG: Attempt to free %p - Not allocated in %s!\n",
               reinterpret_cast<void*>(pointer), info->Name);
        return;
    }
    if (slot.Pointer != pointer) {
        DropNode(FindLink(slot, pointer));
    } else if (slot.Next) {
        HeapEntry* first = slot.Next;
        slot = *first;
        std::free(first);
    } else {
        slot = HeapEntry{};
    }
    ++info->Frees;
    info->BytesInUse -= removed.Size;
}

} // namespace k7
