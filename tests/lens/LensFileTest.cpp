#include "lens/LensFile.h"

#include "baselib/Platform.h"
#include "tests/lens/LensFolder.h"

#include <clocale>
#include <locale>

namespace k7::test {
namespace {

constexpr const char* kTwoSurfaces = "2\n 10 50 0.4\n-10 -20.5 1.2\n";

TEST(LensFile, ReadsPositionRadiusDiameter) {
    LensTable lens;
    ASSERT_TRUE(ParseLens(kTwoSurfaces, &lens));
    ASSERT_EQ(lens.Count, 2);
    EXPECT_EQ(lens.Surfaces[0].Position, 1.0f);
    EXPECT_EQ(lens.Surfaces[0].Radius, 5.0f);
    EXPECT_EQ(lens.Surfaces[0].Diameter, 0.4f);
    EXPECT_EQ(lens.Surfaces[1].Position, -1.0f);
    EXPECT_EQ(lens.Surfaces[1].Radius, -2.05f);
    EXPECT_EQ(lens.Surfaces[1].Diameter, 1.2f);
}

TEST(LensFile, ReadsEveryNotationOfNumbers) {
    LensTable lens;
    for (const char* text : {
             "2 10 50 .4 -10 -20.5 1.2",                         // on one line
             "\t+2\r\n\v\f1e1 5.0E+1 4e-1\r\n-10. -2.05e1 +1.2", // signs, exponents, any white space
             "2 10 50 0.4 -10 -20.5 1.2 and what follows",       // ignored
             "0002 010 50 0.4 -10 -20.5 1.2e0",
         }) {
        ASSERT_TRUE(ParseLens(text, &lens)) << text;
        EXPECT_EQ(lens.Surfaces[0].Diameter, 0.4f) << text;
        EXPECT_EQ(lens.Surfaces[1].Radius, -2.05f) << text;
    }
    ASSERT_TRUE(ParseLens("2 10 1e-60 1 -10 7e-46 1", &lens)); // too small for a float
    EXPECT_EQ(lens.Surfaces[0].Radius, 0.0f);
    EXPECT_EQ(lens.Surfaces[1].Radius, 0.0f);
}

TEST(LensFile, ClampsTheCountToFiftySurfaces) {
    for (const char* count : {"50", "51", "999999999999999999999"}) {
        std::string text = count;
        for (int i = 0; i < 60; ++i) text.append("\n").append(std::to_string(60 - i)).append(" 0 1");
        LensTable lens;
        ASSERT_TRUE(ParseLens(text, &lens)) << count;
        EXPECT_EQ(lens.Count, 50);
        EXPECT_EQ(lens.Surfaces[49].Position, -1.0f);
    }
}

TEST(LensFile, RefusesWhatIsNotALens) {
    LensTable lens;
    using namespace std::string_view_literals;
    // Not a number, or too few of them.
    for (const std::string_view text :
         {""sv, " \n"sv, "two"sv, "\0\0\0\0"sv, "\x89PNG\r\n"sv, "+"sv, "-"sv, "+-2 1 1 1 -1 1 1"sv, "2"sv,
          "2 10 50 0.4"sv, "2 10 50 0.4 -10 -20.5"sv, "2 10 50 x -10 -20.5 1.2"sv,
          "2 10,5 50 0.4 -10 -20.5 1.2"sv, "2\0 10 50 0.4 -10 -20.5 1.2"sv, "2 10 inf 0.4 -10 -20.5 1.2"sv,
          "2 nan 50 0.4 -10 -20.5 1.2"sv, "2 10 50 1e39 -10 -20.5 1.2"sv, "2 10 50 0.4 -10 -20.5 -1e999"sv})
        EXPECT_FALSE(ParseLens(text, &lens)) << text;
    // One surface, ends that coincide, and ends farther apart than a float reaches.
    for (const std::string_view text :
         {"1 10 50 0.4"sv, "0 10 50 0.4 -10 -20.5 1.2"sv, "-3 10 50 0.4 -10 -20.5 1.2"sv,
          "2 10 50 0.4 10 -20.5 1.2"sv, "3 10 5 1 0 5 1 10 5 1"sv, "2 3e38 50 0.4 -3e38 -20.5 1.2"sv})
        EXPECT_FALSE(ParseLens(text, &lens)) << text;
}

/// A comma as the decimal separator, as in many languages.
struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
};

TEST(LensFile, TheLocaleNeitherMattersNorChanges) {
    const std::locale mine(std::locale::classic(), new Comma);
    const std::locale before = std::locale::global(mine);
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8"); // if the machine has it
    const std::string numeric = std::setlocale(LC_NUMERIC, nullptr);
    LensTable lens;
    EXPECT_TRUE(ParseLens(kTwoSurfaces, &lens));
    EXPECT_EQ(lens.Surfaces[0].Diameter, 0.4f);
    EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), numeric);
    EXPECT_EQ(std::locale(), mine);
    std::setlocale(LC_NUMERIC, "C");
    std::locale::global(before);
}

TEST(LensFile, PlainNamesLieInTheDataFolder) {
    const std::string folder = "D:\\Tools\\DF\\Data\\";
    for (const std::string name : {"my_lens", "sub\\my.lens", "D:", ""})
        EXPECT_EQ(LensFilePath(folder, name), folder + name + ".txt");
    for (const std::string name : {"D:\\x.txt", "D:x"}) EXPECT_EQ(LensFilePath(folder, name), name);
    const std::string rooted = "/lenses/x.txt";
    EXPECT_EQ(LensFilePath(folder, rooted), kPathSeparator == '/' ? rooted : folder + rooted + ".txt");

    std::string longest = "D:" + std::string(509, 'x');
    EXPECT_EQ(LensFilePath("", longest), longest);
    EXPECT_EQ(LensFilePath("", longest + 'x'), "");
    EXPECT_EQ(LensFilePath(std::string(501, 'x'), "my_lens"), "");
}

using LensFileOnDisk = LensFolder;

TEST_F(LensFileOnDisk, IsReadOrReportsWhatFailed) {
    LensTable lens;
    EXPECT_EQ(ReadLensFile(Write(kTwoSurfaces), &lens), LensFileResult::Read);
    EXPECT_EQ(lens.Count, 2);
    EXPECT_EQ(ReadLensFile((folder_ / "none.txt").string(), &lens), LensFileResult::OpenFailed);
    EXPECT_EQ(ReadLensFile("", &lens), LensFileResult::OpenFailed);
    EXPECT_EQ(ReadLensFile(Write("nothing"), &lens), LensFileResult::ReadFailed);
    EXPECT_EQ(ReadLensFile(Write(""), &lens), LensFileResult::ReadFailed);
    EXPECT_NE(ReadLensFile(folder_.string(), &lens), LensFileResult::Read);
}

TEST_F(LensFileOnDisk, OnlyItsStartIsRead) {
    LensTable lens;
    const std::string good = kTwoSurfaces;
    EXPECT_EQ(ReadLensFile(Write(std::string(good).append(10'000'000, '7')), &lens), LensFileResult::Read);
    EXPECT_EQ(ReadLensFile(Write(std::string(10'000'000, ' ').append(good)), &lens),
              LensFileResult::ReadFailed);

    // A number that the reader's limit truncates is not read as what is left of it.
    std::string cut = "2 10 50 1 -10 -20 ";
    cut.append(65535 - cut.size(), '0').append("12");
    EXPECT_EQ(ReadLensFile(Write(cut), &lens), LensFileResult::ReadFailed);
}

} // namespace
} // namespace k7::test
