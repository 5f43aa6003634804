#include "app/PictureFile.h"
#include "app/Errors.h"
#include "tests/app/Folder.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstring>
#include <limits>
#include <sys/resource.h>

namespace app::test {
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

/// The 16-bit units of a pixel, row 0 at the bottom.
host::Pixel At(const host::Image& image, int x, int y) {
    host::Pixel pixel;
    image.Read(&pixel, image.PlaneAccess[0].Row(y) + x * image.PlaneAccess[0].Step, nullptr);
    return pixel;
}

void ExpectPixel(const Picture& picture, int x, int y, int red, int green, int blue, int alpha) {
    const host::Pixel pixel = At(*picture.image, x, y);
    EXPECT_EQ(pixel.Red, red) << x << ' ' << y;
    EXPECT_EQ(pixel.Green, green) << x << ' ' << y;
    EXPECT_EQ(pixel.Blue, blue) << x << ' ' << y;
    EXPECT_EQ(pixel.Alpha, alpha) << x << ' ' << y;
}

class Warnings {
public:
    operator std::function<void(const std::string&)>() {
        return [this](const std::string& text) { texts.push_back(text); };
    }
    std::vector<std::string> texts;
};

// Four pixels, colours that alpha does not cover: what multiplies or divides by alpha shows.
const std::vector<std::uint16_t> kWords = {65535, 1, 32768, 0,     12345, 54321, 7, 300,
                                           0,     0, 0,     65535, 1000,  2000,  3, 40000};

TEST(PictureFile, RowsRunBottomUpAndAlphaIsTakenAsStored) {
    const Folder folder;
    PutFile(folder / "in.png", ImageSpec(2, 2, 4, TypeDesc::UINT16), kWords);
    const Picture picture = ReadPicture(folder / "in.png");
    EXPECT_EQ(picture.image->PixelDepth, host::Depth::Int16);
    EXPECT_EQ(picture.channels, 4);
    ExpectPixel(picture, 0, 1, 65535, 1, 32768, 0);
    ExpectPixel(picture, 1, 1, 12345, 54321, 7, 300);
    ExpectPixel(picture, 0, 0, 0, 0, 0, 65535);
    ExpectPixel(picture, 1, 0, 1000, 2000, 3, 40000);
}

TEST(PictureFile, EveryFormatComesBackAsItWent) {
    const Folder folder;
    struct Case {
        const char* name;
        TypeDesc type;
    };
    const Case cases[] = {{"a.png", TypeDesc::UINT16}, {"b.png", TypeDesc::UINT8},
                          {"c.tif", TypeDesc::UINT16}, {"d.tif", TypeDesc::FLOAT},
                          {"e.tif", TypeDesc::UINT8},  {"f.exr", TypeDesc::HALF},
                          {"g.exr", TypeDesc::FLOAT},  {"h.dpx", TypeDesc::UINT16}};
    for (const Case& c : cases)
        for (int channels : {1, 2, 3, 4}) {
            if (channels < 3 && std::strstr(c.name, ".dpx")) continue; // has no grey
            ImageSpec spec(4, 1, channels, c.type);
            spec.alpha_channel = channels % 2 ? -1 : channels - 1;
            if (channels == 2) spec.channelnames = {"Y", "A"};
            PutFile(folder / c.name, spec,
                    std::vector<std::uint16_t>(kWords.begin(), kWords.begin() + 4 * channels));
            const Picture picture = ReadPicture(folder / c.name);
            EXPECT_EQ(picture.channels, channels) << c.name;
            Warnings warnings;
            WritePicture(folder / ("out" + std::string(c.name)), *picture.image, picture, warnings);
            const Stored in = GetFile(folder / c.name), out = GetFile(folder / ("out" + std::string(c.name)));
            EXPECT_EQ(in.spec.format, out.spec.format) << c.name << ' ' << channels;
            EXPECT_EQ(in.values, out.values) << c.name << ' ' << channels;
            EXPECT_TRUE(warnings.texts.empty()) << c.name << ' ' << channels << ' ' << warnings.texts[0];
        }
}

TEST(PictureFile, GreyBecomesEqualColoursAndMissingAlphaIsOpaque) {
    const Folder folder;
    PutFile(folder / "grey.png", ImageSpec(2, 1, 1, TypeDesc::UINT8), std::vector<std::uint8_t>{7, 255});
    ExpectPixel(ReadPicture(folder / "grey.png"), 0, 0, 7 * 257, 7 * 257, 7 * 257, 65535);
    PutFile(folder / "rgb.exr", ImageSpec(1, 1, 3, TypeDesc::HALF), std::vector<float>{0.5f, 2.0f, -1.0f});
    ExpectPixel(ReadPicture(folder / "rgb.exr"), 0, 0, 32768, 65535, 0, 65535);
}

TEST(PictureFile, ColourInAGreyFileBecomesItsBrightness) {
    const Folder folder;
    PutFile(folder / "grey.png", ImageSpec(2, 1, 1, TypeDesc::UINT16), std::vector<std::uint16_t>{100, 200});
    const Picture grey = ReadPicture(folder / "grey.png");
    host::Pixel pixel{.Blue = 0, .Green = 65535, .Red = 0, .Alpha = 65535};
    grey.image->Write(&pixel, grey.image->PlaneAccess[0].Row(0), nullptr);
    Warnings warnings;
    WritePicture(folder / "out.png", *grey.image, grey, warnings);
    const Picture out = ReadPicture(folder / "out.png");
    EXPECT_EQ(out.channels, 1);
    EXPECT_NEAR(At(*out.image, 0, 0).Red, 0.7152 * 65535, 1);
    EXPECT_EQ(At(*out.image, 1, 0).Red, 200);
}

TEST(PictureFile, ChannelsGoByTheirNames) {
    const Folder folder;
    ImageSpec spec(1, 1, 5, TypeDesc::FLOAT);
    spec.channelnames = {"depth.Z", "B", "G", "R", "A"};
    spec.alpha_channel = 4;
    PutFile(folder / "layers.exr", spec, std::vector<float>{9.0f, 0.2f, 0.4f, 0.6f, 1.0f});
    const Picture picture = ReadPicture(folder / "layers.exr");
    EXPECT_EQ(picture.channels, 4);
    ExpectPixel(picture, 0, 0, 39321, 26214, 13107, 65535);
}

TEST(PictureFile, TheFrameIsTheDisplayWindow) {
    const Folder folder;
    ImageSpec spec(2, 2, 4, TypeDesc::HALF);
    spec.x = 3;
    spec.y = 1;
    spec.full_width = 4;
    spec.full_height = 3;
    PutFile(folder / "crop.exr", spec, std::vector<float>(16, 1.0f));
    const Picture picture = ReadPicture(folder / "crop.exr");
    EXPECT_EQ(picture.image->Width, 4);
    EXPECT_EQ(picture.image->Height, 3);
    ExpectPixel(picture, 3, 1, 65535, 65535, 65535, 65535);
    ExpectPixel(picture, 2, 1, 0, 0, 0, 0);
    ExpectPixel(picture, 3, 2, 0, 0, 0, 0);
}

TEST(PictureFile, MetadataAndPixelAspectGoThrough) {
    const Folder folder;
    ImageSpec spec(1, 1, 4, TypeDesc::HALF);
    spec.attribute("PixelAspectRatio", 2.0f);
    spec.attribute("SlateInfo", "the film");
    PutFile(folder / "in.exr", spec, std::vector<float>(4, 0.5f));
    const Picture picture = ReadPicture(folder / "in.exr");
    EXPECT_EQ(picture.image->AspectX, 2.0);
    EXPECT_EQ(picture.image->AspectY, 1.0);
    WritePicture(folder / "out.exr", *picture.image, picture, Warnings());
    const Stored out = GetFile(folder / "out.exr");
    EXPECT_EQ(out.spec.get_float_attribute("PixelAspectRatio"), 2.0f);
    EXPECT_EQ(out.spec.get_string_attribute("SlateInfo"), "the film");
}

TEST(PictureFile, TheNearestLayoutIsTakenWithAWarning) {
    const Folder folder;
    PutFile(folder / "in.png", ImageSpec(2, 2, 4, TypeDesc::UINT16), kWords);
    const Picture picture = ReadPicture(folder / "in.png");
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
        Warnings warnings;
        WritePicture(folder / c.name, *picture.image, picture, warnings);
        const Stored out = GetFile(folder / c.name);
        EXPECT_EQ(out.spec.nchannels, c.channels) << c.name;
        EXPECT_EQ(out.spec.format, c.type) << c.name;
        EXPECT_EQ(warnings.texts.size(), 1u) << c.name;
    }
    // The words come back divided by 65535 and rounded to nearest.
    EXPECT_EQ(GetFile(folder / "out.exr").values[4], static_cast<float>(12345 / 65535.0));
    EXPECT_EQ(GetFile(folder / "out.tga").values[8], 0.0f);
    EXPECT_EQ(GetFile(folder / "out.tga").values[11], 1.0f);
    EXPECT_EQ(GetFile(folder / "out.tga").values[0], 1.0f);
}

