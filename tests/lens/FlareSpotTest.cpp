#include "lens/FlareSpot.h"

#include "lens/Hsv.h"
#include "tests/support/CoreRunner.h"
#include "tests/support/FakeInput.h"
#include "tests/support/FlareSpotDefaults.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <thread>

namespace k7::test {
namespace {

struct Spot : CoreRunner<FlareSpot> {
    Spot() {
        SetDefaults(core);
        core.LensControl.Input[0] = &lensInput;
    }
    FakeInput lensInput{"Lens"};
};

bool AnyLight(const K7Image& picture) {
    return std::any_of(picture.Pixels, picture.Pixels + picture.Width * picture.Height * 4,
                       [](u16 word) { return word != 0; });
}

TEST(FlareSpot, ThreadsDoNotChangeTheFrame) {
    const Picture in = Noise(61, 47);
    for (int lens = 1; lens <= 4; ++lens) {
        Spot spot;
        spot.core.LensControl.Value = lens;
        spot.core.MoreControl.Value = lens - 1;
        const Picture alone = spot.Run(*in);
        for (int threads : {2, 5, 47, 60})
            EXPECT_TRUE(Same(*spot.Run(*in, threads), *alone)) << lens << ' ' << threads;
        spot.owner.OnThreads = true;
        EXPECT_TRUE(Same(*spot.Run(*in, 4), *alone)) << lens;
    }
}

TEST(FlareSpot, LightIsAdded) {
    Spot spot;
    const Picture light = spot.Run(*Flat(64, 48, 0));
    EXPECT_TRUE(AnyLight(*light));
    const Picture lit = spot.Run(*Flat(64, 48, 3000, 20000, 1, 5));
    for (int i = 0; i < 64 * 48; ++i) {
        const u16* add = light->Pixels + 4 * i;
        const u16* got = lit->Pixels + 4 * i;
        ASSERT_EQ(got[0], std::min(3000 + add[0], 32767)) << i;
        ASSERT_EQ(got[1], std::min(20000 + add[1], 32767)) << i;
        ASSERT_EQ(got[2], std::min(1 + add[2], 32767)) << i;
        ASSERT_EQ(add[3], (3 * add[2] + 8 * add[1] + 5 * add[0]) >> 4) << i;
        ASSERT_EQ(got[3], std::min(5 + add[3], 32767)) << i;
    }
    spot.core.ProcessAlpha = false;
    const Picture still = spot.Run(*Flat(64, 48, 3000, 20000, 1, 5));
    for (int i = 0; i < 64 * 48; ++i) ASSERT_EQ(still->Pixels[4 * i + 3], 5);
}

TEST(FlareSpot, WithoutLightTheBackgroundStays) {
    const Picture in = Noise(40, 30);
    Spot dark;
    dark.core.BrightnessControl.Value = 0.0;
    EXPECT_TRUE(Same(*dark.Run(*in), *in));
    Spot sideless;
    for (int sides : {0, -5}) {
        sideless.core.SidesControl.Value = sides;
        EXPECT_TRUE(Same(*sideless.Run(*in), *in));
    }
    Spot elsewhere; // every ghost outside of the frame
    elsewhere.core.StartControl.Value = {4.0, 4.0};
    elsewhere.core.EndControl.Value = {5.0, 4.0};
    elsewhere.core.LensControl.Value = 4;
    EXPECT_TRUE(Same(*elsewhere.Run(*in), *in));
    Spot aborted;
    aborted.owner.Aborted = true;
    EXPECT_TRUE(Same(*aborted.Run(*in), *in));
}

TEST(FlareSpot, MoreSidesThanThereIsRoomForActAsTheMost) {
    Spot spot;
    const Picture in = Flat(64, 64, 0);
    spot.core.SidesControl.Value = 86;
    const Picture most = spot.Run(*in);
    for (int sides : {87, 90, 2147483647}) {
        spot.core.SidesControl.Value = sides;
        EXPECT_TRUE(Same(*spot.Run(*in), *most)) << sides;
    }
    spot.core.MoreControl.Value = 10;
    const Picture more = spot.Run(*in);
    spot.core.MoreControl.Value = 99;
    EXPECT_TRUE(Same(*spot.Run(*in), *more));
}

/// Start and End in the middle, so that every ghost lies there and none has a side that whitens.
void PointAtMiddle(FlareSpot& core) {
    core.StartControl.Value = core.EndControl.Value = {0.5, 0.5};
}

TEST(FlareSpot, AlongTheAxisGhostsAreMirrorImagesOfThemselves) {
    Spot spot;
    PointAtMiddle(spot.core);
    spot.core.SidesControl.Value = 4;
    const Picture out = spot.Run(*Flat(256, 256, 0));
    EXPECT_TRUE(AnyLight(*out));
    // Up to a sample at the outline, for pixels are taken at their centres and rows from the lower edge up.
    double left = 0.0;
    double right = 0.0;
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 128; ++x) {
            left += out->Rows[y][4 * x];
            right += out->Rows[y][4 * (255 - x)];
        }
    EXPECT_NEAR(left, right, 0.03 * (left + right));
}

TEST(FlareSpot, OverrideRunsFromTheFirstHueToTheLast) {
    // A lens of two flat surfaces: two ghosts, on Start and on End, of the pure start and end colours.
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "k7_override_lens.txt";
    std::ofstream(file) << "2 1 0 1 -1 0 1";
    Spot spot;
    spot.core.LensControl.Value = 5;
    spot.core.FileControl.Value = file.string();
    spot.core.StartControl.Value = {0.2, 0.5};
    spot.core.EndControl.Value = {0.8, 0.5};
    spot.core.RadiusControl.Value = 8.0;
    spot.core.EdgeBoostControl.Value = 0;
    spot.core.OverrideControl.Value = 1;
    const u16 green[4] = {0, 32767, 0, 0};
    const u16 blue[4] = {0, 0, 32767, 0};
    std::copy(green, green + 4, spot.core.ColourStartControl.Value);
    std::copy(blue, blue + 4, spot.core.ColourEndControl.Value);
    const Picture out = spot.Run(*Flat(100, 100, 0));
    std::filesystem::remove(file);

    const u16* first = out->Rows[50] + 4 * 23; // away from the side that whitens, towards Start
    EXPECT_GT(first[1], 500);
    EXPECT_EQ(first[0], 0);
    EXPECT_EQ(first[2], 0);
    const u16* last = out->Rows[50] + 4 * 83;
    EXPECT_GT(last[2], 500);
    EXPECT_EQ(last[0], 0);
    EXPECT_LE(last[1], 8); // hues are whole numbers: pure blue is one beside it
    EXPECT_EQ(out->Rows[50][4 * 50], 0);
    const u16* whitening = out->Rows[50] + 4 * 17; // towards Start from the first ghost's middle
    EXPECT_GT(whitening[0], 500);
    EXPECT_TRUE(spot.owner.Messages.empty());
}

TEST(FlareSpot, GhostsOfFlatSurfacesKeepTheSizeOfTheBundle) {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "k7_flat_lens.txt";
    std::ofstream(file) << "2 1 0 1 -1 0 0.0001"; // one ghost that can be seen
    Spot spot;
    spot.core.LensControl.Value = 5;
    spot.core.FileControl.Value = file.string();
    PointAtMiddle(spot.core);
    spot.core.SidesControl.Value = 4;
    spot.core.EdgeBoostControl.Value = 0;
    spot.core.BrightnessControl.Value = 1000.0;
    spot.core.RadiusControl.Value = 20.0; // 12.44 x 0.02 x 50 pixels = 12.44 pixels to each corner
    Picture in = Flat(100, 100, 0);
    const Picture out = spot.Run(*in);
    for (int x = 0; x < 100; ++x)
        EXPECT_EQ(out->Rows[50][4 * x + 3] > 0, std::abs(x + 0.5 - 50.0) < 12.0) << x;

    in->AspectX = 2.0; // wide pixels: half as many of them
    const Picture wide = spot.Run(*in);
    for (int x = 0; x < 100; ++x)
        EXPECT_EQ(wide->Rows[50][4 * x + 3] > 0, std::abs(x + 0.5 - 50.0) < 6.0) << x;
    std::filesystem::remove(file);
}

TEST(FlareSpot, ABadLensFileIsToldAndReplaced) {
    const Picture in = Flat(48, 36, 0);
    Spot standard;
    standard.core.LensControl.Value = 1;
    const Picture want = standard.Run(*in);

    const std::filesystem::path file = std::filesystem::temp_directory_path() / "k7_bad_lens.txt";
    std::ofstream(file) << "3 1 2 3";
    const std::pair<std::string, std::string> cases[] = {
        {file.string(), "Lens file READ failed! using a standard lens......\n"},
        {"no_such_lens", "Lens file OPEN failed! using a standard lens......\n"},
        {"", "Lens file OPEN failed! using a standard lens......\n"}};
    for (const auto& [name, message] : cases) {
        Spot spot;
        spot.core.Time = 12.0;
        spot.core.LensControl.Value = 5;
        spot.core.FileControl.Value = name;
        spot.lensInput.X = 4.0;
        EXPECT_TRUE(Same(*spot.Run(*in), *want)) << name;
        ASSERT_EQ(spot.owner.Messages, std::vector<std::string>{message});
        EXPECT_EQ(spot.lensInput.X, 0.0); // the first entry
        EXPECT_EQ(spot.lensInput.LastTime, 12.0);
    }
    std::filesystem::remove(file);
}

TEST(FlareSpot, TheLensFileIsReadForEachFrame) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "k7_lens_folder";
    std::filesystem::create_directories(folder);
    const Picture in = Flat(48, 36, 0);
    Spot spot;
    spot.core.LensDirectory = folder.string() + "\\"; // as a plain name under the data folder
    spot.core.LensControl.Value = 5;
    spot.core.FileControl.Value = "mine";
    std::ofstream(folder / "mine.txt") << "2 1 0 1 -1 0 1";
    const Picture first = spot.Run(*in);
    std::ofstream(folder / "mine.txt") << "2 1 0 1 -1 0 0.3";
    const Picture second = spot.Run(*in);
    EXPECT_TRUE(spot.owner.Messages.empty());
    EXPECT_FALSE(Same(*first, *second));
    EXPECT_TRUE(Same(*spot.Run(*in), *second));
    std::filesystem::remove_all(folder);
}

