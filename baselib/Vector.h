#pragma once

// K7_WIDE_VECTORS before a function: it is compiled for vector registers of 256 and 512 bits too, and the
// loader picks the version that the processor has. All give the same words. Needs indirect functions, which
// Windows lacks and the sanitizers trip over.
#if defined(__x86_64__) && defined(__linux__) && defined(__GNUC__) && !defined(__clang__) &&                 \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define K7_WIDE_VECTORS __attribute__((target_clones("arch=x86-64-v4", "avx2", "default")))
#else
#define K7_WIDE_VECTORS
#endif

// Before an inline function that such a function calls: only what is inlined into it is compiled again.
#if defined(__GNUC__)
#define K7_ALWAYS_INLINE [[gnu::always_inline]] inline
#else
#define K7_ALWAYS_INLINE inline
#endif
