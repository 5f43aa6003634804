#include "host/Image.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace host::test {
namespace {

Ref<Image> NewImage(int width, int height, Depth depth, Planes planes = Planes::One) {
    return Ref<Image>(Image::Make(width, height, depth, planes));
}

/// What comes back of a word that was written.
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

TEST(HostImage, RealChannelsOutsideZeroToOneAreHeld) {
    const Ref<Image> image = NewImage(1, 1, Depth::Float);
    const float values[4] = {-3.0f, 7.5f, std::numeric_limits<float>::quiet_NaN(),
                             std::numeric_limits<float>::infinity()};
    std::memcpy(image->PlaneAccess[0].Row(0), values, sizeof values);
    Pixel pixel;
    image->Read(&pixel, image->PlaneAccess[0].Row(0), nullptr);
    EXPECT_TRUE(pixel.Red == 0 && pixel.Green == 65535 && pixel.Blue == 0 && pixel.Alpha == 65535);
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
