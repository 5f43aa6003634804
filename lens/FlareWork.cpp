#include "lens/FlareWork.h"

#include "frame/PluginK7.h"
#include "library/Chunks.h"
#include "library/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace k7 {

namespace {

constexpr int kContrastEntries = 160000;

/// The numbers in which the flares differ beyond their width; frames depend on the last digits.
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

/// Adds the contrast curve's answer to a plane to one word of the background.
u16 AddWord(u16 word, int flare) {
    return static_cast<u16>(std::min(word + flare, kFullScale));
}

} // namespace

template <class Real>
void FlareWork<Real>::Start(const K7Image& lightInput, const K7Image& output) {
    randomState_.Seed(-1);
    randomState_();
    Width = lightInput.Width;
    Height = lightInput.Height;
    WidthScale = output.WidthScale;
    const auto aspect =
        static_cast<float>(static_cast<Real>(output.AspectY) / static_cast<Real>(output.AspectX));
    Aspect = aspect > 0.0f && std::isfinite(aspect) ? aspect : 1.0f;
}

template <class Real>
bool FlareWork<Real>::MakeContrastTable() {
    if (contrastTable_ && WorkContrast == lastContrast_) return true;
    if (!contrastTable_) contrastTable_ = Buffer<u16>(kContrastEntries, kFlareSource<Real>, __LINE__);
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
    const bool made =
        MakeContrastTable() &&
        tables_.MakeHalo(*this, {WorkAperture, WorkHaloGain, WorkFringes, WorkFringeGain, Aspect},
                         randomState_) &&
        tables_.MakeStreaks(*this, {angles, StreakEntries(Setup()), WorkStreakGain, WorkMono}) &&
        tables_.MakeGlow({WorkGlowRadius, WorkGlowGain, Aspect}, randomState_);
    if (made) FillStreakRandom();
    return made;
}

template <class Real>
bool FlareWork<Real>::MakeLightMap() {
    const std::size_t pixels = static_cast<std::size_t>(Width) * static_cast<std::size_t>(Height);
    lightWords_ = ImageBuffer<u16>(pixels * K7Image::Channels, kFlareSource<Real>, __LINE__);
    if (lightWords_) LightMapImage = K7Image::MakeOver(lightWords_.data(), Width, Height);
    return LightMapImage != nullptr;
}

template <class Real>
void FlareWork<Real>::AddGhost(const Light& light, int x, int y, Real gain) {
    u16* pixel = LightMapImage->Rows[y] + static_cast<std::size_t>(x) * K7Image::Channels;
    const u16 words[3] = {light.R, light.G, light.B};
    for (int c = 0; c < 3; ++c)
        pixel[c] = ClampWord(Trunc(static_cast<Real>(words[c]) * gain + static_cast<Real>(pixel[c])));
    LightBox.Left = std::min(LightBox.Left, x);
    LightBox.Right = std::max(LightBox.Right, x + 1);
    LightBox.Bottom = std::min(LightBox.Bottom, y);
    LightBox.Top = std::max(LightBox.Top, y + 1);
}

template <class Real>
void FlareWork<Real>::AddGhosts(const Light& light, int centreX, int centreY) {
    const auto fromCentre = [](int at, int centre, int size) {
        return static_cast<Real>(static_cast<float>(static_cast<std::int64_t>(at) - centre) /
                                 static_cast<float>(size - 1));
    };
    const Real fx = fromCentre(light.X, centreX, Width);
    const Real fy = fromCentre(light.Y, centreY, Height);
    const Real brightness = std::min<Real>(WorkReflectivity, 1);
    const int brightest = std::max({light.R, light.G, light.B});
    for (int i = 1; i <= WorkGhosts; ++i) {
        const Real gain = brightness / static_cast<Real>(i + 1);
        if (static_cast<Real>(brightest) * gain < Real(0.5)) return; // truncation leaves nothing from here on
        const Real s =
            -static_cast<Real>(static_cast<float>(i) / static_cast<float>(WorkGhosts)) * WorkReflScale;
        const int x = Trunc(s * fx * static_cast<Real>(Width) + static_cast<Real>(centreX));
        const int y = Trunc(s * fy * static_cast<Real>(Height) + static_cast<Real>(centreY));
        if (x >= 0 && x < Width && y >= 0 && y < Height) AddGhost(light, x, y, gain);
    }
}

template <class Real>
bool FlareWork<Real>::CollectLights(int centreX, int centreY) {
    if (!lights_.Collect(*LightMapImage, LightBox, kFlareSource<Real>)) return false;
    const bool ghosts = WorkGhosts >= 1 && WorkReflectivity >= static_cast<Real>(0.00001);
    if (!ghosts || Width < 2 || Height < 2) return true;
    for (const Light& light : lights_) {
        if (AbortRequested()) return false;
        AddGhosts(light, centreX, centreY);
    }
    return lights_.Collect(*LightMapImage, LightBox, kFlareSource<Real>);
}

template <class Real>
bool FlareWork<Real>::PrepareLights() {
    // Where no light comes the frame is the background already, unless the curve lifts darkness itself.
    return Accumulation.Prepare(lights_, tables_, Setup(), streakRandom_, contrastTable_[0] != 0);
}

template <class Real>
void FlareWork<Real>::CombineRows(const K7Image& background, const K7Image& output, int first,
                                  int last) const {
    const auto curve = [table = contrastTable_.data()](Real level) -> int {
        constexpr Real kLast = kContrastEntries - 1;
        const Real entry = level + Real(0.5);
        return table[entry > 0 ? static_cast<int>(std::min(entry, kLast)) : 0];
    };
    const LightPlanes<Real> planes = Accumulation.Planes();
    const PixelBox& box = planes.Box;
    for (int y = box.Bottom + first; y <= box.Bottom + last; ++y) {
        if (AbortRequested()) return;
        const std::size_t left = static_cast<std::size_t>(box.Left) * K7Image::Channels;
        const u16* from = background.Rows[y] + left;
        u16* to = output.Rows[y] + left;
        const LightSum<Real>* const end = &planes.At(box.Left, y) + box.Width();
        for (const LightSum<Real>* cell = end - box.Width(); cell != end;
             ++cell, from += K7Image::Channels, to += K7Image::Channels) {
            const int r = curve(cell->R);
            const int g = curve(cell->G);
            const int b = curve(cell->B);
            to[0] = AddWord(from[0], r);
            to[1] = AddWord(from[1], g);
            to[2] = AddWord(from[2], b);
            to[3] = AddWord(from[3], Brightness16(r, g, b) >> 4);
        }
    }
}

template <class Real>
void FlareWork<Real>::Finish() {
    Accumulation.Free();
    LightMapImage = nullptr;
    lightWords_ = {};
    lights_ = {};
}

template class FlareWork<double>;
template class FlareWork<float>;

} // namespace k7
