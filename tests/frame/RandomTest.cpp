#include "frame/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <random>

namespace k7::test {
namespace {

TEST(Rand15, IsTheCommonRuntimesSequence) {
    std::linear_congruential_engine<std::uint32_t, 214013, 2531011, 0> engine(12345);
    std::uint32_t state = 12345;
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(Rand15(&state), static_cast<int>(engine() >> 16 & 0x7fff)) << i;
}

/// ran1 on the standard library's minimal standard generator.
class PlainRan1 {
public:
    explicit PlainRan1(unsigned seed) : engine_(seed) {
        engine_.discard(8);
        for (int i = 31; i >= 0; --i) table_[static_cast<std::size_t>(i)] = engine_();
        previous_ = table_[0];
    }
    float operator()() {
        auto& entry = table_[previous_ / 67108864];
        previous_ = entry;
        entry = engine_();
        return std::min(static_cast<float>(previous_) * 4.656612873e-10f, 0.99999988f);
    }

private:
    std::minstd_rand0 engine_;
    std::array<std::uint_fast32_t, 32> table_{};
    std::uint_fast32_t previous_ = 0;
};

TEST(Ran1Test, IsAShuffledMinimalStandard) {
    for (std::int32_t seed : {1, 2, 77, 2147483646}) {
        Ran1 random;
        random.Seed(-seed);
        PlainRan1 plain(static_cast<unsigned>(seed));
        for (int i = 0; i < 2000; ++i) ASSERT_EQ(random(), plain()) << seed << " at " << i;
    }
}

TEST(Ran1Test, SeedStartsTheSequenceAgain) {
    Ran1 random;
    random.Seed(-1);
    const float first[3] = {random(), random(), random()};
    for (std::int32_t seed : {-1, 0, 1}) {
        random.Seed(seed);
        for (float want : first) EXPECT_EQ(random(), want) << seed;
    }
    Ran1 unseeded;
    EXPECT_EQ(unseeded(), first[0]);
    Ran1 extreme;
    extreme.Seed(std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(extreme(), first[0]);
}

} // namespace
} // namespace k7::test
