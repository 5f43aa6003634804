#include "lens/Flare.h"

#include "library/K7Image.h"
#include "library/Numbers.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace k7 {

namespace {

constexpr double kWordScale = 32767.0;

/// The columns or rows between two exclusive bounds, in either order, that lie in the frame.
void SetSide(double centre, double half, int size, int& begin, int& end) {
    std::int64_t low = Trunc(centre - half);
    std::int64_t high = static_cast<std::int64_t>(Trunc(centre + half)) + 1;
    if (low > high) std::swap(low, high);
    begin = static_cast<int>(std::clamp<std::int64_t>(low + 1, 0, size));
    end = static_cast<int>(std::clamp<std::int64_t>(high, begin, size));
}

int LevelOf(double percent) {
    return Trunc(percent / 100.0 * kWordScale);
}

/// A swatch takes the grey of its level.
void FollowLevel(const FloatControlK7& level, ColourControlK7& swatch, double time) {
    const u16 grey = Saturate<u16>(level.Value / 100.0 * kWordScale);
    std::fill_n(swatch.Value, 3, grey);
    swatch.Set(time, grey, grey, grey, 0);
}

/// A swatch becomes the grey of its mean, and the level follows.
void FollowSwatch(ColourControlK7& swatch, FloatControlK7& level, double time) {
    const auto sum = static_cast<float>(swatch.Value[0] + swatch.Value[1] + swatch.Value[2]);
    const u16 grey = Saturate<u16>(sum / 3.0 + 0.5);
    swatch.Set(time, grey, grey, grey, 0);
    level.Changing = true;
    level.Set(time, static_cast<float>(grey) / 32767.0f * 100.0f);
}

} // namespace

// One frame.

void Flare::Process() {
    if (IsAborted()) return;
    InDepth(Background, Output, [&](const auto& background, auto& output) { Shine(background, output); });
    Finish();
}

template <class Sample>
void Flare::Shine(const PictureK7<Sample>& background, PictureK7<Sample>& output) {
    const PictureK7<Sample>& lights = *LightInput.Of<Sample>();
    Start(output);
    TakeValues();
    if (!MakeTables()) return;
    const LightMap<Sample> map = MakeLightMap<Sample>();
    if (!map.image) return;
    RunRows(*this, Height, [&](int first, int last) { SelectRows(lights, *map.image, first, last); });
    if (!CollectLights(*map.image, Width / 2, Height / 2) || IsAborted()) return;
    if (LightMapOnly.Value) {
        output.CopyColour(map.image.get());
        output.CopyAlpha(&lights);
        return;
    }
    ThrowLights(*this, background, output);
    if (!ProcessAlpha) output.CopyAlpha(&background);
}

void Flare::TakeValues() {
    WorkAperture = static_cast<double>(WidthScale) * Aperture.Value;
    WorkGlowRadius = GlowRadius.Value / static_cast<double>(WidthScale);
    WorkStreakRot = StreakRot.Value;
    WorkStreaks = Streaks.Value;
    WorkFringes = HaloFringes.Value;
    WorkStreakLength = static_cast<float>(StreakLength.Value) / WidthScale;
    WorkHaloGain = HaloStrength.Value / 10.0;
    WorkStreakGain = StreakStrength.Value;
    WorkMono = MonoStreak.Value / 100.0;
    WorkGlowGain = GlowStrength.Value;
    WorkFringeGain = HaloFrnStr.Value / 100.0;
    WorkGhosts = Reflections.Value;
    WorkReflectivity = Reflectivity.Value / 100.0;
    WorkReflScale = ReflScale.Value / 100.0;
    WorkContrast = Contrast.Value / 100.0;
    LowLevel = LevelOf(LowLight.Value);
    HighLevel = LevelOf(HighLight.Value);
    LightBox = LightRectangle();
}

/// The pixels that may be lights: all if the levels are wide open, otherwise those in the rectangle.
PixelBox Flare::LightRectangle() const {
    PixelBox box{0, 0, Width, Height};
    if (WideOpen()) return box;
    const double width = Width;
    const double height = Height;
    const double scaleY = MatchScales.Value ? ScaleX.Value : ScaleY.Value;
    SetSide(Trunc(width * Centre.Value.x), width * 0.5 * ScaleX.Value, Width, box.Left, box.Right);
    SetSide(Trunc(height * Centre.Value.y), height * 0.5 * scaleY, Height, box.Bottom, box.Top);
    return box;
}

