#include "media/Clip.h"
#include "media/Errors.h"
#include "media/Feeds.h"
#include "media/FrameCache.h"
#include "tests/media/Folder.h"
#include "tests/media/Pictures.h"

#include <gtest/gtest.h>

namespace media::test {
namespace {

Picture Flat(int width, int height, int word) {
    return MakePicture(width, height, [&](int, int) { return host::Pixel{word, word, word, 65535}; });
}

int FirstWord(const Picture& picture) {
    return At(*picture.image, 0, 0).Red;
}

/// A sequence of flat frames of which 3 is missing.
class ClipTest : public testing::Test {
protected:
    ClipTest() {
        for (int frame : {1, 2, 4}) {
            const Picture picture = Flat(4, 3, frame * 100);
            WritePicture(folder_ / ("f." + std::to_string(frame) + ".png"), *picture.image, picture,
                         [](const std::string&) {});
        }
    }
    Clip Open(Missing missing) const { return Clip(folder_ / "f.%d.png", missing, {}); }

    Folder folder_;
};

TEST_F(ClipTest, RunsFromTheFirstFileToTheLastAndAMissingFrameFailsWithItsName) {
    Clip clip = Open(Missing::Error);
    EXPECT_TRUE(clip.IsSequence());
    EXPECT_EQ(clip.Span()->first, 1);
    EXPECT_EQ(clip.Span()->last, 4);
    EXPECT_EQ(FirstWord(clip.At(4)), 400);
    EXPECT_THROW(clip.At(3), FrameError);
    ClipFeed feed(std::make_shared<Clip>(folder_ / "f.%d.png", Missing::Error, std::nullopt));
    EXPECT_EQ(feed.ImageAt(3), nullptr);
    EXPECT_EQ(feed.ImageAt(0), nullptr);
    EXPECT_NE(feed.TakeError().find("f.3.png"), std::string::npos) << "the first failure is told";
    EXPECT_EQ(feed.TakeError(), "");
}

TEST_F(ClipTest, AMissingFrameIsHeldOrBlack) {
    Clip held = Open(Missing::Hold);
    EXPECT_EQ(FirstWord(held.At(3)), 200);
    EXPECT_EQ(FirstWord(held.At(9)), 400);
    EXPECT_THROW(held.At(0), FrameError) << "nothing lies before the first";
    Clip black = Open(Missing::Black);
    const Picture empty = black.At(3);
    EXPECT_EQ(empty.image->Width, 4);
    EXPECT_EQ(empty.image->PixelDepth, host::Depth::Int16);
    EXPECT_EQ(FirstWord(empty), 0);
}

TEST_F(ClipTest, ASinglePictureIsTheSameAtEveryFrame) {
    Clip clip(folder_ / "f.2.png", Missing::Error, Aspect{4, 3});
    EXPECT_FALSE(clip.Span());
    EXPECT_EQ(clip.At(-7).image, clip.At(5000).image);
    EXPECT_EQ(clip.At(0).image->AspectX, 4);
    EXPECT_EQ(clip.At(0).image->AspectY, 3);
}

TEST_F(ClipTest, EachFrameIsDecodedOnce) {
    ClipFeed feed(std::make_shared<Clip>(folder_ / "f.%d.png", Missing::Error, std::nullopt));
    const host::Ref<host::Image> first(feed.ImageAt(1.9));
    const host::Ref<host::Image> second(feed.ImageAt(2.0));
    std::filesystem::remove(folder_ / "f.1.png");
    const host::Ref<host::Image> again(feed.ImageAt(1.0));
    EXPECT_EQ(first.get(), again.get());
    EXPECT_NE(first.get(), second.get());
}

TEST(FrameCache, ForgetsWhatWasUsedLongestAgo) {
    FrameCache cache(3 * 4 * 4 * 8);
    for (int frame = 0; frame < 3; ++frame) cache.Enter(frame, Flat(4, 4, frame));
    EXPECT_TRUE(cache.Find(0));
    cache.Enter(3, Flat(4, 4, 3));
    EXPECT_FALSE(cache.Find(1));
    EXPECT_TRUE(cache.Find(0) && cache.Find(2) && cache.Find(3));
    cache.Enter(9, Flat(40, 40, 9));
    EXPECT_TRUE(cache.Find(9)) << "a picture larger than the room is held alone";
    EXPECT_FALSE(cache.Find(3));
}

} // namespace
} // namespace media::test
