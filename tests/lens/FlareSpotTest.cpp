#include "lens/FlareSpot.h"

#include "tests/lens/LensFolder.h"
#include "tests/support/CoreRunner.h"
#include "tests/support/FakeInput.h"
#include "tests/support/FlareSpotDefaults.h"
#include "tests/support/RecordingSurface.h"

#include <cmath>

namespace k7::test {
namespace {

struct Spot : CoreRunner<FlareSpot> {
    Spot() {
        SetDefaults(core);
        core.LensControl.Input[0] = &lensInput;
    }
    explicit Spot(const std::string& file) : Spot() {
        core.LensControl.Value = 5;
        core.FileControl.Value = file;
    }
    FakeInput lensInput{"Lens"};
};

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
    EXPECT_FALSE(Same(*light, *Flat(64, 48, 0)));
    const int words[] = {3000, 20000, 1, 5};
    const Picture in = Flat(64, 48, words[0], words[1], words[2], words[3]);
    const Picture lit = spot.Run(*in);
    for (int i = 0; i < 64 * 48; ++i) {
        const u16* add = light->Pixels + 4 * i;
        ASSERT_EQ(add[3], (3 * add[2] + 8 * add[1] + 5 * add[0]) >> 4) << i;
        for (int c = 0; c < 4; ++c)
            ASSERT_EQ(lit->Pixels[4 * i + c], std::min(words[c] + add[c], 32767)) << i;
    }
    spot.core.ProcessAlpha = false;
    const Picture still = spot.Run(*in);
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
}

TEST(FlareSpot, TooManySidesOrElementsActAsTheMaximum) {
    const auto run = [](int sides, int more) {
        Spot spot;
        spot.core.SidesControl.Value = sides;
        spot.core.MoreControl.Value = more;
        return spot.Run(*Flat(64, 64, 0));
    };
    const Picture most = run(86, 0);
    for (int sides : {87, 90, 2147483647}) EXPECT_TRUE(Same(*run(sides, 0), *most)) << sides;
    EXPECT_FALSE(Same(*run(85, 0), *most));
    EXPECT_TRUE(Same(*run(19, 99), *run(19, 10)));
    EXPECT_FALSE(Same(*run(19, 9), *run(19, 10)));
}

using FlareSpotLens = LensFolder;

TEST_F(FlareSpotLens, OverrideRunsFromTheFirstHueToTheLast) {
    // A lens of two flat surfaces: two ghosts, on Start and on End, of the pure start and end colours.
    Spot spot(Write("2 1 0 1 -1 0 1"));
    spot.core.StartControl.Value = {0.2, 0.5};
    spot.core.EndControl.Value = {0.8, 0.5};
    spot.core.RadiusControl.Value = 8.0;
    spot.core.EdgeBoostControl.Value = 0;
    spot.core.OverrideControl.Value = 1;
    spot.core.ColourStartControl.Value[1] = spot.core.ColourEndControl.Value[2] = 32767; // green, blue
    const Picture out = spot.Run(*Flat(100, 100, 0));

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

TEST_F(FlareSpotLens, GhostsOfFlatSurfacesKeepTheSizeOfTheBundle) {
    Spot spot(Write("2 1 0 1 -1 0 0.0001")); // one visible ghost
    spot.core.StartControl.Value = spot.core.EndControl.Value = {0.5, 0.5};
    spot.core.SidesControl.Value = 4;
    spot.core.EdgeBoostControl.Value = 0;
    spot.core.BrightnessControl.Value = 1000.0;
    spot.core.RadiusControl.Value = 20.0; // 12.44 x 0.02 x 50 pixels = 12.44 pixels to each corner
    const Picture in = Flat(100, 100, 0);
    for (const auto& [aspect, half] : {std::pair{1.0, 12.0}, {2.0, 6.0}}) { // wide pixels: half as many
        in->AspectX = aspect;
        const Picture out = spot.Run(*in);
        for (int x = 0; x < 100; ++x)
            EXPECT_EQ(out->Rows[50][4 * x + 3] > 0, std::abs(x + 0.5 - 50.0) < half) << x;
    }
}

TEST_F(FlareSpotLens, ABadFileIsReportedAndReplaced) {
    const Picture in = Flat(48, 36, 0);
    Spot standard;
    standard.core.LensControl.Value = 1;
    const Picture want = standard.Run(*in);

    const std::pair<std::string, std::string> cases[] = {
        {Write("3 1 2 3"), "Lens file READ failed! using a standard lens......\n"},
        {"no_such_lens", "Lens file OPEN failed! using a standard lens......\n"},
        {"", "Lens file OPEN failed! using a standard lens......\n"}};
    for (const auto& [name, message] : cases) {
        Spot spot(name);
        spot.core.Time = 12.0;
        spot.lensInput.X = 4.0;
        EXPECT_TRUE(Same(*spot.Run(*in), *want)) << name;
        ASSERT_EQ(spot.owner.Messages.size(), 1u);
        EXPECT_TRUE(spot.owner.Messages[0].starts_with(message)) << spot.owner.Messages[0];
        EXPECT_NE(spot.owner.Messages[0].find(name, message.size()), std::string::npos) << "names the file";
        EXPECT_EQ(spot.lensInput.X, 0.0); // the first entry
        EXPECT_EQ(spot.lensInput.LastTime, 12.0);
    }
}

TEST_F(FlareSpotLens, TheFileIsReadForEachFrame) {
    const Picture in = Flat(48, 36, 0);
    Spot spot("lens"); // a plain name under the data folder
    spot.core.LensDirectory = folder_.string() + "\\";
    Write("2 1 0 1 -1 0 1");
    const Picture first = spot.Run(*in);
    Write("2 1 0 1 -1 0 0.3");
    const Picture second = spot.Run(*in);
    EXPECT_TRUE(spot.owner.Messages.empty());
    EXPECT_FALSE(Same(*first, *second));
    EXPECT_TRUE(Same(*spot.Run(*in), *second));
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

TEST(FlareSpot, SurvivesAnyPictureAndSetting) {
    const double odd[] = {1.0, 0.0, -1e5, 1e12, 1e300, 1e-300, HUGE_VAL, std::nan("")};
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 40}, {40, 1}, {24, 18}}) {
        const Picture in = Noise(width, height);
        for (double value : odd)
            for (int setting = 0; setting < 8; ++setting) {
                Spot spot;
                double* const settings[] = {&in->AspectX,
                                            &spot.core.RadiusControl.Value,
                                            &spot.core.StartControl.Value.x,
                                            &spot.core.EndControl.Value.y,
                                            &spot.core.MaxScaleControl.Value,
                                            &spot.core.MinScaleControl.Value,
                                            &spot.core.BrightnessControl.Value,
                                            &spot.core.DefocusControl.Value};
                *settings[setting] = value;
                const Picture out = spot.Run(*in);
                EXPECT_TRUE(Same(*spot.Run(*in, 3), *out)) << value;
                for (int i = 0; i < width * height * 4; ++i)
                    ASSERT_GE(out->Pixels[i], in->Pixels[i]) << value;
                in->AspectX = 1.0;
            }
    }
}

