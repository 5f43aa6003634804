#include "baselib/Memory.h"

#include "baselib/HeapMonitor.h"
#include "baselib/Log.h"
#include "baselib/Platform.h"

#include <cstdlib>
#include <cstring>

namespace k7 {

namespace {

/// What sets the two families of blocks apart.
struct Kind {
    const char* Name; ///< head of the entries' names
    HeapInfo* Table;
    const std::int32_t* UseHooks;
    void* (*HookAlloc)(std::size_t size);
    void (*HookFree)(void* pointer);

    void* Alloc(std::size_t size) const { return *UseHooks ? HookAlloc(size) : std::malloc(size); }
    void Free(void* pointer) const { *UseHooks ? HookFree(pointer) : std::free(pointer); }
};

constexpr Kind kNormal{
    "k7_",
    &hm_normal,
    &hm_use_hooks,
    [](std::size_t size) { return hm_hooks.Alloc(hm_hooks.Context, size); },
    [](void* pointer) { hm_hooks.Free(hm_hooks.Context, pointer); },
};
constexpr Kind kImage{
    "k7_image_",
    &hm_image,
    &hm_use_image_hooks,
    [](std::size_t size) { return hm_image_hooks.Alloc(hm_image_hooks.Context, size); },
    [](void* pointer) { hm_image_hooks.Free(hm_image_hooks.Context, pointer); },
};

struct MonitorLock {
    MonitorLock() { acquire_hm_mutex(); }
    ~MonitorLock() { release_hm_mutex(); }
    MonitorLock(const MonitorLock&) = delete;
    MonitorLock& operator=(const MonitorLock&) = delete;
};

/// Adds its lifetime to the seconds spent in the monitor, which one table keeps for both families.
struct MonitorClock {
    MonitorClock() {
        init_info(&hm_normal);
        hm_normal.EntrySeconds = Seconds();
    }
    ~MonitorClock() { hm_normal.SecondsInMonitor += Seconds() - hm_normal.EntrySeconds; }
    MonitorClock(const MonitorClock&) = delete;
    MonitorClock& operator=(const MonitorClock&) = delete;

