#include "media/PictureFile.h"
#include "media/Errors.h"
#include "tests/media/Folder.h"
#include "tests/media/Pictures.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <sys/resource.h>

namespace media::test {
namespace {

using OIIO::ImageSpec;
using OIIO::TypeDesc;

/// Writes a file with OpenImageIO itself, top row first.
template <class T>
void PutFile(const std::string& path, ImageSpec spec, const std::vector<T>& values) {
    spec.attribute("oiio:UnassociatedAlpha", 1);
    const auto file = OIIO::ImageOutput::create(path);
    ASSERT_TRUE(file && file->open(path, spec) &&
                file->write_image(OIIO::BaseTypeFromC<T>::value, values.data()) && file->close());
}

struct Stored {
    ImageSpec spec;
    std::vector<float> values;
};

/// Reads a file with OpenImageIO itself.
Stored GetFile(const std::string& path) {
    ImageSpec wishes;
    wishes.attribute("oiio:UnassociatedAlpha", 1);
    const auto file = OIIO::ImageInput::open(path, &wishes);
    if (!file) return {};
    Stored stored{file->spec(), std::vector<float>(file->spec().image_pixels() *
                                                   static_cast<std::size_t>(file->spec().nchannels))};
    EXPECT_TRUE(file->read_image(0, 0, 0, -1, TypeDesc::FLOAT, stored.values.data()));
    return stored;
}

/// A pixel's words: red, green, blue, alpha.
std::array<int, 4> WordsAt(const Picture& picture, int x, int y) {
    const host::Pixel pixel = At(*picture.image, x, y);
    return {pixel.Red, pixel.Green, pixel.Blue, pixel.Alpha};
}
using Words = std::array<int, 4>;

// Four pixels with colours above their alpha: any multiplication or division by alpha shows.
const std::vector<std::uint16_t> kWords = {65535, 1, 32768, 0,     12345, 54321, 7, 300,
                                           0,     0, 0,     65535, 1000,  2000,  3, 40000};

class PictureFile : public testing::Test {
protected:
    /// Creates a file and reads it as a picture.
    template <class T>
    Picture Take(const std::string& name, const ImageSpec& spec, const std::vector<T>& values) const {
        PutFile(folder / name, spec, values);
        return ReadPicture(folder / name);
    }
    Picture TakeWords() const { return Take("in.png", ImageSpec(2, 2, 4, TypeDesc::UINT16), kWords); }

    /// Writes a picture unchanged and returns the number of warnings.
    int Write(const std::string& name, const Picture& picture) const {
        int warnings = 0;
        WritePicture(folder / name, *picture.image, picture, [&](const std::string&) { ++warnings; });
        return warnings;
    }