/// True if every level is that of a light. The last few steps at either end do not count.
bool Flare::WideOpen() const {
    return LowLevel <= 1 && std::max(LowLevel, HighLevel) >= 32765;
}

template <class Sample>
void Flare::SelectRows(const PictureK7<Sample>& lights, const PictureK7<Sample>& map, int first,
                       int last) const {
    // A light's mean falls into the step of a level; in floats the highest step has no upper end.
    const int high = std::max(LowLevel, HighLevel);
    const auto low = static_cast<float>(LowLevel);
    const float end =
        high >= kFullScale ? std::numeric_limits<float>::infinity() : static_cast<float>(high) + 1.0f;
    const bool all = WideOpen();
    const std::size_t left = static_cast<std::size_t>(LightBox.Left) * K7Image::Channels;
    for (int y = first; y <= last; ++y) {
        const Sample* from = lights.Rows[y] + left;
        Sample* to = map.Rows[y];
        std::memset(to, 0, map.RowBytes());
        if (y < LightBox.Bottom || y >= LightBox.Top) continue;
        to += left;
        for (int x = LightBox.Left; x < LightBox.Right;
             ++x, from += K7Image::Channels, to += K7Image::Channels) {
            const auto level = (from[0] + from[1] + from[2]) / 3; // truncated for words
            const auto mean = static_cast<float>(level);
            if (!all && !(mean >= low && mean < end)) continue;
            for (int c = 0; c < 3; ++c) to[c] = std::max(from[c], Sample{0});
        }
    }
}

// Controls that follow others.

void Flare::RefreshControls() {
    ReflectionsChanged();
    MatchScalesChanged();
    LightMapOnlyChanged();
}

void Flare::ReflectionsChanged() {
    int ghosts;
    Reflections.Get(kTimeNow, &ghosts);
    Reflectivity.SetHidden(ghosts == 0);
    ReflScale.SetHidden(ghosts == 0);
}

void Flare::MatchScalesChanged() {
    int match;
    MatchScales.Get(kTimeNow, &match);
    ScaleY.SetHidden(match != 0);
}

void Flare::LightMapOnlyChanged() {
    int mapOnly;
    int ghosts;
    LightMapOnly.Get(kTimeNow, &mapOnly);
    Reflections.Get(kTimeNow, &ghosts);
    const bool noGhosts = mapOnly == 0 || ghosts == 0;
    Reflectivity.SetHidden(noGhosts);
    ReflScale.SetHidden(noGhosts);
    ControlK7* const looks[] = {&Aperture,       &HaloFringes, &HaloStrength, &HaloFrnStr,   &Contrast,
                                &Reflections,    &Streaks,     &MonoStreak,   &StreakLength, &StreakRot,
                                &StreakStrength, &GlowRadius,  &GlowStrength};
    for (ControlK7* control : looks) control->SetHidden(mapOnly == 1);
}

void Flare::LowLightChanged(double time) {
    FollowLevel(LowLight, Low, time);
}

void Flare::LowChanged(double time) {
    FollowSwatch(Low, LowLight, time);
}

void Flare::HighLightChanged(double time) {
    FollowLevel(HighLight, High, time);
}

void Flare::HighChanged(double time) {
    FollowSwatch(High, HighLight, time);
}

// Widgets.

void Flare::Draw() {
    CentreCross.DrawAt(Centre.Shown);
    if (ScaleBox.Visible) {
        ScaleBox.X = static_cast<float>(Centre.Shown.x);
        ScaleBox.Y = static_cast<float>(Centre.Shown.y);
        ScaleBox.Width = static_cast<float>(ScaleX.Shown);
        ScaleBox.Height = static_cast<float>(ScaleY.Shown);
        ScaleBox.Square = MatchScales.Value != 0;
        ScaleBox.Rotation = 0.0f;
        ScaleBox.Draw();
    }
}

void Flare::Event(int event, float x, float y) {
    ScaleBox.Event(event, x, y);
    CentreCross.Event(event, x, y);
}

} // namespace k7
