#include "app/SampleClip.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace app::test {
namespace {

using Words = std::vector<std::uint16_t>;

const Words& FirstFrame() {
    static const Words words = SampleClip::Frame(0);
    return words;
}

/// FNV-1a over the words, low byte first.
std::uint64_t Fingerprint(const Words& words) {
    std::uint64_t hash = 0xcbf29ce484222325u;
    for (std::uint16_t word : words)
        for (int shift : {0, 8}) hash = (hash ^ (word >> shift & 255)) * 0x100000001b3u;
    return hash;
}

std::uint16_t Matte(const Words& words, int x, int y) {
    return words[4 * static_cast<std::size_t>(y * SampleClip::kWidth + x) + 3];
}

TEST(SampleClip, HasTheSameWordsOnEveryMachine) {
    // Nothing but IEEE arithmetic makes the picture, so every build of every machine has to agree on this
    // number. A picture that is changed on purpose gets a new one.
    EXPECT_EQ(Fingerprint(FirstFrame()), 15573673802047041705u);
    EXPECT_EQ(SampleClip::Frame(-1), FirstFrame()); // beyond the ends are the last ones
    EXPECT_EQ(SampleClip::Frame(99), SampleClip::Frame(SampleClip::kFrames - 1));
}

TEST(SampleClip, TheMatteTravelsFourteenColumnsAFrame) {
    const Words later = SampleClip::Frame(1);
    int inside = 0, partly = 0;
    for (int y = 0; y < SampleClip::kHeight; ++y)
        for (int x = 0; x + 14 < SampleClip::kWidth; ++x) {
            ASSERT_EQ(Matte(FirstFrame(), x, y), Matte(later, x + 14, y)) << x << ' ' << y;
            inside += Matte(later, x, y) == 65535;
            partly += Matte(later, x, y) != 65535 && Matte(later, x, y) != 0;
        }
    EXPECT_GT(inside, 30000);
    EXPECT_GT(partly, 300) << "the edge is smooth";
}

} // namespace
} // namespace app::test