    const Folder folder;
};

TEST_F(PictureFile, RowsRunBottomUpAndAlphaIsTakenAsStored) {
    const Picture picture = TakeWords();
    EXPECT_EQ(picture.image->PixelDepth, host::Depth::Int16);
    EXPECT_EQ(picture.channels, 4);
    EXPECT_EQ(WordsAt(picture, 0, 1), (Words{65535, 1, 32768, 0}));
    EXPECT_EQ(WordsAt(picture, 1, 1), (Words{12345, 54321, 7, 300}));
    EXPECT_EQ(WordsAt(picture, 0, 0), (Words{0, 0, 0, 65535}));
    EXPECT_EQ(WordsAt(picture, 1, 0), (Words{1000, 2000, 3, 40000}));
}

TEST_F(PictureFile, EveryFormatSurvivesARoundTrip) {
    const struct {
        const char* name;
        TypeDesc type;
    } cases[] = {{"a.png", TypeDesc::UINT16}, {"b.png", TypeDesc::UINT8}, {"c.tif", TypeDesc::UINT16},
                 {"d.tif", TypeDesc::FLOAT},  {"e.tif", TypeDesc::UINT8}, {"f.exr", TypeDesc::HALF},
                 {"g.exr", TypeDesc::FLOAT},  {"h.dpx", TypeDesc::UINT16}};
    for (const auto& c : cases)
        for (int channels : {1, 2, 3, 4}) {
            if (channels < 3 && std::strstr(c.name, ".dpx")) continue; // has no grey
            ImageSpec spec(4, 1, channels, c.type);
            spec.alpha_channel = channels % 2 ? -1 : channels - 1;
            if (channels == 2) spec.channelnames = {"Y", "A"};
            const Picture picture =
                Take(c.name, spec, std::vector<std::uint16_t>(kWords.begin(), kWords.begin() + 4 * channels));
            SCOPED_TRACE(std::string(c.name) + " " + std::to_string(channels));
            EXPECT_EQ(picture.channels, channels);
            EXPECT_EQ(Write("out" + std::string(c.name), picture), 0);
            const Stored in = GetFile(folder / c.name), out = GetFile(folder / ("out" + std::string(c.name)));
            EXPECT_EQ(in.spec.format, out.spec.format);
            EXPECT_EQ(in.values, out.values);
        }
}

TEST_F(PictureFile, ChannelsFindTheirPlaces) {
    const Picture grey =
        Take("grey.png", ImageSpec(2, 1, 1, TypeDesc::UINT8), std::vector<std::uint8_t>{7, 255});
    EXPECT_EQ(WordsAt(grey, 0, 0), (Words{7 * 257, 7 * 257, 7 * 257, 65535}));
    const Picture rgb =
        Take("rgb.exr", ImageSpec(1, 1, 3, TypeDesc::HALF), std::vector<float>{0.5f, 2.0f, -1.0f});
    EXPECT_EQ(WordsAt(rgb, 0, 0), (Words{32768, 65535, 0, 65535}));

    // Channels are identified by their names if they have any.
    ImageSpec spec(1, 1, 5, TypeDesc::FLOAT);
    spec.channelnames = {"depth.Z", "B", "G", "R", "A"};
    spec.alpha_channel = 4;
    const Picture named = Take("layers.exr", spec, std::vector<float>{9.0f, 0.2f, 0.4f, 0.6f, 1.0f});
    EXPECT_EQ(named.channels, 4);
    EXPECT_EQ(WordsAt(named, 0, 0), (Words{39321, 26214, 13107, 65535}));
}

TEST_F(PictureFile, ColourInAGreyFileBecomesItsBrightness) {
    const Picture grey =
        Take("grey.png", ImageSpec(2, 1, 1, TypeDesc::UINT16), std::vector<std::uint16_t>{100, 200});
    const host::Pixel green{.Blue = 0, .Green = 65535, .Red = 0, .Alpha = 65535};
    grey.image->Write(&green, grey.image->PlaneAccess[0].Row(0), nullptr);
    Write("out.png", grey);
    const Picture out = ReadPicture(folder / "out.png");
    EXPECT_EQ(out.channels, 1);
    EXPECT_NEAR(At(*out.image, 0, 0).Red, 0.7152 * 65535, 1);
    EXPECT_EQ(At(*out.image, 1, 0).Red, 200);
}

TEST_F(PictureFile, TheFrameIsTheDisplayWindow) {
    ImageSpec spec(2, 2, 4, TypeDesc::HALF);
    spec.x = 3;
    spec.y = 1;
    spec.full_width = 4;
    spec.full_height = 3;
    const Picture picture = Take("crop.exr", spec, std::vector<float>(16, 1.0f));
    EXPECT_EQ(picture.image->Width, 4);
    EXPECT_EQ(picture.image->Height, 3);
    EXPECT_EQ(WordsAt(picture, 3, 1), (Words{65535, 65535, 65535, 65535}));
    EXPECT_EQ(WordsAt(picture, 2, 1), (Words{0, 0, 0, 0}));
    EXPECT_EQ(WordsAt(picture, 3, 2), (Words{0, 0, 0, 0}));
}

TEST_F(PictureFile, MetadataAndPixelAspectAreKept) {
    ImageSpec spec(1, 1, 4, TypeDesc::HALF);
    spec.attribute("PixelAspectRatio", 2.0f);
    spec.attribute("SlateInfo", "the film");
    const Picture picture = Take("in.exr", spec, std::vector<float>(4, 0.5f));
    EXPECT_EQ(picture.image->AspectX, 2.0);
    EXPECT_EQ(picture.image->AspectY, 1.0);
    Write("out.exr", picture);
    const Stored out = GetFile(folder / "out.exr");
    EXPECT_EQ(out.spec.get_float_attribute("PixelAspectRatio"), 2.0f);
    EXPECT_EQ(out.spec.get_string_attribute("SlateInfo"), "the film");
}

TEST_F(PictureFile, TheNearestLayoutIsTakenWithAWarning) {
    const Picture picture = TakeWords();
    const struct {
        const char* name;
        int channels;
        TypeDesc type;
    } cases[] = {{"out.exr", 4, TypeDesc::FLOAT},
                 {"out.jpg", 3, TypeDesc::UINT8},
                 {"out.tga", 4, TypeDesc::UINT8},
                 {"out.webp", 4, TypeDesc::UINT8},
                 {"out.hdr", 3, TypeDesc::FLOAT}};
    for (const auto& c : cases) {
        EXPECT_EQ(Write(c.name, picture), 1) << c.name;
        const Stored out = GetFile(folder / c.name);
        EXPECT_EQ(out.spec.nchannels, c.channels) << c.name;
        EXPECT_EQ(out.spec.format, c.type) << c.name;
    }
    // The words come back divided by 65535 and rounded to nearest; OpenEXR holds colours multiplied by alpha.
    EXPECT_EQ(GetFile(folder / "out.exr").values[7], static_cast<float>(300 / 65535.0));
    EXPECT_FLOAT_EQ(GetFile(folder / "out.exr").values[4],
                    static_cast<float>(12345 / 65535.0 * 300 / 65535.0));
    EXPECT_EQ(GetFile(folder / "out.tga").values[8], 0.0f);
    EXPECT_EQ(GetFile(folder / "out.tga").values[11], 1.0f);
    EXPECT_EQ(GetFile(folder / "out.tga").values[0], 1.0f);
}

TEST_F(PictureFile, RefusesFilesThatAreNotPictures) {
    folder.Put("text.png", "this is no picture");
    folder.Put("text.xyz", "nor this");
    folder.Put("empty.exr", "");
    PutFile(folder / "whole.png", ImageSpec(64, 64, 4, TypeDesc::UINT16),
            std::vector<std::uint16_t>(64 * 64 * 4, 999));
    folder.Put("half.png", folder.Get("whole.png").substr(0, 120));
    // The header of a picture of 65000 x 65000 pixels: more than a picture can have.
    folder.Put("large.tga", std::string("\0\0\2\0\0\0\0\0\0\0\0\0\xe8\xfd\xe8\xfd\x20\x08", 18));
    for (const char* name : {"text.png", "text.xyz", "empty.exr", "half.png", "large.tga", "none.png", ""}) {
        try {
            ReadPicture(folder / name);
            ADD_FAILURE() << name;
        } catch (const FrameError& error) {
            EXPECT_NE(std::string(error.what()).find(folder / name), std::string::npos);
            EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        }
    }
    EXPECT_THROW(CheckCanWrite("out.xyz"), UsageError);
    EXPECT_NO_THROW(CheckCanWrite("out.exr"));
}

TEST_F(PictureFile, AFileThatCannotBeWrittenLeavesNothing) {
    const Picture picture = TakeWords();
    EXPECT_THROW(Write("none/out.png", picture), FrameError);
    std::filesystem::create_directory(folder / "taken.png");
    EXPECT_THROW(Write("taken.png", picture), FrameError);
    EXPECT_EQ(folder.Count(), 2u);
}

TEST_F(PictureFile, AFullDiskKeepsTheOldFile) {
    // A limit on the size of files fails a write in the middle, as a full disk does.
    const Picture picture = MakeNoise(256, 256);
    for (const char* name : {"out.png", "out.exr", "out.tif", "out.sgi", "out.jpg", "out.dpx"}) {
        folder.Put(name, "the old file");
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit small{10000, RLIM_INFINITY};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        EXPECT_THROW(Write(name, picture), FrameError) << name;
        const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
        EXPECT_EQ(folder.Get(name), "the old file") << name;
    }
    EXPECT_EQ(folder.Count(), 6u) << "no half-written file is left";
}

} // namespace
} // namespace media::test
