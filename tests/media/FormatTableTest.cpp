#include "media/Errors.h"
#include "media/PictureFile.h"
#include "tests/media/Folder.h"
#include "tests/media/Pictures.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace media::test {
namespace {

using OIIO::ImageSpec;
using OIIO::TypeDesc;

constexpr int kWidth = 71, kHeight = 66;

/// Everything that the metadata of photographs and plates contain.
void Decorate(ImageSpec& spec) {
    spec.attribute("oiio:ColorSpace", "sRGB");
    spec.attribute("DateTime", "2020:01:01 12:00:00");
    spec.attribute("Make", "Camera");
    spec.attribute("Exif:FNumber", 2.8f);
    spec.attribute("GPS:Altitude", 12.0f);
    spec.attribute("Orientation", 6);
    const int timecode[2] = {0x01020304, 0};
    spec.attribute("smpte:TimeCode", TypeDesc::TypeTimeCode, timecode);
    const std::vector<unsigned char> profile(200, 7);
    spec.attribute("ICCProfile", TypeDesc(TypeDesc::UINT8, static_cast<int>(profile.size())), profile.data());
}

/// Words that 8 bits hold too, so that every lossless format must preserve them.
Picture Source(bool decorated, int channels) {
    Picture picture = MakeNoise(kWidth, kHeight, host::Depth::Int8, channels);
    picture.depth = {host::Depth::Int8};
    picture.format = "tiff";
    picture.straight = true;
    picture.colours = {false, {0, 1, 2, channels == 4 ? 3 : -1}};
    if (decorated) Decorate(picture.stored);
    return picture;
}

std::string Bytes(const Picture& picture, bool alpha) {
    std::string bytes;
    for (int y = kHeight - 1; y >= 0; --y)
        for (int x = 0; x < kWidth; ++x) {
            const host::Pixel p = At(*picture.image, x, y);
            for (int word : {p.Red, p.Green, p.Blue}) bytes += static_cast<char>(word / 257);
            if (alpha) bytes += static_cast<char>(p.Alpha / 257);
        }
    return bytes;
}

struct Format {
    const char* ending;
    const char* tool; ///< a command that writes the file $1 as raw bytes of the channels $3 to $2
    bool exact;
    bool alpha;
};

constexpr const char* kMagick = "convert-im6.q16 \"$1[0]\" -depth 8 $3:$2";
constexpr const char* kTurned = "convert-im6.q16 \"$1\" -auto-orient -depth 8 $3:$2"; // its rows run upward
constexpr const char* kOiio = "oiiotool \"$1\" --ch 0,1,2 -d uint8 -o \"$1.ppm\" && "
                              "convert-im6.q16 \"$1.ppm\" -depth 8 $3:$2";

class FormatTable : public testing::TestWithParam<Format> {};

TEST_P(FormatTable, WhatIsWrittenIsReadByAnotherProgram) {
    const Format& format = GetParam();
    const Folder folder;
    for (bool decorated : {false, true})
        for (int channels : {3, 4}) {
            SCOPED_TRACE(std::string(decorated ? "with" : "without") + " metadata, channels " +
                         std::to_string(channels));
            const Picture source = Source(decorated, channels);
            const std::string file = folder / (std::string("out.") + format.ending), raw = folder / "out.raw";
            WritePicture(file, *source.image, source, [](const std::string&) {});
            const bool alpha = channels == 4 && format.alpha;
            const std::string command = "set -- '" + file + "' '" + raw + "' " + (alpha ? "rgba" : "rgb") +
                                        "; " + format.tool + " 2>&1";
            ASSERT_EQ(std::system(command.c_str()), 0);
            const std::string got = folder.Get("out.raw");
            EXPECT_EQ(got.size(), static_cast<std::size_t>(kWidth * kHeight * (alpha ? 4 : 3)));
            const bool exact =
                format.exact && alpha == (channels == 4); // without alpha, colours may be multiplied
            EXPECT_TRUE(!exact || got == Bytes(source, alpha));
        }
}

INSTANTIATE_TEST_SUITE_P(
    Writers, FormatTable,
    testing::Values(Format{"png", kMagick, true, true}, Format{"tif", kMagick, true, true},
                    Format{"tga", kTurned, true, true}, Format{"bmp", kMagick, true, true},
                    Format{"ppm", kMagick, true, false}, Format{"jpg", kMagick, false, false},
                    Format{"gif", kMagick, false, false}, Format{"dpx", kOiio, true, false},
                    Format{"webp", kOiio, false, false}, Format{"exr", kOiio, false, false},
                    Format{"hdr", kOiio, false, false}, Format{"rla", kOiio, true, false}),
    [](const auto& format) { return std::string(format.param.ending); });

TEST(FormatTable, WhatCannotBeWrittenIsRefusedBeforeAnyWork) {
    for (const char* name : {"out.sgi", "out.jp2", "out.rgb", "out.iff", "out.null", "out.xyz", "out"})
        EXPECT_THROW(CheckCanWrite(name), UsageError) << name;
    const struct {
        const char* name;
        WriteOptions options;
        bool good;
    } cases[] = {
        {"out.png", {.depth = StoredDepth{host::Depth::Half}, .compression = {}, .quality = {}}, false},
        {"out.dpx", {.depth = StoredDepth{host::Depth::Int16, 10}, .compression = {}, .quality = {}}, true},
        {"out.png", {.depth = {}, .compression = "zip:9", .quality = {}}, true},
        {"out.exr", {.depth = {}, .compression = "lzw", .quality = {}}, false},
        {"out.exr", {.depth = {}, .compression = "piz:3", .quality = {}}, false},
        {"out.jpg", {.depth = {}, .compression = {}, .quality = 80}, true},
        {"out.tif", {.depth = {}, .compression = {}, .quality = 80}, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name + std::string(" ") + c.options.compression);
        if (c.good)
            EXPECT_NO_THROW(CheckCanWrite(c.name, c.options));
        else
            EXPECT_THROW(CheckCanWrite(c.name, c.options), UsageError);
    }
}

} // namespace
} // namespace media::test
