#pragma once

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace k7 {

/// For its lifetime, flushes denormal numbers (below 1e-307) to zero on this thread. A recursion that decays
/// over black would otherwise spend its time on them: processors take a hundred cycles for each. Does nothing
/// on processors without such a switch.
class NoDenormals {
public:
#if defined(__SSE2__)
    NoDenormals() : before_(_mm_getcsr()) {
        _mm_setcsr(before_ | kFlushToZero | kDenormalsAreZero);
    }
    ~NoDenormals() {
        _mm_setcsr(before_);
    }
#else
    NoDenormals() = default;
    ~NoDenormals() {}
#endif
    NoDenormals(const NoDenormals&) = delete;
    NoDenormals& operator=(const NoDenormals&) = delete;

private:
#if defined(__SSE2__)
    static constexpr unsigned kFlushToZero = 0x8000;
    static constexpr unsigned kDenormalsAreZero = 0x0040;
    const unsigned before_;
#endif
};

} // namespace k7
