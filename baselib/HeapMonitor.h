#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <mutex>

namespace k7 {

// The implementation of Memory.h: levels of checking and the tables of blocks. The settings are for a
// debugger or a start-up hook; they must not change while blocks are in use.

/// 0: each entry is the runtime library's call and nothing else.
extern std::int32_t hm_enabled;
/// With hm_enabled: blocks are recorded in the tables, arguments and frees are checked.
extern std::int32_t hm_tracking;
/// With hm_enabled: each call writes a trace line.
extern std::int32_t hm_tracing;
/// Blocks come from hm_hooks, or hm_image_hooks, instead of the runtime library.
extern std::int32_t hm_use_hooks;
extern std::int32_t hm_use_image_hooks;

struct HeapHooks {
    void* Context;
    void* (*Alloc)(void* context, std::size_t size);
    void* (*Realloc)(void* context, void* pointer, std::size_t size);
    char* (*Strdup)(void* context, const char* string);
    void (*Free)(void* context, void* pointer);
};
extern HeapHooks hm_hooks;

struct ImageHeapHooks {
    void* Context;
    void* (*Alloc)(void* context, std::size_t size);
    void (*Free)(void* context, void* pointer);
};
extern ImageHeapHooks hm_image_hooks;

/// A block that is in use.
struct HeapEntry {
    std::uintptr_t Pointer; ///< 0 in a free slot
    std::uint64_t Size;     ///< bytes asked for
    std::int32_t Line;      ///< of the call
    char File[48];          ///< of the call: the end of its path
    HeapEntry* Next;        ///< older blocks of the same slot
};

/// The blocks of one family, hashed by address, with totals. What is left at the end are the leaks.
struct HeapInfo {
    static constexpr std::size_t kSlots = 16384;

    char Name[20];
    HeapEntry Slots[kSlots];
    std::uint32_t Collisions; ///< inserts that found their slot taken
    std::uint32_t Allocations;
    std::uint32_t Frees;
    std::uint64_t BytesInUse;
    std::uint64_t PeakBytes;
    std::int32_t OutOfMemory; ///< a block could not be recorded: the table is incomplete
    double SecondsInMonitor;  ///< spent in tracked calls of both families; kept in hm_normal only
    double EntrySeconds;
};
extern HeapInfo hm_normal;
extern HeapInfo hm_image;

/// Where the nodes of chains come from: malloc, unless a test wants them to run out.
using NodeMalloc = void* (*)(std::size_t size);
extern NodeMalloc hm_node_malloc;

/// One lock for settings, tables and counters. The same thread may take it again.
extern std::recursive_mutex hm_mutex;
extern std::int32_t hm_mutex_init; ///< hm_mutex has been taken at least once
void acquire_hm_mutex();
void release_hm_mutex();

// The operations on tables; hm_mutex is held.

/// Names and clears one of the two tables before its first use; later calls change nothing.
void init_info(HeapInfo* info);

/// The one-at-a-time hash of Bob Jenkins (Dr. Dobb's Journal, September 1997).
std::uint32_t hm_hash(const unsigned char* bytes, std::size_t count);
/// The slot of a block: the hash of its address, low byte first.
std::size_t hm_slot(std::uintptr_t pointer);

void hm_insert(HeapInfo* info, std::uintptr_t pointer, std::size_t size, const char* file, int line);
/// Copies a block's entry; false if the block is not in the table.
[[nodiscard]] bool hm_lookup(HeapInfo* info, std::uintptr_t pointer, HeapEntry* found);
/// Logs an error if the block is not in the table.
void hm_remove(HeapInfo* info, std::uintptr_t pointer);

/// Calls `visit(const HeapEntry&)` for every block of a table.
template <class Visit>
void hm_walk(const HeapInfo& info, Visit visit) {
    for (const HeapEntry& slot : info.Slots)
        for (const HeapEntry* entry = &slot; entry && entry->Pointer; entry = entry->Next) visit(*entry);
}

} // namespace k7
