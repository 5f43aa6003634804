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
    const K7Image& out = *Output.Image;
    Width = out.Width;
    Height = out.Height;
    AspectX = static_cast<float>(out.AspectX);
    AspectY = static_cast<float>(out.AspectY);
    ClearPixels = static_cast<float>(Width * DimX.Value * 0.5);
    CentreX = static_cast<float>(Width * Cntr.Value.x);
    CentreY = static_cast<float>(Height * Cntr.Value.y);
    SpeedFactor = static_cast<float>(Spee.Value / 100.0);
    SampleIndex = std::clamp(Samp.Value, 1, kSampleChoices);
    RunChunks(WorkerOf<&CrashZoom::BlurRows>, Height);
    if (!ProcessAlpha) Output.Image->CopyAlpha(Input.Image);
}

void CrashZoom::BlurRows(int first, int last) {
    for (int y = first; y <= last && !IsAborted(); ++y) {
        u16* pixel = Output.Image->Rows[y];
        for (int x = 0; x < Width; ++x, pixel += K7Image::Channels) BlurPixel(x, y, pixel);
    }
}

void CrashZoom::BlurPixel(int x, int y, u16* pixel) const {
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
        std::copy_n(Input.Image->Rows[y] + x * K7Image::Channels, K7Image::Channels, pixel);
        return;
    }

    // The mean along it.
    std::uint32_t sums[K7Image::Channels];
    SumAlongLine(*Input.Image, x, y, wayX, wayY, shift, sums);
    const auto samples = static_cast<std::uint32_t>(std::max(std::abs(wayX), std::abs(wayY)) + 1);
    for (int c = 0; c < K7Image::Channels; ++c) pixel[c] = static_cast<u16>(sums[c] / samples);
}

void CrashZoom::Draw() {
    CentreOverlay.DrawAt(Cntr.Value);
    if (ClearOverlay.Visible) {
        ClearOverlay.X = static_cast<float>(Cntr.Value.x);
        ClearOverlay.Y = static_cast<float>(Cntr.Value.y);
        ClearOverlay.Width = static_cast<float>(DimX.Value);
        ClearOverlay.Height = static_cast<float>(DimX.Value * (OverlayK7::AspectX / OverlayK7::AspectY));
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