TEST(PictureFile, FilesThatAreNoPictures) {
    const Folder folder;
    folder.Put("text.png", "this is no picture");
    folder.Put("text.xyz", "nor this");
    folder.Put("empty.exr", "");
    PutFile(folder / "whole.png", ImageSpec(64, 64, 4, TypeDesc::UINT16),
            std::vector<std::uint16_t>(64 * 64 * 4, 999));
    folder.Put("half.png", folder.Get("whole.png").substr(0, 120));
    for (const char* name : {"text.png", "text.xyz", "empty.exr", "half.png", "none.png", ""}) {
        try {
            ReadPicture(folder / name);
            ADD_FAILURE() << name;
        } catch (const FrameError& error) {
            EXPECT_NE(std::string(error.what()).find(folder / name), std::string::npos);
            EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        }
    }
    EXPECT_THROW(CheckCanWrite("out.xyz"), UsageError);
    EXPECT_THROW(CheckCanWrite("out"), UsageError);
    EXPECT_NO_THROW(CheckCanWrite("out.exr"));
}

/// A header of a picture that has no pixels behind it.
std::string BareHeader(unsigned width, unsigned height) {
    const auto half = [](unsigned n) {
        return std::string{static_cast<char>(n & 255), static_cast<char>(n >> 8)};
    };
    std::string targa(12, '\0');
    targa[2] = 2; // colour, not packed
    return targa + half(width) + half(height) + std::string{32, 8};
}

