#include "frame/adapter/ImageTransfer.h"

#include "tests/adapter/TestTool.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace k7::test {
namespace {

TEST(ImageTransfer, WordsLoseTheirLowestBitAndEndAtFullScale) {
    const int words[] = {0, 1, 2, 32766, 32767, 32768, 65534, 65535};
    const host::Ref<host::Image> source(HostPicture(8, 1, [&](int x, int, int) { return words[x]; }));
    const std::unique_ptr<K7Image> image = HostToK7Image<u16>(source.get());
    const host::Ref<host::Image> back(K7ImageToHost(*source, *image));
    for (int x = 0; x < 8; ++x) {
        const int h = words[x];
        EXPECT_EQ(PixelAt(*back, x, 0).Green, (h & ~1) | h >> 15) << h; // bit 0 becomes bit 15
    }
    EXPECT_EQ(PixelAt(*host::Ref<host::Image>(K7ImageToHost(*source, *Flat(8, 1, 40000))), 7, 0).Alpha,
              65535);
}

TEST(ImageTransfer, ChannelsRowsAndAspectAreCarriedOverFromBothKindsOfPlanes) {
    for (host::Planes planes : {host::Planes::One, host::Planes::Two}) {
        const host::Ref<host::Image> source(HostPicture(
            3, 2, [](int x, int y, int c) { return 2 * (100 * x + 10 * y + c); }, planes));
        source->AspectX = 2.0;
        const std::unique_ptr<K7Image> image = HostToK7Image<u16>(source.get());
        EXPECT_TRUE(
            Same(*image, *MakePicture(3, 2, [](int x, int y, int c) { return 100 * x + 10 * y + c; })));
        EXPECT_EQ(image->AspectX, 2.0);
        const host::Ref<host::Image> back(K7ImageToHost(*source, *image));
        EXPECT_EQ(PixelAt(*back, 2, 1).Blue, 2 * 212);
        EXPECT_EQ(PixelAt(*back, 2, 1).Alpha, 2 * 213);
    }
}

TEST(ImageTransfer, FloatsKeepTheirValuesBeyondBlackAndWhite) {
    constexpr float inf = std::numeric_limits<float>::infinity();
    const float stored[8] = {1.0f, 5.0f, -0.25f, 65504.0f, inf, -inf, std::nanf(""), 0.0f};
    const float want[8] = {1.0f, 5.0f, -0.25f, 65504.0f, 65504.0f, -65504.0f, 0.0f, 0.0f};
    const host::Ref<host::Image> source(host::Image::Make(2, 1, host::Depth::Half));
    source->WriteRow(0, stored);
    const std::unique_ptr<FloatImageK7> image = HostToK7Image<float>(source.get());
    EXPECT_EQ(image->Rows[0][0], 32767.0f);
    EXPECT_EQ(image->Rows[0][6], 0.0f);
    float back[8];
    host::Ref<host::Image>(K7ImageToHost(*source, *image))->ReadRow(0, back);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(back[i], want[i]) << i;
}

TEST(ImageTransfer, WithoutASourceThereIsNoPicture) {
    EXPECT_EQ(HostToK7Image<u16>(nullptr), nullptr);
    EXPECT_FALSE(HostIntoK7Image(nullptr, *Flat(2, 2, 0)));
}

} // namespace
} // namespace k7::test
