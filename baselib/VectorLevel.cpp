#include "baselib/VectorLevel.h"

#include <atomic>

namespace k7 {

namespace {

VectorLevel LevelOfProcessor() {
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512cd") &&
        __builtin_cpu_supports("avx512vnni"))
        return VectorLevel::Avx512;
    if (__builtin_cpu_supports("avx2")) return VectorLevel::Avx2;
#endif
    return VectorLevel::Baseline;
}

std::atomic<int> forced = -1;

} // namespace

VectorLevel CurrentVectorLevel() {
    static const VectorLevel own = LevelOfProcessor();
    const int level = forced;
    return level < 0 ? own : static_cast<VectorLevel>(level);
}

void ForceVectorLevel(std::optional<VectorLevel> level) {
    forced = level ? static_cast<int>(*level) : -1;
}

} // namespace k7
