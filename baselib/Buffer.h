#pragma once

#include "baselib/Memory.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace k7 {

/// Which family of the allocator a buffer's block comes from.
enum class Family { Normal, Image };

/// An array of plain values from the tracked allocator, freed with the object. Contents are undefined until
/// written. The array is null if the allocation failed or it has no elements: test it before use.
template <class T, Family family = Family::Normal>
class Buffer {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    Buffer() = default;

    /// `file` is a literal and names the caller to the allocator, with the line of the call.
    Buffer(std::size_t count, const char* file, int line = __builtin_LINE())
        : data_(Allocate(count, file, line))
        , count_(data_ ? count : 0)
        , file_(file)
        , line_(line) {}

    Buffer(Buffer&& other) noexcept { swap(other); }
    Buffer& operator=(Buffer&& other) noexcept {
        Buffer(std::move(other)).swap(*this);
        return *this;
    }
    ~Buffer() {
        if (!data_) return;
        if constexpr (family == Family::Image)
            k7_image_free(data_, file_, line_);
        else
            k7_free(data_, file_, line_);
    }

    explicit operator bool() const { return data_ != nullptr; }
    T* data() const { return data_; }
    std::size_t size() const { return count_; }
    T& operator[](std::size_t i) const { return data_[i]; }
    T* begin() const { return data_; }
    T* end() const { return data_ + count_; }

    /// Sets every byte to zero.
    void Zero() {
        if (data_) std::memset(static_cast<void*>(data_), 0, count_ * sizeof(T));
    }

    void swap(Buffer& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(count_, other.count_);
        std::swap(file_, other.file_);
        std::swap(line_, other.line_);
    }

private:
    static T* Allocate(std::size_t count, const char* file, int line) {
        if (count == 0 || count > std::numeric_limits<std::size_t>::max() / sizeof(T)) return nullptr;
        if constexpr (family == Family::Image)
            return static_cast<T*>(k7_image_malloc(count * sizeof(T), file, line));
        else
            return static_cast<T*>(k7_malloc(count * sizeof(T), file, line));
    }

    T* data_ = nullptr;
    std::size_t count_ = 0;
    const char* file_ = "";
    int line_ = 0;
};

/// Vectors that are read across two cache lines cost two reads: elements to allocate beyond those in use, and
/// the first that a cache line starts with.
template <class T>
inline constexpr std::size_t kToCacheLine = 64 / sizeof(T);

template <class T>
T* FromCacheLine(const Buffer<T>& buffer) {
    const auto past = reinterpret_cast<std::uintptr_t>(buffer.data()) % 64;
    return buffer.data() + (past == 0 ? 0 : (64 - past) / sizeof(T));
}

template <class T>
using ImageBuffer = Buffer<T, Family::Image>;

} // namespace k7
