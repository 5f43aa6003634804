#pragma once

#include "baselib/HeapMonitor.h"

#include <atomic>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace k7::test {

/// Counts every block of the image code, and checks each picture when it is freed: no word may ever leave the
/// range of pictures. Blocks are zeroed, so that an unwritten picture is valid. For float pictures it only
/// counts the blocks.
class HeapWatch {
public:
    explicit HeapWatch(bool floats = false) : floats_(floats) {
        hm_image_hooks = {this, &Alloc, &Free};
        hm_hooks = {this, &Alloc, &Realloc, &Strdup, [](void*, void* block) { std::free(block); }};
        hm_enabled = hm_tracking = hm_use_hooks = hm_use_image_hooks = 1;
        bytesBefore_ = BytesInUse();
        blocksBefore_ = Blocks();
    }
    ~HeapWatch() { hm_enabled = hm_tracking = hm_use_hooks = hm_use_image_hooks = 0; }

    /// Bytes now in use beyond those at the start.
    std::int64_t Growth() const { return BytesInUse() - bytesBefore_; }

    /// Makes a single allocation fail, the one after `n` more.
    void FailAfter(int n) { countdown_ = n; }
    /// Whether that has happened.
    bool HasFailed() const { return countdown_ == -1; }

    std::int64_t BlocksLeft() const { return Blocks() - blocksBefore_; }

    std::atomic<int> PicturesSeen = 0;
    std::atomic<int> WordsOutOfRange = 0;

private:
    static std::int64_t BytesInUse() {
        return static_cast<std::int64_t>(hm_normal.BytesInUse + hm_image.BytesInUse);
    }
    /// Blocks that are allocated and not yet freed.
    static std::int64_t Blocks() {
        return static_cast<std::int64_t>(hm_normal.Allocations + hm_image.Allocations) -
               static_cast<std::int64_t>(hm_normal.Frees + hm_image.Frees);
    }

    // The allocator holds its lock while it calls these.
    bool Fails() { return countdown_ >= 0 && countdown_-- == 0; }
    static void* Alloc(void* context, std::size_t size) {
        return static_cast<HeapWatch*>(context)->Fails() ? nullptr : std::calloc(1, size);
    }
    static void* Realloc(void* context, void* block, std::size_t size) {
        return static_cast<HeapWatch*>(context)->Fails() ? nullptr : std::realloc(block, size);
    }
    static char* Strdup(void* context, const char* text) {
        const std::size_t size = std::strlen(text) + 1;
        void* copy = Alloc(context, size);
        return copy ? static_cast<char*>(std::memcpy(copy, text, size)) : nullptr;
    }
    static void Free(void* context, void* block) {
        auto* watch = static_cast<HeapWatch*>(context);
        HeapEntry entry;
        if (hm_lookup(&hm_image, reinterpret_cast<std::uintptr_t>(block), &entry) &&
            std::string(entry.File) == "library/K7Image") {
            ++watch->PicturesSeen;
            const auto* word = static_cast<const std::uint16_t*>(block);
            for (std::size_t i = 0; i < entry.Size / 2 && !watch->floats_; ++i)
                watch->WordsOutOfRange += word[i] > 32767;
        }
        std::free(block);
    }

    const bool floats_;
    std::int64_t bytesBefore_ = 0;
    std::int64_t blocksBefore_ = 0;
    std::atomic<int> countdown_ = INT_MIN;
};

} // namespace k7::test