struct Preview {
    Preview() {
        spot.core.Surface = &surface;
        spot.core.ImageWidth = 200;
        spot.core.ImageHeight = 100;
        OverlayControlK7* const widgets[] = {&spot.core.Line, &spot.core.Source, &spot.core.Target};
        for (OverlayControlK7* widget : widgets) widget->Owner = &spot.core;
        spot.core.Line.Link = {{&end, &start}, {&spot.core.EndControl, &spot.core.StartControl}};
        spot.core.Source.Link = {{&start}, {&spot.core.StartControl}};
        spot.core.Target.Link = {{&end}, {&spot.core.EndControl}};
        spot.core.StartControl.Shown = spot.core.StartControl.Value;
        spot.core.EndControl.Shown = spot.core.EndControl.Value;
        spot.core.Draw();
    }
    void Drag(float fromX, float fromY, float toX, float toY) {
        spot.core.Event(kOverlayPress, fromX, fromY);
        spot.core.Event(kOverlayDrag, toX, toY);
        spot.core.Event(kOverlayRelease, toX, toY);
    }
    RecordingSurface surface{200, 100};
    FakeInput start{"Start"}, end{"End"};
    Spot spot;
};

TEST(FlareSpotWidgets, LineArrowAndCrossesAreDrawn) {
    Preview preview;
    const auto& strokes = preview.surface.Strokes;
    ASSERT_EQ(strokes.size(), 1u + 2u + 4u + 4u);
    EXPECT_EQ(preview.surface.Loops.size(), 3u);
    EXPECT_NEAR(strokes[0].x2, 180.0f, 1e-3f); // from End to Start
    EXPECT_NEAR(strokes[0].y2, 90.0f, 1e-3f);
    for (std::size_t i : {0u, 1u, 2u}) { // the head's strokes begin at End too
        EXPECT_NEAR(strokes[i].x1, 20.0f, 1e-3f);
        EXPECT_NEAR(strokes[i].y1, 10.0f, 1e-3f);
    }
    FlareSpot& core = preview.spot.core;
    core.Line.Visible = core.Source.Visible = core.Target.Visible = false;
    preview.surface.Clear();
    core.Draw();
    EXPECT_TRUE(strokes.empty());
}

TEST(FlareSpotWidgets, LineAndCrossesTakeDrags) {
    Preview line; // its middle moves both ends
    line.Drag(100.0f, 50.0f, 120.0f, 40.0f);
    EXPECT_NEAR(line.start.X, 1.0, 1e-5);
    EXPECT_NEAR(line.start.Y, 0.8, 1e-5);
    EXPECT_NEAR(line.end.X, 0.2, 1e-5);
    EXPECT_NEAR(line.end.Y, 0.0, 1e-5);

    Preview crosses;
    crosses.Drag(180.0f, 90.0f, 150.0f, 90.0f);
    EXPECT_NEAR(crosses.start.X, 0.75, 1e-5);
    EXPECT_EQ(crosses.end.Writes, 0);
    crosses.Drag(20.0f, 10.0f, 20.0f, 50.0f);
    EXPECT_NEAR(crosses.end.Y, 0.5, 1e-5);
    EXPECT_EQ(crosses.start.Writes, 1);
}

} // namespace
} // namespace k7::test