TEST(FlareSpot, RandomSizesAreTheSameInEveryFrame) {
    Spot spot;
    const Picture in = Flat(48, 36, 0);
    spot.core.MoreControl.Value = 4;
    const Picture first = spot.Run(*in);
    EXPECT_TRUE(Same(*spot.Run(*in), *first));
    spot.core.RandomControl.Value = 3;
    EXPECT_FALSE(Same(*spot.Run(*in), *first));
}

TEST(FlareSpot, TwoAtOnceDoNotDisturbEachOther) {
    const Picture in = Noise(64, 48);
    Spot one, other;
    one.core.MoreControl.Value = 7;
    other.core.MoreControl.Value = 3;
    other.core.LensControl.Value = 3;
    const Picture wantOne = one.Run(*in, 2);
    const Picture wantOther = other.Run(*in, 2);
    const Picture inOther = K7Image::MakeCopy(*in);
    std::thread thread([&] {
        for (int i = 0; i < 10; ++i) EXPECT_TRUE(Same(*other.Run(*inOther, 2), *wantOther));
    });
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(Same(*one.Run(*in, 2), *wantOne));
    thread.join();
}

TEST(FlareSpot, NoSettingAndNoPictureBreaksIt) {
    const double bad[] = {NAN, INFINITY, -INFINITY, 1e300, -1e300, 1e12, -1e5, 0.0, 1e-300};
    FloatControlK7 FlareSpotInfo::*const numbers[] = {
        &FlareSpotInfo::RadiusControl,     &FlareSpotInfo::MinScaleControl,   &FlareSpotInfo::MaxScaleControl,
        &FlareSpotInfo::BrightnessControl, &FlareSpotInfo::SaturationControl, &FlareSpotInfo::DefocusControl};
    const int sizes[][2] = {{1, 1}, {1, 40}, {40, 1}, {24, 18}};
    for (const auto& size : sizes) {
        const Picture in = Noise(size[0], size[1]);
        for (double value : bad) {
            for (const auto number : numbers) {
                Spot spot;
                (spot.core.*number).Value = value;
                spot.Run(*in, 3);
            }
            for (PositionControlK7 FlareSpotInfo::*point :
                 {&FlareSpotInfo::StartControl, &FlareSpotInfo::EndControl}) {
                Spot spot;
                (spot.core.*point).Value = {value, 0.3};
                spot.Run(*in, 3);
                (spot.core.*point).Value = {0.3, value};
                spot.Run(*in, 3);
            }
            in->AspectX = value;
            Spot().Run(*in);
            in->AspectX = 1.0;
        }
        for (int value : {-2147483647 - 1, -1, 0, 2147483647}) {
            Spot spot;
            spot.core.SidesControl.Value = spot.core.LensControl.Value = value;
            spot.core.MoreControl.Value = spot.core.RandomControl.Value = value;
            const Picture out = spot.Run(*in, 2);
            for (int i = 0; i < size[0] * size[1] * 4; ++i) ASSERT_LE(out->Pixels[i], 32767);
        }
    }
}

