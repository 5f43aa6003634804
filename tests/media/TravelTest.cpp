#include "media/Clip.h"
#include "media/Errors.h"
#include "media/PictureFile.h"
#include "tests/media/Folder.h"
#include "tests/media/Pictures.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/stat.h>

namespace media::test {
namespace {

/// A folder with pictures made, and compared, by oiiotool.
class Travel : public testing::Test {
protected:
    bool Tool(const std::string& words) const {
        return std::system(
                   ("cd '" + folder.Path() + "' && oiiotool " + words + " >/dev/null 2>&1").c_str()) == 0;
    }
    bool Same(const std::string& a, const std::string& b, const std::string& what) const {
        return Tool(a + " " + what + " " + b + " " + what + " --diff");
    }
    /// Writes a picture with its colours doubled and its alpha unchanged.
    void Double(const Picture& picture, const std::string& name, const WriteOptions& options = {}) {
        const std::shared_ptr<host::Image> image =
            Share(host::Image::Make(picture.image->Width, picture.image->Height, picture.image->PixelDepth));
        std::vector<float> row(static_cast<std::size_t>(image->Width) * 4);
        for (int y = 0; y < image->Height; ++y) {
            picture.image->ReadRow(y, row.data());
            for (std::size_t i = 0; i < row.size(); ++i) row[i] *= i % 4 == 3 ? 1.0f : 2.0f;
            image->WriteRow(y, row.data());
        }
        WritePicture(
            folder / name, *image, picture, [&](const std::string& w) { warnings += w; }, options);
    }

