#include "library/K7Image.h"

#include "tests/library/Dispatch.h"
#include "tests/support/FailingMemory.h"

#include <cmath>
#include <limits>
#include <vector>

namespace k7::test {
namespace {

TEST(K7Image, RowsLieOneBehindTheOther) {
    const Picture image = K7Image::Make(7, 5);
    EXPECT_EQ(image->Width, 7);
    EXPECT_EQ(image->Height, 5);
    EXPECT_EQ(image->AspectX, 1.0);
    EXPECT_EQ(image->AspectY, 1.0);
    EXPECT_EQ(image->WidthScale, 720.0f / 7.0f);
    for (int y = 0; y < 5; ++y) EXPECT_EQ(image->Rows[y], image->Pixels + y * 7 * 4);
}

TEST(K7Image, ImpossibleSizesAreNoImage) {
    const int sizes[][2] = {{0, 1}, {1, 0}, {-1, 5}, {5, -1}, {65536, 32768}, {2147483647, 2147483647}};
    u16 words[4] = {};
    for (const auto& size : sizes) {
        EXPECT_EQ(K7Image::Make(size[0], size[1]), nullptr) << size[0] << " x " << size[1];
        EXPECT_EQ(K7Image::MakeOver(words, size[0], size[1]), nullptr) << size[0] << " x " << size[1];
    }
}

TEST(K7Image, WithoutMemoryThereIsNoImage) {
    const Picture in = Noise(3, 2);
    for (int blocks : {0, 1, 2}) {
        const FailingMemory memory(blocks);
        EXPECT_EQ(K7Image::Make(3, 2) != nullptr, blocks == 2);
    }
    for (int blocks : {0, 1, 2}) {
        const FailingMemory memory(blocks);
        const Picture copy = K7Image::MakeCopy(*in);
        ASSERT_EQ(copy != nullptr, blocks == 2);
    }
    const FailingMemory memory(0);
    EXPECT_EQ(K7Image::MakeOver(in->Pixels, 3, 2), nullptr);
}

TEST(K7Image, CopyHasItsOwnWordsAndTheSourcesUnits) {
    Picture in = Noise(9, 4);
    in->AspectX = 16.0;
    in->AspectY = 15.0;
    in->WidthScale = 0.5f;
    const Picture copy = K7Image::MakeCopy(*in);
    EXPECT_EQ(copy->AspectX, 16.0);
    EXPECT_EQ(copy->AspectY, 15.0);
    EXPECT_EQ(copy->WidthScale, 0.5f);
    in->Fill(1, 2, 3, 4);
    EXPECT_TRUE(Same(*copy, *Noise(9, 4)));
}

TEST(K7Image, LeavesTheCallersMemoryAlive) {
    std::vector<u16> words(6 * 4, 77);
    Picture over = K7Image::MakeOver(words.data(), 3, 2);
    EXPECT_EQ(over->Pixels, words.data());
    over->Rows[1][0] = 5;
    over.reset();
    EXPECT_EQ(words[12], 5);
    EXPECT_EQ(K7Image::MakeOver(nullptr, 3, 2), nullptr);
}

TEST(K7Image, CopiesAlphaOrColourAlone) {
    const Picture old = Noise(5, 11, 1);
    const Picture source = Noise(5, 11, 2);
    const auto mixed = [](const K7Image& colour, const K7Image& alpha) {
        return MakePicture(5, 11,
                           [&](int x, int y, int c) { return (c == 3 ? alpha : colour).Rows[y][4 * x + c]; });
    };
    for (int threads : {1, 3, 20}) {
        const Dispatch dispatch(threads, threads == 3);
        const Picture alpha = K7Image::MakeCopy(*old);
        alpha->CopyAlpha(source.get());
        EXPECT_TRUE(Same(*alpha, *mixed(*old, *source))) << threads;
        const Picture colour = K7Image::MakeCopy(*old);
        colour->CopyColour(source.get());
        EXPECT_TRUE(Same(*colour, *mixed(*source, *old))) << threads;
    }
}

TEST(K7Image, ScaledCopyTruncatesAndClamps) {
    const Picture in = MakePicture(4, 1, [](int x, int, int) {
        const int words[] = {0, 3, 20000, 32767};
        return words[x];
    });
    const Picture out = Flat(4, 1, 9);
    out->CopyScaled(in.get(), 0.5f, 2.0f, -1.0f, 0.0f);
    const int want[4][4] = {{0, 0, 0, 0}, {1, 6, 0, 0}, {10000, 32767, 0, 0}, {16383, 32767, 0, 0}};
    EXPECT_TRUE(Same(*out, *MakePicture(4, 1, [&](int x, int, int c) { return want[x][c]; })));

    const float inf = std::numeric_limits<float>::infinity();
    out->CopyScaled(in.get(), inf, -inf, std::nanf(""), 1e30f);
    const int wild[4][4] = {{0, 0, 0, 0}, {32767, 0, 0, 32767}, {32767, 0, 0, 32767}, {32767, 0, 0, 32767}};
    EXPECT_TRUE(Same(*out, *MakePicture(4, 1, [&](int x, int, int c) { return wild[x][c]; })));
}

TEST(K7Image, FillsEveryPixelAndCopiesEveryBitAtUnitGains) {
    const Picture in = MakePicture(6, 3, [](int x, int y, int c) { return 32760 + 97 * (x + y + c); });
    const Picture out = Noise(6, 3);
    out->Fill(1, 2, 3, 32767);
    EXPECT_TRUE(Same(*out, *Flat(6, 3, 1, 2, 3, 32767)));
    out->CopyScaled(in.get(), 1.0f, 1.0f, 1.0f, 1.0f);
    EXPECT_TRUE(Same(*out, *in));
    out->CopyScaled(in.get(), 1.0000001f, 1.0f, 1.0f, 1.0f); // now words above full scale are clamped
    EXPECT_TRUE(Same(*out, *MakePicture(6, 3, [&](int x, int y, int c) {
        return std::min<int>(in->Rows[y][4 * x + c], 32767);
    })));
}

} // namespace
} // namespace k7::test
