#include "filters/CrashZoom.h"

#include "filters/LineSum.h"
#include "library/K7Image.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace k7 {

namespace {

constexpr double kNear = 0.0001; // pixels
constexpr int kSampleChoices = 4;

} // namespace

void CrashZoom::Process() {
    if (IsAborted()) return;
    InDepth(Input, Output, [&](const auto& in, auto& out) { Zoom(in, out); });
}

template <class Sample>
void CrashZoom::Zoom(const PictureK7<Sample>& in, PictureK7<Sample>& out) {
    Width = out.Width;
    Height = out.Height;
    AspectX = static_cast<float>(out.AspectX);
    AspectY = static_cast<float>(out.AspectY);
    ClearPixels = static_cast<float>(Width * DimX.Value * 0.5);
    CentreX = static_cast<float>(Width * Cntr.Value.x);
    CentreY = static_cast<float>(Height * Cntr.Value.y);
    SpeedFactor = static_cast<float>(Spee.Value / 100.0);
    SampleIndex = std::clamp(Samp.Value, 1, kSampleChoices);
    RunRows(*this, Height, [&](int first, int last) {
        for (int y = first; y <= last && !IsAborted(); ++y) {
            Sample* pixel = out.Rows[y];
            for (int x = 0; x < Width; ++x, pixel += K7Image::Channels) BlurPixel(in, x, y, pixel);
        }
    });
    if (!ProcessAlpha) out.CopyAlpha(&in);
}

template <class Sample>
void CrashZoom::BlurPixel(const PictureK7<Sample>& in, int x, int y, Sample* pixel) const {
    // Find the way from this pixel in cells of the fine grid.
    const int shift = SampleIndex - 1;
    const float grid = static_cast<float>(1 << shift);
    const float dx = (static_cast<float>(x) - CentreX) / AspectY;
    const float dy = (static_cast<float>(y) - CentreY) / AspectX;
    const float distance = std::sqrt(dy * dy + dx * dx);
    float beyond = distance - ClearPixels;
    if (beyond < kNear) beyond = 0.0f;
    const float length = -(beyond * SpeedFactor);
    std::int64_t wayX = 0;
    std::int64_t wayY = 0;
    if (distance > kNear) {
        wayX = Trunc(std::ceil(dx / distance * length * grid) / AspectX);
        wayY = Trunc(std::ceil(dy / distance * length * grid) / AspectY);
    }

    if (wayX == 0 && wayY == 0) {
        std::copy_n(in.Rows[y] + x * K7Image::Channels, K7Image::Channels, pixel);
        return;
    }

    // The mean along it.
    LineSumOf<Sample> sums[K7Image::Channels];
    SumAlongLine(in, x, y, wayX, wayY, shift, sums);
    const auto samples = static_cast<LineSumOf<Sample>>(std::max(std::abs(wayX), std::abs(wayY)) + 1);
    for (int c = 0; c < K7Image::Channels; ++c) pixel[c] = static_cast<Sample>(sums[c] / samples);
}

void CrashZoom::Draw() {
    CentreOverlay.DrawAt(Cntr.Shown);
    if (ClearOverlay.Visible) {
        ClearOverlay.X = static_cast<float>(Cntr.Shown.x);
        ClearOverlay.Y = static_cast<float>(Cntr.Shown.y);
        ClearOverlay.Width = static_cast<float>(DimX.Shown);
        ClearOverlay.Height = static_cast<float>(DimX.Shown * (OverlayK7::AspectX / OverlayK7::AspectY));
        ClearOverlay.Rotation = 0.0f;
        ClearOverlay.Circular = true;
        ClearOverlay.Dashed = false;
        ClearOverlay.Draw();
    }
}

void CrashZoom::Event(int event, float x, float y) {
    CentreOverlay.Event(event, x, y);
    ClearOverlay.Event(event, x, y);
}

} // namespace k7
