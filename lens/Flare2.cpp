#include "lens/Flare2.h"

#include "library/K7Image.h"
#include "library/Numbers.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace k7 {

namespace {

// The styles: one row for each entry of a list.

struct HaloStyle {
    double aperture;
    int fringes;
    double strength, fringeStrength;
};
constexpr HaloStyle kHaloStyles[] = {{4.0, 100, 1.0, 50.0}, {1.0, 30, 2.0, 80.0}, {0.2, 150, 4.0, 100.0}};

struct StreakStyle {
    int streaks;
    double mono;
    int length;
    double rotation, strength;
};
constexpr StreakStyle kStreakStyles[] = {
    {10, 5.0, 75, 0.0, 1.0}, {23, 0.0, 175, 90.0, 2.0}, {300, 5.0, 220, 180.0, 8.0}};

struct GlowStyle {
    double radius, strength;
};
constexpr GlowStyle kGlowStyles[] = {{10.0, 10.0}, {50.0, 28.0}, {100.0, 200.0}};

struct ReflectionStyle {
    int reflections;
    std::optional<double> reflectivity, scale; ///< empty: unchanged
};
constexpr ReflectionStyle kReflectionStyles[] = {{0, {}, {}}, {5, 50.0, 1.0}, {10, 100.0, 2.5}};

/// The row of a list's current entry; null if there is no such entry.
template <class Style, std::size_t count>
const Style* Chosen(ListControlK7& list, const Style (&styles)[count], double time) {
    int entry;
    list.Get(time, &entry);
    return entry >= 1 && entry <= static_cast<int>(count) ? &styles[entry - 1] : nullptr;
}

/// The pixels less than `half` away from a centre, within the frame.
void SetSide(int centre, int half, int size, int& begin, int& end) {
    const std::int64_t low = static_cast<std::int64_t>(centre) - half + 1;
    const std::int64_t high = static_cast<std::int64_t>(centre) + half;
    begin = static_cast<int>(std::clamp<std::int64_t>(low, 0, size));
    end = static_cast<int>(std::clamp<std::int64_t>(high, begin, size));
}

/// A fraction of the frame as a pixel.
int PixelAt(int size, double fraction) {
    return Trunc(static_cast<double>(size) * fraction);
}

} // namespace

// One frame.

void Flare2::Process() {
    InDepth(Background, Output, [&](const auto& background, auto& output) { Shine(background, output); });
    Finish();
}

template <class Sample>
void Flare2::Shine(const PictureK7<Sample>& background, PictureK7<Sample>& output) {
    Start(output);
    TakeValues();
    if (!MakeTables()) return;
    const LightMap<Sample> map = MakeLightMap<Sample>();
    if (!map.image) return;
    FillLightMap(*map.image);
    if (!CollectLights(*map.image, PixelAt(Width, Reflect.Value.x), PixelAt(Height, Reflect.Value.y))) return;
    ThrowLights(*this, background, output);
    if (!ProcessAlpha) output.CopyAlpha(&background);
}

void Flare2::TakeValues() {
    const auto narrow = [](double value) { return static_cast<float>(value); };
    WorkAperture = narrow(static_cast<double>(WidthScale) * Aperture.Value);
    WorkGlowRadius = narrow(GlowRadius.Value / static_cast<double>(WidthScale));
    WorkStreakRot = narrow(StreakRot.Value);
    WorkStreaks = Streaks.Value;
    WorkFringes = HaloFringes.Value;
    WorkStreakLength = static_cast<float>(StreakLength.Value) / WidthScale;
    WorkHaloGain = narrow(HaloStr.Value);
    WorkStreakGain = narrow(StreakStr.Value);
    WorkMono = narrow(MonoStreak.Value / 100.0);
    WorkGlowGain = narrow(GlowStrength.Value);
    WorkFringeGain = narrow(HaloFrnStr.Value / 100.0);
    WorkGhosts = Reflections.Value;
    WorkReflectivity = narrow(Reflectivity.Value / 100.0);
    WorkReflScale = narrow(ReflScale.Value);
    WorkContrast = narrow(Contrast.Value / 100.0);
    LightBox = LightPixels();
}

/// A box around the source of Boost columns and rows; where Boost is even, one column more and one row less.
PixelBox Flare2::LightPixels() const {
    const bool odd = Boost.Value % 2 != 0;
    const int halfX = Trunc(Boost.Value * 0.5 + (odd ? 0.5 : 1.0));
    const int halfY = odd ? halfX : halfX - 1;
    PixelBox box;
    SetSide(PixelAt(Width, Source.Value.x), halfX, Width, box.Left, box.Right);
    SetSide(PixelAt(Height, Source.Value.y), halfY, Height, box.Bottom, box.Top);
    return box;
}