TEST(PictureFile, PicturesBeyondTheRangeOfPixelCountsAreRefused) {
    const Folder folder;
    folder.Put("large.tga", BareHeader(65000, 65000)); // 4 225 000 000 pixels
    EXPECT_THROW(ReadPicture(folder / "large.tga"), FrameError);
}

TEST(PictureFile, AFileThatCannotBeWrittenLeavesNothing) {
    const Folder folder;
    PutFile(folder / "in.png", ImageSpec(2, 2, 4, TypeDesc::UINT16), kWords);
    const Picture picture = ReadPicture(folder / "in.png");
    EXPECT_THROW(WritePicture(folder / "none/out.png", *picture.image, picture, Warnings()), FrameError);
    std::filesystem::create_directory(folder / "taken.png");
    EXPECT_THROW(WritePicture(folder / "taken.png", *picture.image, picture, Warnings()), FrameError);
    EXPECT_EQ(folder.Count(), 2u);
}

TEST(PictureFile, AFullDiskKeepsTheOldFile) {
    // A limit on the size of files fails a write in the middle, as a full disk does.
    const Folder folder;
    const Picture picture = [] {
        Picture noise;
        noise.image = Share(host::Image::Make(256, 256, host::Depth::Int16));
        std::uint32_t state = 1;
        for (int y = 0; y < 256; ++y)
            for (int i = 0; i < 256 * 8; ++i)
                noise.image->PlaneAccess[0].Row(y)[i] =
                    static_cast<std::byte>((state = state * 1664525u + 1013904223u) >> 24);
        return noise;
    }();
    for (const char* name : {"out.png", "out.exr", "out.tif", "out.sgi", "out.jpg", "out.dpx"}) {
        folder.Put(name, "the old file");
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit small{10000, RLIM_INFINITY};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        EXPECT_THROW(WritePicture(folder / name, *picture.image, picture, Warnings()), FrameError) << name;
        const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
        EXPECT_EQ(folder.Get(name), "the old file") << name;
    }
    EXPECT_EQ(folder.Count(), 6u) << "no half-written file is left";
}

} // namespace
} // namespace app::test
