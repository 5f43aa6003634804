#include "media/Words.h"
#include "media/Errors.h"
#include "media/FilePattern.h"
#include "media/FrameRange.h"
#include "tests/media/Folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace media::test {
namespace {

using Frames = std::vector<int>;

TEST(Words, NumbersTakeUpTheWholeText) {
    EXPECT_EQ(ParseNumber("-2.5e3"), -2500.0);
    EXPECT_EQ(ParseNumber("+7"), 7.0);
    EXPECT_TRUE(std::isnan(*ParseNumber("nan")));
    EXPECT_EQ(ParseNumber("-inf"), -INFINITY);
    for (const char* text : {"", "5px", "1,5", " 1", "+-1", "--1", "0x10"})
        EXPECT_FALSE(ParseNumber(text)) << text;
    EXPECT_EQ(ParseInteger("-12"), -12);
    EXPECT_FALSE(ParseInteger("2147483648"));
    EXPECT_FALSE(ParseInteger("1.0"));
}

TEST(Words, TheNearestNameIsOfferedOnlyIfItIsNear) {
    const std::vector<std::string> names = {"Clean", "CrashZoom", "Trace"};
    EXPECT_EQ(DidYouMean("Claen", names), ", did you mean 'Clean'?");
    EXPECT_EQ(DidYouMean("crashzoom", names), ", did you mean 'CrashZoom'?");
    EXPECT_EQ(DidYouMean("Traces", names), ", did you mean 'Trace'?");
    EXPECT_EQ(DidYouMean("Mood", {"Mode", "Dire"}), ", did you mean 'Mode'?");
    EXPECT_EQ(DidYouMean("Cleanser", names), "");
    EXPECT_EQ(DidYouMean("x", {}), "");
}

TEST(Words, MessagesStayOnOneLine) {
    EXPECT_EQ(OneLine(" two\nlines\n\n"), "two lines");
    EXPECT_EQ(OneLine(""), "");
    EXPECT_EQ(OneLine("a\x1b[2J\rb"), "a [2J b");
    EXPECT_TRUE(IsUtf8("gr\xc3\xbc\xc3\x9f"));
    for (const char* broken : {"\xff", "\xc3", "\xe2\x82", "\xc0\x80", "a\x80"}) EXPECT_FALSE(IsUtf8(broken));
}

TEST(FrameRange, SinglesRangesAndSteps) {
    EXPECT_EQ(ParseFrames("7"), Frames({7}));
    EXPECT_EQ(ParseFrames("7-7"), Frames({7}));
    EXPECT_EQ(ParseFrames("1-4"), Frames({1, 2, 3, 4}));
    EXPECT_EQ(ParseFrames("1-10x4"), Frames({1, 5, 9}));
    EXPECT_EQ(ParseFrames("-3--1,5"), Frames({-3, -2, -1, 5}));
    EXPECT_EQ(ParseFrames("5,1-3,2,5"), Frames({5, 1, 2, 3})) << "each frame once, in the order told";
    EXPECT_EQ(ParseFrames("2147483646-2147483647"), Frames({2147483646, 2147483647}));
}

TEST(FrameRange, AnythingElseIsRefused) {
    for (const char* text : {"", "a", "1-", "-", "1-2-3", "1,,2", "4-1", "1-4x0", "1-4x-1", "1-4x", "1.5",
                             "1 -2", "99999999999", "0-2000000000", "1-9000000,10000000-19000000"})
        EXPECT_THROW(ParseFrames(text), UsageError) << text;
}

TEST(FrameRange, SpansNameFirstAndLast) {
    EXPECT_EQ(ParseSpan("-5-12").first, -5);
    EXPECT_EQ(ParseSpan("-5-12").last, 12);
    EXPECT_EQ(ParseSpan("3").last, 3);
    EXPECT_THROW(ParseSpan("3-1"), UsageError);
    EXPECT_EQ(ParseFrames(Describe(ParseSpan("-2-1"))), Frames({-2, -1, 0, 1}));
}

TEST(FilePattern, BothWaysOfWritingANumber) {
    EXPECT_EQ(FilePattern("a/shot.%04d.exr").At(7), "a/shot.0007.exr");
    EXPECT_EQ(FilePattern("shot.####.exr").At(12345), "shot.12345.exr");
    EXPECT_EQ(FilePattern("shot#.exr").At(3), "shot3.exr");
    EXPECT_EQ(FilePattern("%d").At(-4), "-4");
    EXPECT_EQ(FilePattern("f.%04d.png").At(-4), "f.-004.png");
    EXPECT_EQ(FilePattern("a.%03d.%04d.png").At(1), "a.001.%04d.png") << "the first pattern counts";
    EXPECT_EQ(FilePattern("a.%4d.png").At(7), "a.0007.png");
    EXPECT_EQ(FilePattern("a.@@@.png").At(7), "a.007.png");
    EXPECT_EQ(FilePattern("a.$F4.png").At(7), "a.0007.png");
    EXPECT_EQ(FilePattern("a.$F.png").At(7), "a.7.png");
    EXPECT_TRUE(FilePattern(std::string(100000, '#')).IsSequence());
}

TEST(FilePattern, AFileOfExactlyThatNameIsNotASequence) {
    const Folder folder;
    folder.Put("shot #2.png", "");
    EXPECT_FALSE(FilePattern(folder / "shot #2.png").IsSequence());
    EXPECT_TRUE(FilePattern(folder / "shot #3.png").IsSequence());
}

TEST(FilePattern, FoldersAndOtherSignsAreNotPatterns) {
    for (const char* path : {"take#1/shot.png", "100%.png", "a%s.png", "plain.exr"}) {
        EXPECT_FALSE(FilePattern(path).IsSequence()) << path;
        EXPECT_EQ(FilePattern(path).At(9), path);
    }
}

TEST(FilePattern, FindsItsFilesAndNoOthers) {
    const Folder folder;
    for (const char* name : {"s.0003.png", "s.0001.png", "s.12345.png", "s.-002.png", "s.1.png",
                             "s.00005.png", "s.0004.exr", "s.000a.png", "t.0001.png", "s..png"})
        folder.Put(name, "");
    EXPECT_EQ(FilePattern(folder / "s.%04d.png").FramesOnDisk(), Frames({-2, 1, 3, 12345}));
    EXPECT_EQ(FilePattern(folder / "s.#.png").FramesOnDisk(), Frames({1, 12345}));
    EXPECT_TRUE(FilePattern(folder / "none/s.%04d.png").FramesOnDisk().empty());
    EXPECT_TRUE(FilePattern(folder / "s.0001.png").FramesOnDisk().empty());
}

} // namespace
} // namespace media::test