TEST(FlareSpot, ColoursShowWithTheOverride) {
    Spot spot;
    FakeInput inputs[9];
    spot.core.OverrideControl.Input[0] = &inputs[0];
    for (int i = 0; i < 4; ++i) {
        spot.core.ColourStartControl.Input[i] = &inputs[1 + i];
        spot.core.ColourEndControl.Input[i] = &inputs[5 + i];
    }
    for (bool on : {false, true}) {
        inputs[0].X = on;
        spot.core.RefreshControls();
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(inputs[1 + i].Shown, on);
            EXPECT_EQ(inputs[5 + i].Shown, on);
        }
    }
}

/// Keeps the strokes that widgets draw.
struct Strokes : OverlaySurface {
    void SetColour(int, int, int) override {}
    void DrawSegment(const float from[2], const float to[2]) override {
        segments.push_back({from[0], from[1], to[0], to[1]});
    }
    void DrawLoop(const float (*)[2], int) override { ++loops; }
    std::vector<std::array<float, 4>> segments;
    int loops = 0;
};

struct Preview {
    Preview() {
        spot.core.Surface = &strokes;
        spot.core.ImageWidth = 200;
        spot.core.ImageHeight = 100;
        OverlayControlK7* const widgets[] = {&spot.core.Line, &spot.core.Source, &spot.core.Target};
        for (OverlayControlK7* widget : widgets) widget->Owner = &spot.core;
        spot.core.Line.Link = {{&end, &start}, {&spot.core.EndControl, &spot.core.StartControl}};
        spot.core.Source.Link = {{&start}, {&spot.core.StartControl}};
        spot.core.Target.Link = {{&end}, {&spot.core.EndControl}};
        spot.core.Draw();
    }
    Strokes strokes;
    FakeInput start{"Start"}, end{"End"};
    Spot spot;
};