    static double Seconds() { return static_cast<double>(TickMilliseconds()) / 1000.0; }
};

std::uintptr_t AddressOf(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

char* CopyString(const char* string) {
    const std::size_t size = std::strlen(string) + 1;
    void* copy = std::malloc(size);
    return static_cast<char*>(copy ? std::memcpy(copy, string, size) : nullptr);
}

/// Makes a block with `make`, under the lock if the level requires it, and records it.
template <class Make>
void* Monitored(const Kind& kind, std::size_t size, const char* file, int line, Make make) {
    if (hm_tracking) {
        const MonitorLock lock;
        const MonitorClock clock;
        void* block = make();
        if (block) hm_insert(kind.Table, AddressOf(block), size, file, line);
        return block;
    }
    if (*kind.UseHooks) {
        const MonitorLock lock;
        return make();
    }
    return make();
}

void* MonitoredMalloc(const Kind& kind, std::size_t size, const char* file, int line, bool traced) {
    if (hm_tracking && size == 0) {
        k7_log(kLogError, "K7-HM-DEBUG: %smalloc( size=0 ) attempted! [%s(%d)]\n", kind.Name, file, line);
        return nullptr;
    }
    void* block = Monitored(kind, size, file, line, [&] { return kind.Alloc(size); });
    if (traced)
        k7_log(kLogInfo, "K7-HM-TRACE: %smalloc(%zu) ret (%p) at [%s(%d)]\n", kind.Name, size, block, file,
               line);
    return block;
}

/// Frees a block of a table and removes its entry. False if the table does not have it; the block is then
/// untouched.
bool FreeTracked(const Kind& kind, void* pointer, const char* file, int line, HeapEntry* entry) {
    const MonitorClock clock;
    const std::uintptr_t address = AddressOf(pointer);
    if (!hm_lookup(kind.Table, address, entry)) {
        k7_log(kLogError, "K7-HM-DEBUG: %sfree(%p) attempted - but %p is not allocated! [%s(%d)]\n",
               kind.Name, pointer, pointer, file, line);
        return false;
    }
    kind.Free(pointer);
    hm_remove(kind.Table, address);
    return true;
}

void MonitoredFree(const Kind& kind, void* pointer, const char* file, int line) {
    const std::uintptr_t address = AddressOf(pointer);
    if (hm_tracking) {
        if (!pointer) {
            k7_log(kLogError, "K7-HM-DEBUG: %sfree( NULL ) attempted! [%s(%d)]\n", kind.Name, file, line);
            return;
        }
        const MonitorLock lock;
        HeapEntry entry;
        if (!FreeTracked(kind, pointer, file, line, &entry) || !hm_tracing) return;
        k7_log(kLogInfo, "K7-HM-TRACE: %sfree(%p) at [%s(%d)].\n", kind.Name,
               reinterpret_cast<void*>(address), file, line);
        k7_log_more("            Alloc at [%s(%d)], size %llu\n", entry.File, entry.Line,
                    static_cast<unsigned long long>(entry.Size));
    } else if (*kind.UseHooks) {
        const MonitorLock lock;
        kind.Free(pointer);
        if (hm_tracing)
            k7_log(kLogInfo, "K7-HM-TRACE: %sfree(%p) at [%s(%d)]\n", kind.Name,
                   reinterpret_cast<void*>(address), file, line);
    } else {
        std::free(pointer);
    }
}

void* RawRealloc(void* pointer, std::size_t size) {
    return hm_use_hooks ? hm_hooks.Realloc(hm_hooks.Context, pointer, size) : std::realloc(pointer, size);
}

/// Moves a block of the table to a new size. False if the arguments were refused.
bool TrackedRealloc(void* pointer, std::size_t size, const char* file, int line, void** block) {
    if (size == 0) {
        k7_log(kLogError, "K7-HM-DEBUG: k7_realloc( size=0 ) attempted! [%s(%d)]\n", file, line);
        return false;
    }
    const MonitorLock lock;
    const MonitorClock clock;
    const std::uintptr_t address = AddressOf(pointer);
    HeapEntry entry;
    if (!hm_lookup(&hm_normal, address, &entry)) {
        k7_log(kLogError, "K7-HM-DEBUG: k7_realloc(%p,%zu) attempted - but %p is not allocated!  [%s(%d)]\n",
               pointer, size, pointer, file, line);
        return false;
    }
    *block = RawRealloc(pointer, size);
    if (*block) {
        hm_remove(&hm_normal, address);
        hm_insert(&hm_normal, AddressOf(*block), size, file, line);
    }
    return true;
}

void* UntrackedRealloc(void* pointer, std::size_t size) {
    if (!hm_use_hooks) return std::realloc(pointer, size);
    const MonitorLock lock;
    return RawRealloc(pointer, size);
}

} // namespace

void* k7_malloc(std::size_t size, const char* file, int line) {
    if (!hm_enabled) return std::malloc(size);
    return MonitoredMalloc(kNormal, size, file, line, hm_tracing && line != 0);
}

void* k7_image_malloc(std::size_t size, const char* file, int line) {
    if (!hm_enabled) return std::malloc(size);
    return MonitoredMalloc(kImage, size, file, line, hm_tracing);
}

void* k7_realloc(void* pointer, std::size_t size, const char* file, int line) {
    if (!hm_enabled) return std::realloc(pointer, size);
    const std::uintptr_t address = AddressOf(pointer);
    void* block = nullptr;
    if (!hm_tracking)
        block = UntrackedRealloc(pointer, size);
    else if (!TrackedRealloc(pointer, size, file, line, &block))
        return nullptr;
    if (hm_tracing && line != 0)
        k7_log(kLogInfo, "K7-HM-TRACE: k7_realloc(%p,%zu) ret (%p) at [%s(%d)]\n",
               reinterpret_cast<void*>(address), size, block, file, line);
    return block;
}

char* k7_strdup(const char* string, const char* file, int line) {
    if (!hm_enabled) return CopyString(string);
    if (hm_tracking && !string) {
        k7_log(kLogError, "K7-HM-DEBUG: k7_strdup( NULL ) attempted! [%s(%d)]\n", file, line);
        return nullptr;
    }
    const std::size_t size = hm_tracking ? std::strlen(string) + 1 : 0;
    void* copy = Monitored(kNormal, size, file, line, [&] {
        return hm_use_hooks ? hm_hooks.Strdup(hm_hooks.Context, string) : CopyString(string);
    });
    if (hm_tracing)
        k7_log(kLogInfo, "K7-HM-TRACE: k7_strdup(%p) ret (%p) at [%s(%d)]\n",
               static_cast<const void*>(string), copy, file, line);
    return static_cast<char*>(copy);
}

void k7_free(void* pointer, const char* file, int line) {
    if (!hm_enabled) return std::free(pointer);
    MonitoredFree(kNormal, pointer, file, line);
}

void k7_image_free(void* pointer, const char* file, int line) {
    if (!hm_enabled) return std::free(pointer);
    MonitoredFree(kImage, pointer, file, line);
}

} // namespace k7
