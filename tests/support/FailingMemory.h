#pragma once

#include "baselib/HeapMonitor.h"

#include <atomic>
#include <cstdlib>

namespace k7::test {

/// For its lifetime, the tracked allocator returns `good` blocks and then null. One at a time.
class FailingMemory {
public:
    explicit FailingMemory(int good) : left_(good) {
        const auto alloc = [](void* self, std::size_t size) {
            return static_cast<FailingMemory*>(self)->left_-- > 0 ? std::malloc(size) : nullptr;
        };
        const auto release = [](void*, void* block) { std::free(block); };
        hm_hooks = {this, alloc, nullptr, nullptr, release};
        hm_image_hooks = {this, alloc, release};
        hm_enabled = hm_use_hooks = hm_use_image_hooks = 1;
    }
    ~FailingMemory() { hm_enabled = hm_use_hooks = hm_use_image_hooks = 0; }
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /// Whether all requested blocks were allocated.
    bool Sufficed() const { return left_ >= 0; }

private:
    std::atomic<int> left_;
};

} // namespace k7::test