    const Folder folder;
    std::string warnings;
};

/// Two parts of one display window that lies elsewhere; the first has its data window around and beyond it,
/// and further channels of other types.
constexpr const char* kParts =
    "--pattern noise:type=uniform:min=0:max=2:seed=1 60x40 4 --chnames R,G,B,A -d half "
    "--pattern noise:type=uniform:min=0:max=9:seed=2 60x40 2 --chnames Z,N.X -d float --chappend "
    "--pattern noise:type=uniform:min=0:max=3:seed=3 60x40 3 --chnames diffuse.R,diffuse.G,diffuse.B "
    "--chappend "
    "--origin +990+480 --fullsize 48x32+1000+500 -d R=half -d G=half -d B=half -d A=half "
    "--attrib oiio:subimagename main --compression piz "
    "--pattern noise:type=uniform:min=0:max=3:seed=4 60x40 3 --origin +1000+500 --fullsize 48x32+1000+500 "
    "--attrib oiio:subimagename second -siappend -o in.exr";

TEST_F(Travel, OtherChannelsPartsAndPixelsBeyondTheFrameAreKept) {
    ASSERT_TRUE(Tool(kParts));
    const Picture picture = ReadPicture(folder / "in.exr");
    EXPECT_EQ(picture.image->Width, 48);
    EXPECT_EQ(picture.image->Height, 32);
    Double(picture, "out.exr");
    EXPECT_EQ(warnings, "");
    for (const char* what : {"--subimage 0 --ch A", "--subimage 0 --ch Z,N.X", "--subimage 0 --ch diffuse.B",
                             "--subimage 1", "--subimage 0 --ch R --cut 10x20+990+480"})
        EXPECT_TRUE(Same("in.exr", "out.exr", what)) << what;
    EXPECT_FALSE(Same("in.exr", "out.exr", "--subimage 0 --ch R"));
    EXPECT_TRUE(Tool("in.exr --subimage 0 --ch R,G,B --cut 48x20+1000+500 --mulc 2 "
                     "out.exr --subimage 0 --ch R,G,B --cut 48x20+1000+500 --diff"));
    const Picture again = ReadPicture(folder / "out.exr");
    EXPECT_EQ(again.stored.channelformat(0), OIIO::TypeDesc::HALF);
    EXPECT_EQ(again.stored.channelformat(4), OIIO::TypeDesc::FLOAT);
    EXPECT_EQ(again.stored.get_string_attribute("compression"), "piz");
}

TEST_F(Travel, OnlyTheChosenLayerChanges) {
    ASSERT_TRUE(Tool(kParts));
    Double(ReadPicture(folder / "in.exr", {.layer = "diffuse", .limits = {}, .atLeast = {}}), "layer.exr");
    EXPECT_TRUE(Same("in.exr", "layer.exr", "--subimage 0 --ch R,G,B,A,Z"));
    EXPECT_FALSE(Same("in.exr", "layer.exr", "--subimage 0 --ch diffuse.R"));
    Double(ReadPicture(folder / "in.exr", {.layer = "second", .limits = {}, .atLeast = {}}), "part.exr");
    EXPECT_TRUE(Same("in.exr", "part.exr", "--subimage 0"));
    EXPECT_FALSE(Same("in.exr", "part.exr", "--subimage 1"));
    Double(ReadPicture(folder / "in.exr"), "plain.png");
    for (const char* word : {"Z", "parts", "beyond", "position"})
        EXPECT_NE(warnings.find(word), std::string::npos) << warnings;

    ASSERT_TRUE(Tool("--pattern constant:color=1,2 8x8 2 --chnames Z,N.X -o z.exr"));
    for (const auto& [file, layer] : {std::pair("z.exr", ""), {"in.exr", "nothing"}}) try {
            ReadPicture(folder / file, {.layer = layer, .limits = {}, .atLeast = {}});
            ADD_FAILURE() << file;
        } catch (const FrameError& error) {
            EXPECT_NE(std::string(error.what()).find("Z, N.X"), std::string::npos) << error.what();
        }
}

TEST_F(Travel, TilesNamesAndSmallWindowsStay) {
    ASSERT_TRUE(Tool("--pattern noise:type=uniform 40x40 2 --chnames R,G -d half --tile 16 16 -o rg.exr"));
    Double(ReadPicture(folder / "rg.exr"), "rg2.exr");
    const Picture rg = ReadPicture(folder / "rg2.exr");
    EXPECT_EQ(rg.stored.nchannels, 2);
    EXPECT_EQ(rg.stored.tile_width, 16);

    ASSERT_TRUE(Tool("--pattern constant:color=1,1,1,1 40x30 4 --crop 10x8+5+6 -d half -o w.exr"));
    Picture window = ReadPicture(folder / "w.exr");
    Double(window, "w2.exr");
    EXPECT_EQ(ReadPicture(folder / "w2.exr").stored.width, 10);
    const host::Pixel red{0, 0, 65535, 65535}; // outside the window
    window.image->Write(&red, window.image->PlaneAccess[0].Row(29) + 20 * window.image->PlaneAccess[0].Step,
                        nullptr);
    Double(window, "w3.exr");
    const Picture larger = ReadPicture(folder / "w3.exr");
    EXPECT_EQ(larger.stored.width, 16);
    EXPECT_EQ(larger.stored.height, 14);
    EXPECT_EQ(At(*larger.image, 20, 29).Red, 65535);
}

TEST_F(Travel, DepthAndAlphaFollowTheFormatThatIsWritten) {
    ASSERT_TRUE(Tool("--pattern constant:color=0.5,0.25,0.125,0.5 8x8 4 -d uint8 -o in.png"));
    const Picture straight =
        ReadPicture(folder / "in.png", {.layer = {}, .limits = {}, .atLeast = host::Depth::Float});
    EXPECT_EQ(straight.image->PixelDepth, host::Depth::Float);
    WritePicture(folder / "out.exr", *straight.image, straight, [](const std::string&) {},
                 {.depth = StoredDepth{host::Depth::Float}, .compression = {}, .quality = {}});
    float row[32];
    ReadPicture(folder / "out.exr").image->ReadRow(0, row);
    EXPECT_NEAR(row[3], 128 / 255.0, 1e-6);
    EXPECT_NEAR(row[0], 255 / 255.0 * 128 / 255.0, 2e-2)
        << "oiiotool divides by alpha, OpenEXR multiplies again";
    const Picture back = ReadPicture(folder / "out.exr");
    WritePicture(folder / "back.png", *back.image, back, [](const std::string&) {},
                 {.depth = StoredDepth{host::Depth::Int8}, .compression = {}, .quality = {}});
    const host::Pixel first = At(*straight.image, 3, 3),
                      last = At(*ReadPicture(folder / "back.png").image, 3, 3);
    EXPECT_EQ(first.Red, last.Red);
    EXPECT_EQ(first.Blue, last.Blue);
    EXPECT_EQ(first.Alpha, last.Alpha);
}

TEST_F(Travel, AnimationsAreSequences) {
    ASSERT_TRUE(
        Tool("--pattern constant:color=1,0,0 64x48 3 --pattern constant:color=0,1,0 64x48 3 -siappend "
             "--pattern constant:color=0,0,1 64x48 3 -siappend -d uint8 -o in.gif -o in.tif"));
    for (const char* name : {"in.gif", "in.tif"}) {
        Clip clip(folder / name, Missing::Error, {});
        ASSERT_TRUE(clip.IsSequence()) << name;
        EXPECT_EQ(clip.Span()->last, 2);
        EXPECT_EQ(At(*clip.At(1).image, 5, 5).Green, 65535);
        EXPECT_EQ(At(*clip.At(2).image, 5, 5).Blue, 65535);
        EXPECT_EQ(At(*clip.At(0).image, 5, 5).Alpha, 65535);
        EXPECT_THROW(clip.At(3), FrameError);
    }
}

TEST_F(Travel, DangerousFilesAreRefused) {
    // The header of a picture of 16000 x 16000 pixels, in a file of a few bytes.
    folder.Put("large.tga", std::string("\0\0\2\0\0\0\0\0\0\0\0\0\x80\x3e\x80\x3e\x20\x08", 18));
    ASSERT_EQ(::mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    ASSERT_TRUE(Tool("--pattern constant:color=1,0,0 9x9 3 -o in.png"));
    const struct {
        const char* name;
        const char* formats;
        const char* told;
    } cases[] = {
        {"large.tga", "", "--max-pixels"}, {"pipe.png", "", "pipe"}, {"in.png", "openexr", "--formats"}};
    for (const auto& c : cases) try {
            ReadOptions options;
            if (*c.formats) options.limits.formats = {c.formats};
            ReadPicture(folder / c.name, options);
            ADD_FAILURE() << c.name;
        } catch (const FrameError& error) {
            EXPECT_NE(std::string(error.what()).find(c.told), std::string::npos) << error.what();
        }
}

} // namespace
} // namespace media::test
