#include "host/Image.h"

#include "host/Half.h"

#include <gtest/gtest.h>
#include <half.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <vector>

namespace host::test {
namespace {

Ref<Image> NewImage(int width, int height, Depth depth, Planes planes = Planes::One) {
    return Ref<Image>(Image::Make(width, height, depth, planes));
}

/// What is read back of a word that was written.
Pixel WriteAndRead(Depth depth, Planes planes, const Pixel& pixel) {
    const Ref<Image> image = NewImage(3, 2, depth, planes);
    std::byte* at[2];
    for (int p = 0; p < 2; ++p) {
        at[p] = image->PlaneAccess[p].Row(1);
        if (at[p]) at[p] += 2 * image->PlaneAccess[p].Step;
    }
    image->Write(&pixel, at[0], at[1]);
    Pixel back;
    image->Read(&back, at[0], at[1]);
    return back;
}

TEST(HostImage, ChannelsComeBackInTheirPlaces) {
    for (Planes planes : {Planes::One, Planes::Two})
        for (Depth depth : {Depth::Int8, Depth::Int16, Depth::Half, Depth::Float}) {
            const Pixel back = WriteAndRead(depth, planes, {0, 65535, 257 * 100, 257 * 200});
            EXPECT_EQ(back.Blue, 0);
            EXPECT_EQ(back.Green, 65535);
            EXPECT_NEAR(back.Red, 257 * 100, 16); // a half has 11 bits
            EXPECT_NEAR(back.Alpha, 257 * 200, 32);
        }
}

TEST(HostImage, WordsRoundToTheNearestStoredValue) {
    for (int word : {0, 1, 128, 129, 257, 385, 386, 32767, 32768, 65534, 65535}) {
        const Pixel pixel{word, word, word, word};
        EXPECT_EQ(WriteAndRead(Depth::Int16, Planes::One, pixel).Red, word);
        EXPECT_EQ(WriteAndRead(Depth::Float, Planes::Two, pixel).Alpha, word);
        EXPECT_EQ(WriteAndRead(Depth::Int8, Planes::One, pixel).Red, std::lround(word / 257.0) * 257) << word;
    }
}

TEST(HostImage, HalvesAreThoseOfImath) {
    const auto bits = [](float value) { return std::bit_cast<std::uint32_t>(value); };
    for (std::uint32_t i = 0; i < 65536; ++i) {
        Imath::half half;
        half.setBits(static_cast<std::uint16_t>(i));
        ASSERT_EQ(bits(FromHalf(static_cast<std::uint16_t>(i))), bits(static_cast<float>(half))) << i;
        // The neighbours of the float, and the value half-way to the next half.
        for (std::uint32_t near : {0u, 1u, 0xffffffffu, 0xfffu, 0x1000u, 0x1001u}) {
            const float value = std::bit_cast<float>(bits(static_cast<float>(half)) + near);
            ASSERT_EQ(ToHalf(value), Imath::half(value).bits()) << value;
        }
    }
}

TEST(HostImage, RowsOfIntegersAreTheWordsOfTheirPixels) {
    for (Planes planes : {Planes::One, Planes::Two})
        for (Depth depth : {Depth::Int8, Depth::Int16, Depth::Half, Depth::Float}) {
            const Ref<Image> one = NewImage(16384, 1, depth, planes),
                             other = NewImage(16384, 1, depth, planes);
            std::vector<std::uint16_t> words(65536), back(65536);
            std::iota(words.begin(), words.end(), std::uint16_t{0});
            one->WriteRow(0, words.data());
            one->ReadRow(0, back.data());
            const Image::Plane* const to = other->PlaneAccess;
            for (std::size_t x = 0; x < 16384; ++x) {
                const std::uint16_t* const w = &words[4 * x];
                const Pixel pixel{w[2], w[1], w[0], w[3]};
                std::byte* const at0 = to[0].Row(0) + static_cast<std::ptrdiff_t>(x) * to[0].Step;
                std::byte* const at1 =
                    to[1].Row(0) ? to[1].Row(0) + static_cast<std::ptrdiff_t>(x) * to[1].Step : nullptr;
                other->Write(&pixel, at0, at1);
                Pixel read;
                other->Read(&read, at0, at1);
                const std::uint16_t* const b = &back[4 * x];
                ASSERT_TRUE(read.Red == b[0] && read.Green == b[1] && read.Blue == b[2] &&
                            read.Alpha == b[3]);
            }
            EXPECT_EQ(std::memcmp(one->PlaneAccess[0].Row(0), to[0].Row(0), one->Bytes()), 0);
        }
}

TEST(HostImage, RealChannelsOutsideZeroToOneAreHeld) {
    const Ref<Image> image = NewImage(1, 1, Depth::Float);
    const float values[4] = {-3.0f, 7.5f, std::numeric_limits<float>::quiet_NaN(),
                             std::numeric_limits<float>::infinity()};
    std::memcpy(image->PlaneAccess[0].Row(0), values, sizeof values);
    Pixel pixel;
    image->Read(&pixel, image->PlaneAccess[0].Row(0), nullptr);
    EXPECT_TRUE(pixel.Red == 0 && pixel.Green == 65535 && pixel.Blue == 0 && pixel.Alpha == 65535);
}

TEST(HostImage, RowsOfHalfAndFloatComeBackUnchanged) {
    const float values[8] = {-3.0f, 7.5f, 65504.0f, 1e-7f, -0.0f, 1.0f / 3.0f, 0.0f, -65504.0f};
    for (Planes planes : {Planes::One, Planes::Two})
        for (Depth depth : {Depth::Half, Depth::Float}) {
            const Ref<Image> image = NewImage(2, 2, depth, planes);
            image->WriteRow(1, values);
            float first[8], second[8];
            image->ReadRow(1, first);
            const std::size_t exact = depth == Depth::Float ? sizeof values : 0;
            EXPECT_EQ(std::memcmp(first, values, exact), 0);
            for (int i = 0; i < 8; ++i) EXPECT_NEAR(first[i], values[i], std::abs(values[i]) / 2048 + 3e-8);
            image->WriteRow(0, first);
            image->ReadRow(0, second);
            EXPECT_EQ(std::memcmp(first, second, sizeof first), 0);
        }
}

TEST(HostImage, RowsOfIntegersRoundToTheNearestAndClamp) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float values[4] = {1.4f / 255.0f, -1.0f, 2.0f, nan};
    const float want[4] = {1.0f / 255.0f, 0.0f, 1.0f, 0.0f};
    const Ref<Image> image = NewImage(1, 1, Depth::Int8);
    image->WriteRow(0, values);
    float back[4];
    image->ReadRow(0, back);
    for (int c = 0; c < 4; ++c) EXPECT_EQ(back[c], want[c]) << c;
    const Ref<Image> words = NewImage(1, 1, Depth::Int16);
    for (int word : {0, 1, 32767, 32768, 65535}) {
        const Pixel pixel{word, word, word, word};
        words->Write(&pixel, words->PlaneAccess[0].Row(0), nullptr);
        words->ReadRow(0, back);
        EXPECT_EQ(back[0], static_cast<float>(word) / 65535.0f);
        words->WriteRow(0, back);
        Pixel again;
        words->Read(&again, words->PlaneAccess[0].Row(0), nullptr);
        EXPECT_EQ(again.Alpha, word);
    }
}

TEST(HostImage, NewImageIsLikeItsModelOrNone) {
    const Ref<Image> like = NewImage(5, 4, Depth::Half, Planes::Two);
    like->AspectX = 2.0;
    const Ref<Image> image(Image::NewImage({{kTagImageLike, like.get()}}));
    ASSERT_TRUE(image);
    EXPECT_TRUE(image->Width == 5 && image->Height == 4);
    EXPECT_TRUE(image->PixelDepth == Depth::Half && image->PixelPlanes == Planes::Two);
    EXPECT_EQ(image->AspectX, 2.0);
    EXPECT_EQ(Image::NewImage({}), nullptr);
    EXPECT_EQ(Image::Make(0, 5, Depth::Int8), nullptr);
    EXPECT_EQ(Image::Make(65536, 65536, Depth::Int8), nullptr);
}

} // namespace
} // namespace host::test
