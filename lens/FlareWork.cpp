#include "lens/FlareWork.h"

#include "frame/PluginK7.h"
#include "library/Chunks.h"
#include "library/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

namespace k7 {

namespace {

constexpr int kContrastEntries = 160000;

/// Constants in which the flares differ beyond their number type; frames depend on the last digits.
template <class Real>
struct Digits;
template <>
struct Digits<double> {
    static constexpr double kHalfCircle = kFlarePi;
    static constexpr double kContrastStep = 6.250039062744142e-6; // 1 / 159999
};
template <>
struct Digits<float> {
    static constexpr double kHalfCircle = std::numbers::pi;
    static constexpr float kContrastStep = 6.250039e-6f;
};

/// How a light's level on the planes becomes what is added to the background: for words by the table, for
/// floats by the curve that the table is made from, which has no upper end.
template <class Sample, class Real>
class ContrastCurve;

template <class Real>
class ContrastCurve<u16, Real> {
public:
    ContrastCurve(const u16* table, Real) : table_(table) {}
    int operator()(Real level) const {
        constexpr Real kLast = kContrastEntries - 1;
        const Real entry = level + Real(0.5);
        return table_[entry > 0 ? static_cast<int>(std::min(entry, kLast)) : 0];
    }

private:
    const u16* table_;
};

template <class Real>
class ContrastCurve<float, Real> {
public:
    ContrastCurve(const u16* table, Real contrast)
        : dark_(table[0])
        , exponent_(static_cast<float>(1.0 / contrast)) {}
    float operator()(Real level) const {
        if (!(level > 0)) return dark_;
        const auto part = static_cast<float>(level * Digits<Real>::kContrastStep);
        const float light = std::pow(part, exponent_) * static_cast<float>(kFullScale);
        return light < kMost ? light : kMost;
    }

private:
    static constexpr float kMost = 65504.0f * kFullScale; // the largest half
    float dark_;
    float exponent_;
};

/// Alpha grows by the brightness of the flare, which is no more than white, and stops at full scale unless it
/// was above.
u16 GrownAlpha(u16 alpha, int red, int green, int blue) {
    return static_cast<u16>(std::min(alpha + (Brightness16(red, green, blue) >> 4), kFullScale));
}
float GrownAlpha(float alpha, float red, float green, float blue) {
    constexpr float white = kFullScale;
    const float grown = Brightness16(std::min(red, white), std::min(green, white), std::min(blue, white));
    return std::max(alpha, std::min(alpha + grown / 16.0f, white));
}

u16 Lit(u16 word, int flare) {
    return static_cast<u16>(std::min(word + flare, kFullScale));
}
float Lit(float sample, float flare) {
    return sample + flare;
}

/// The level from which on the curve stays the same, whatever is added.
template <class Real, class Sample>
constexpr Real kWhite = SampleTraits<Sample>::kWords ? Real(kContrastEntries)
                                                     : std::numeric_limits<Real>::infinity();

/// A ghost dimmer than this is invisible: in words truncation removes it, and in floats it is far below what
/// any file format keeps.
template <class Real, class Sample>
constexpr Real kDimmest = SampleTraits<Sample>::kWords ? Real(0.5) : Real(1.0 / 256);

} // namespace

template <class Real>
template <class Sample>
void FlareWork<Real>::Start(const PictureK7<Sample>& output) {
    randomState_.Seed(-1);
    randomState_();
    Width = output.Width;
    Height = output.Height;
    WidthScale = output.WidthScale;
    const auto aspect =
        static_cast<float>(static_cast<Real>(output.AspectY) / static_cast<Real>(output.AspectX));
    Aspect = aspect > 0.0f && std::isfinite(aspect) ? aspect : 1.0f;
}

template <class Real>
bool FlareWork<Real>::MakeContrastTable() {
    if (contrastTable_ && WorkContrast == lastContrast_) return true;
    if (!contrastTable_) contrastTable_ = Buffer<u16>(kContrastEntries, kFlareSource<Real>);
    if (!contrastTable_) return false;
    const auto exponent = static_cast<float>(1.0 / WorkContrast);
    for (int i = 0; i < kContrastEntries; ++i) {
        const auto part = static_cast<float>(static_cast<Real>(i) * Digits<Real>::kContrastStep);
        const Real level = static_cast<Real>(std::pow(part, exponent)) * Real(32767.0) + Real(0.5);
        contrastTable_[static_cast<std::size_t>(i)] = ClampWord(Trunc(level));
    }
    lastContrast_ = WorkContrast;
    return true;
}

template <class Real>
void FlareWork<Real>::FillStreakRandom() {
    if (!streakRandomEmpty_) return;
    for (StreakPair<Real>& chance : streakRandom_) {
        chance.Angle = static_cast<Real>(randomState_() * Digits<Real>::kHalfCircle);
        chance.Length = randomState_();
    }
    streakRandomEmpty_ = false;
}

template <class Real>
StreakSetup<Real> FlareWork<Real>::Setup() const {
    return {WorkStreaks, WorkStreakLength, WorkStreakRot, Aspect, Width, Height};
}

template <class Real>
bool FlareWork<Real>::MakeTables() {
    const int angles = Trunc(WorkStreakLength * Real(2));
    const PixelReach seen = {Width - 1, Height - 1};
    const bool made =
        MakeContrastTable() &&
        tables_.MakeHalo(*this, {WorkAperture, WorkHaloGain, WorkFringes, WorkFringeGain, Aspect, seen},
                         randomState_) &&
        tables_.MakeStreaks(*this, {angles, StreakEntries(Setup()), WorkStreakGain, WorkMono}) &&
        tables_.MakeGlow({WorkGlowRadius, WorkGlowGain, Aspect, seen}, randomState_);
    if (made) FillStreakRandom();
    return made;
}

template <class Real>
template <class Sample>
typename FlareWork<Real>::template LightMap<Sample> FlareWork<Real>::MakeLightMap() const {
    const std::size_t pixels = static_cast<std::size_t>(Width) * static_cast<std::size_t>(Height);
    LightMap<Sample> map;
    map.store = ImageBuffer<Sample>(pixels * K7Image::Channels, kFlareSource<Real>);
    if (map.store) map.image = PictureK7<Sample>::MakeOver(map.store.data(), Width, Height);
    return map;
}

template <class Real>
template <class Sample>
void FlareWork<Real>::AddGhost(const PictureK7<Sample>& map, const Light& light, int x, int y, Real gain) {
    Sample* pixel = map.Rows[y] + static_cast<std::size_t>(x) * K7Image::Channels;
    const float samples[3] = {light.R, light.G, light.B};
    for (int c = 0; c < 3; ++c)
        pixel[c] = SampleTraits<Sample>::Truncated(static_cast<Real>(samples[c]) * gain +
                                                   static_cast<Real>(pixel[c]));
    LightBox.Left = std::min(LightBox.Left, x);
    LightBox.Right = std::max(LightBox.Right, x + 1);
    LightBox.Bottom = std::min(LightBox.Bottom, y);
    LightBox.Top = std::max(LightBox.Top, y + 1);
}

template <class Real>
template <class Sample>
void FlareWork<Real>::AddGhosts(const PictureK7<Sample>& map, const Light& light, int centreX, int centreY) {
    const auto fromCentre = [](int at, int centre, int size) {
        return static_cast<Real>(static_cast<float>(static_cast<std::int64_t>(at) - centre) /
                                 static_cast<float>(size - 1));
    };
    const Real fx = fromCentre(light.X, centreX, Width);
    const Real fy = fromCentre(light.Y, centreY, Height);
    const Real brightness = std::min<Real>(WorkReflectivity, 1);
    const Real brightest = std::max({light.R, light.G, light.B});
    for (int i = 1; i <= WorkGhosts; ++i) {
        const Real gain = brightness / static_cast<Real>(i + 1);
        if (brightest * gain < kDimmest<Real, Sample>) return; // and so are all that follow
        const Real s =
            -static_cast<Real>(static_cast<float>(i) / static_cast<float>(WorkGhosts)) * WorkReflScale;
        const int x = Trunc(s * fx * static_cast<Real>(Width) + static_cast<Real>(centreX));
        const int y = Trunc(s * fy * static_cast<Real>(Height) + static_cast<Real>(centreY));
        if (x >= 0 && x < Width && y >= 0 && y < Height) AddGhost(map, light, x, y, gain);
    }
}

template <class Real>
template <class Sample>
bool FlareWork<Real>::CollectLights(const PictureK7<Sample>& map, int centreX, int centreY) {
    if (!lights_.Collect(map, LightBox, kFlareSource<Real>)) return false;
    const bool ghosts = WorkGhosts >= 1 && WorkReflectivity >= static_cast<Real>(0.00001);
    if (!ghosts || Width < 2 || Height < 2) return true;
    for (const Light& light : lights_) {
        if (AbortRequested()) return false;
        AddGhosts(map, light, centreX, centreY);
    }
    return lights_.Collect(map, LightBox, kFlareSource<Real>);
}

template <class Real>
template <class Sample>
void FlareWork<Real>::ThrowLights(PluginK7& core, const PictureK7<Sample>& background,
                                  const PictureK7<Sample>& output) {
    // Where no light falls the frame is the background already, unless the curve lifts darkness itself.
    const bool whole = contrastTable_[0] != 0;
    if (!accumulation_.Prepare(lights_, tables_, Setup(), streakRandom_, whole, kWhite<Real, Sample>)) return;
    const int rows = accumulation_.Box().Height();
    RunRows(core, rows, [&](int first, int last) { accumulation_.AccumulateLights(first, last); });
    RunRows(core, rows, [&](int first, int last) { CombineRows(background, output, first, last); });
}

template <class Real>
template <class Sample>
void FlareWork<Real>::CombineRows(const PictureK7<Sample>& background, const PictureK7<Sample>& output,
                                  int first, int last) const {
    const ContrastCurve<Sample, Real> curve(contrastTable_.data(), lastContrast_);
    const LightPlanes<Real> planes = accumulation_.Planes();
    const PixelBox& box = planes.Box;
    for (int y = box.Bottom + first; y <= box.Bottom + last; ++y) {
        if (AbortRequested()) return;
        const std::size_t left = static_cast<std::size_t>(box.Left) * K7Image::Channels;
        const Sample* from = background.Rows[y] + left;
        Sample* to = output.Rows[y] + left;
        const LightSum<Real>* const end = &planes.At(box.Left, y) + box.Width();
        for (const LightSum<Real>* cell = end - box.Width(); cell != end;
             ++cell, from += K7Image::Channels, to += K7Image::Channels) {
            const auto r = curve(cell->R);
            const auto g = curve(cell->G);
            const auto b = curve(cell->B);
            to[0] = Lit(from[0], r);
            to[1] = Lit(from[1], g);
            to[2] = Lit(from[2], b);
            to[3] = GrownAlpha(from[3], r, g, b);
        }
    }
}

template <class Real>
void FlareWork<Real>::Finish() {
    accumulation_.Free();
    lights_ = {};
}

#define K7_FLARE_DEPTH(Real, Sample)                                                                         \
    template void FlareWork<Real>::Start(const PictureK7<Sample>&);                                          \
    template FlareWork<Real>::LightMap<Sample> FlareWork<Real>::MakeLightMap() const;                        \
    template bool FlareWork<Real>::CollectLights(const PictureK7<Sample>&, int, int);                        \
    template void FlareWork<Real>::ThrowLights(PluginK7&, const PictureK7<Sample>&, const PictureK7<Sample>&);
#define K7_FLARE(Real)                                                                                       \
    template class FlareWork<Real>;                                                                          \
    K7_FLARE_DEPTH(Real, u16)                                                                                \
    K7_FLARE_DEPTH(Real, float)
K7_FLARE(double)
K7_FLARE(float)
#undef K7_FLARE
#undef K7_FLARE_DEPTH

} // namespace k7
