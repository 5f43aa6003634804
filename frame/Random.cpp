#include "frame/Random.h"

#include <algorithm>
#include <bit>

namespace k7 {

namespace {

constexpr std::int32_t kMultiplier = 16807;
constexpr std::int32_t kModulus = 2147483647;
constexpr std::int32_t kSchrageQuotient = 127773;
constexpr std::int32_t kIndexDivisor = 67108864;
constexpr float kScale = std::bit_cast<float>(0x30000000u);   // 4.656612873e-10
constexpr float kLargest = std::bit_cast<float>(0x3F7FFFFEu); // 0.99999988

/// s x 16807 modulo 2^31 - 1 for s from 1 to 2^31 - 2, by Schrage's division.
std::int32_t MinimalStandard(std::int32_t s) {
    const std::int64_t k = s / kSchrageQuotient;
    const auto next = static_cast<std::int32_t>(static_cast<std::int64_t>(s) * kMultiplier - k * kModulus);
    return next < 0 ? next + kModulus : next;
}

} // namespace

float Ran1::operator()() {
    if (state_ <= 0 || previous_ == 0) {
        state_ = std::max(static_cast<std::int32_t>(-static_cast<std::int64_t>(state_)), 1);
        for (int i = 39; i >= 0; --i) {
            state_ = MinimalStandard(state_);
            if (i < 32) table_[static_cast<std::size_t>(i)] = state_;
        }
        previous_ = table_[0];
    }
    state_ = MinimalStandard(state_);
    std::int32_t& entry = table_[static_cast<std::size_t>(previous_ / kIndexDivisor)];
    previous_ = entry;
    entry = state_;
    return std::min(static_cast<float>(previous_) * kScale, kLargest);
}

} // namespace k7
