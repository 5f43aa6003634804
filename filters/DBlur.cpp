#include "filters/DBlur.h"

#include "baselib/Buffer.h"
#include "filters/BlurKernel.h"
#include "filters/StreakSums.h"
#include "library/K7Image.h"

#include <algorithm>
#include <cmath>

namespace k7 {

namespace {

constexpr const char* kNoMemoryMessage = "Memory Allocation Error for kern\n";

constexpr double kRadians = 0.017453292522222223; // 3.141592654 / 180
constexpr double kDegrees = 57.29577950560105;    // its reverse

} // namespace

void DBlur::Process() {
    if (IsAborted()) return;
    InDepth(Input, Output, [&](const auto& in, auto& out) {
        Blur(in, out);
        if (!ProcessAlpha) out.CopyAlpha(&in);
    });
}

template <class Sample>
void DBlur::Blur(const PictureK7<Sample>& in, const PictureK7<Sample>& out) {
    const int capacity = std::max(in.Width, in.Height) - 1;
    if (capacity == 0) return; // a single pixel has nothing to be blurred with

    const Buffer<BlurKernel> kernel(static_cast<std::size_t>(capacity), "DBlur");
    if (!kernel) return ReportMessage(kNoMemoryMessage);
    const float fraction = static_cast<float>(Leng.Value / 100.0 * in.Width) / static_cast<float>(capacity);
    int count = 0;
    MakeBlurKernel(fraction, PixelAngle(out.AspectX / out.AspectY), capacity, Cent.Value, &count,
                   kernel.data());
    const StreakSegments segments(kernel.data(), count);
    RunRows(*this, in.Height, [&](int first, int last) {
        if (first > last) return;
        StreakSums sums;
        if (!sums) return ReportMessage(kNoMemoryMessage);
        for (int y = first; y <= last; y += StreakSums::kRows)
            for (int x = 0; x < in.Width && !IsAborted(); x += StreakSums::kColumns)
                sums.BlurTile(in, out, segments, x, y, std::min(StreakSums::kColumns, in.Width - x),
                              std::min(StreakSums::kRows, last + 1 - y));
    });
}

/// The angle as it lies on pixels of this aspect.
float DBlur::PixelAngle(double aspect) const {
    const float angle = static_cast<float>(Angl.Value);
    const double across = static_cast<float>(aspect);
    const float a = static_cast<float>(std::atan(std::tan(angle * kRadians) * across) * kDegrees);
    if (angle >= 0.0f && angle < 90.0f) return a;
    return a + (angle >= 90.0f && angle < 270.0f ? 180.0f : 360.0f);
}

void DBlur::Draw() {
    if (!AngleOverlay.Visible) return;
    AngleOverlay.X = 0.5f;
    AngleOverlay.Y = 0.5f;
    AngleOverlay.Length = 0.2f;
    AngleOverlay.Angle = static_cast<float>(Angl.Shown);
    AngleOverlay.Draw();
}

void DBlur::Event(int event, float x, float y) {
    AngleOverlay.Event(event, x, y);
}

} // namespace k7