TEST(FlareSpotWidgets, LineArrowAndCrossesAreDrawn) {
    Preview preview;
    EXPECT_EQ(preview.strokes.segments.size(), 1u + 2u + 4u + 4u);
    EXPECT_EQ(preview.strokes.loops, 3);
    const std::array<float, 4> line = {0.1f, 0.1f, 0.9f, 0.9f}; // from End to Start
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(preview.strokes.segments[0][i], line[i], 1e-6f);
    for (std::size_t i : {1u, 2u}) { // the head's strokes begin at End
        EXPECT_NEAR(preview.strokes.segments[i][0], 0.1f, 1e-6f);
        EXPECT_NEAR(preview.strokes.segments[i][1], 0.1f, 1e-6f);
    }
    preview.spot.core.Line.Visible = preview.spot.core.Source.Visible = preview.spot.core.Target.Visible =
        false;
    preview.strokes.segments.clear();
    preview.spot.core.Draw();
    EXPECT_TRUE(preview.strokes.segments.empty());
}

TEST(FlareSpotWidgets, TheMiddleOfTheLineMovesBothEnds) {
    Preview preview;
    preview.spot.core.Event(kOverlayPress, 100.0f, 50.0f);
    preview.spot.core.Event(kOverlayDrag, 120.0f, 40.0f);
    preview.spot.core.Event(kOverlayRelease, 120.0f, 40.0f);
    EXPECT_NEAR(preview.start.X, 1.0, 1e-5);
    EXPECT_NEAR(preview.start.Y, 0.8, 1e-5);
    EXPECT_NEAR(preview.end.X, 0.2, 1e-5);
    EXPECT_NEAR(preview.end.Y, 0.0, 1e-5);
}

TEST(FlareSpotWidgets, EachCrossMovesItsPoint) {
    Preview preview;
    preview.spot.core.Event(kOverlayPress, 180.0f, 90.0f);
    preview.spot.core.Event(kOverlayDrag, 150.0f, 90.0f);
    EXPECT_NEAR(preview.start.X, 0.75, 1e-5);
    EXPECT_EQ(preview.end.Writes, 0);
    preview.spot.core.Event(kOverlayRelease, 150.0f, 90.0f);
    preview.spot.core.Event(kOverlayPress, 20.0f, 10.0f);
    preview.spot.core.Event(kOverlayDrag, 20.0f, 50.0f);
    EXPECT_NEAR(preview.end.Y, 0.5, 1e-5);
    EXPECT_EQ(preview.start.Writes, 1);
}

} // namespace
} // namespace k7::test