template <class Sample>
void Flare2::FillLightMap(const PictureK7<Sample>& map) {
    RunRows(*this, Height, [&](int first, int last) {
        for (int y = first; y <= last; ++y) std::memset(map.Rows[y], 0, map.RowBytes());
    });
    const PictureK7<Sample>& lights = *LightInput.Of<Sample>();
    const bool own = ColourFrom.Value == 1;
    for (int y = LightBox.Bottom; y < LightBox.Top; ++y)
        for (int x = LightBox.Left; x < LightBox.Right; ++x) {
            const std::size_t at = static_cast<std::size_t>(x) * K7Image::Channels;
            Sample* to = map.Rows[y] + at;
            for (std::size_t c = 0; c < 3; ++c)
                to[c] = own ? static_cast<Sample>(LightColour.Value[c])
                            : std::max(lights.Rows[y][at + c], Sample{0});
        }
}

// Controls that follow others.

void Flare2::RefreshControls() {
    ReflectionsChanged();
    ColourFromChanged();
}

void Flare2::HaloChanged(double time) {
    const HaloStyle* style = Chosen(Halo, kHaloStyles, time);
    if (!style) return;
    Aperture.Set(time, style->aperture);
    HaloFringes.Set(time, style->fringes);
    HaloStr.Set(time, style->strength);
    HaloFrnStr.Set(time, style->fringeStrength);
}

void Flare2::StreakChanged(double time) {
    const StreakStyle* style = Chosen(Streak, kStreakStyles, time);
    if (!style) return;
    Streaks.Set(time, style->streaks);
    MonoStreak.Set(time, style->mono);
    StreakLength.Set(time, style->length);
    StreakRot.Set(time, style->rotation);
    StreakStr.Set(time, style->strength);
}

void Flare2::GlowChanged(double time) {
    const GlowStyle* style = Chosen(Glow, kGlowStyles, time);
    if (!style) return;
    GlowRadius.Set(time, style->radius);
    GlowStrength.Set(time, style->strength);
}

void Flare2::ReflectionChanged(double time) {
    const ReflectionStyle* style = Chosen(Reflection, kReflectionStyles, time);
    if (!style) return;
    Reflections.Set(time, style->reflections);
    if (style->reflectivity) Reflectivity.Set(time, *style->reflectivity);
    if (style->scale) ReflScale.Set(time, *style->scale);
}

void Flare2::ReflectionsChanged() {
    int ghosts;
    Reflections.Get(kTimeNow, &ghosts);
    for (ControlK7* control : {static_cast<ControlK7*>(&Reflectivity), static_cast<ControlK7*>(&ReflScale),
                               static_cast<ControlK7*>(&Reflect)})
        control->SetHidden(ghosts == 0);
}

void Flare2::ColourFromChanged() {
    int entry;
    ColourFrom.Get(kTimeNow, &entry);
    LightColour.SetHidden(entry != 1);
}

// Widgets.

void Flare2::Draw() {
    ReflectCross.Visible = Reflections.Value != 0;
    SourceCross.DrawAt(Source.Shown);
    if (!ReflectCross.Visible) return;
    ReflectCross.DrawAt(Reflect.Shown);

    // The line on which the ghosts lie, dashed from the point of reflection to the last of them.
    const auto pixel = [](int size, double fraction) { return static_cast<float>(PixelAt(size, fraction)); };
    const float sx = pixel(ImageWidth, Source.Shown.x);
    const float sy = pixel(ImageHeight, Source.Shown.y);
    const float rx = pixel(ImageWidth, Reflect.Shown.x);
    const float ry = pixel(ImageHeight, Reflect.Shown.y);
    const auto ex = static_cast<float>(Trunc((rx - sx) * ReflScale.Shown + rx));
    const auto ey = static_cast<float>(Trunc((ry - sy) * ReflScale.Shown + ry));
    OverlayLine(*this, sx, sy, rx, ry);
    OverlayDashedLine(*this, rx, ry, ex, ey, 3);
    OverlayArrow(*this, ex, ey, rx, ry);
}

void Flare2::Event(int event, float x, float y) {
    SourceCross.Event(event, x, y);
    if (ReflectCross.Visible) ReflectCross.Event(event, x, y);
}

} // namespace k7
