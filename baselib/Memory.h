#pragma once

#include <cstddef>

namespace k7 {

// The allocator that all image code shares. Each entry takes its caller's source path and line last, and
// behaves as malloc, realloc, strdup and free do: null if allocation fails. A block is freed through the
// entry of its own family; the two families never mix.

/// Ordinary memory.
[[nodiscard]] void* k7_malloc(std::size_t size, const char* file, int line);
[[nodiscard]] void* k7_realloc(void* pointer, std::size_t size, const char* file, int line);
[[nodiscard]] char* k7_strdup(const char* string, const char* file, int line);
void k7_free(void* pointer, const char* file, int line);

/// Pixel stores and planes.
[[nodiscard]] void* k7_image_malloc(std::size_t size, const char* file, int line);
void k7_image_free(void* pointer, const char* file, int line);

} // namespace k7
