#include "filters/DBlur.h"

#include "baselib/Buffer.h"
#include "baselib/Vector.h"
#include "filters/BlurKernel.h"
#include "library/K7Image.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace k7 {

namespace {

constexpr double kRadians = 0.017453292522222223; // 3.141592654 / 180
constexpr double kDegrees = 57.29577950560105;    // its reverse

constexpr int kBlock = 8;     // pixels that are summed at once
constexpr int kBandRows = 16; // rows that find the streak's pixels in the cache

typedef float Floats __attribute__((vector_size(32)));
constexpr int kFloats = 8;

K7_ALWAYS_INLINE void LoadFloats(const u16* words, Floats& floats) {
    typedef u16 Words __attribute__((vector_size(16)));
    typedef int Whole __attribute__((vector_size(32)));
    Words loaded;
    std::memcpy(&loaded, words, sizeof loaded);
    floats = __builtin_convertvector(__builtin_convertvector(loaded, Whole), Floats);
}

K7_ALWAYS_INLINE void LoadFloats(const float* from, Floats& floats) {
    std::memcpy(&floats, from, sizeof floats);
}

/// Copies kBlock pixels of a row from column `x` on, where columns beyond the edges repeat them.
template <class Sample>
void CopyClamped(const Sample* row, int width, int x, Sample* pixels) {
    for (int i = 0; i < kBlock; ++i)
        std::memcpy(pixels + i * K7Image::Channels, row + std::clamp(x + i, 0, width - 1) * K7Image::Channels,
                    K7Image::Channels * sizeof(Sample));
}

/// Blurs a few rows, a block of columns after the other. The sums of a block stay in registers, and each of
/// them adds its products in the order of the kernel.
template <class Sample>
K7_WIDE_VECTORS void BlurBand(const PictureK7<Sample>& in, const PictureK7<Sample>& out,
                              const BlurKernel* kernel, int count, int first, int last) {
    constexpr int blockSamples = kBlock * K7Image::Channels;
    constexpr int vectors = blockSamples / kFloats;

    const BlurKernel* const end = kernel + count;
    Sample clamped[blockSamples];
    float sums[blockSamples];

    for (int x = 0; x < in.Width; x += kBlock)
        for (int y = first; y <= last; ++y) {
            Floats sum[vectors] = {};
            for (const BlurKernel* entry = kernel; entry != end; ++entry) {
                const Sample* row = in.Rows[std::clamp(y + entry->Dy, 0, in.Height - 1)];
                const int column = x + entry->Dx;
                const Sample* pixels = clamped;
                if (column >= 0 && column <= in.Width - kBlock)
                    pixels = row + column * K7Image::Channels;
                else
                    CopyClamped(row, in.Width, column, clamped);
                for (int i = 0; i < vectors; ++i) {
                    Floats samples;
                    LoadFloats(pixels + i * kFloats, samples);
                    sum[i] += samples * entry->Weight;
                }
            }
            std::memcpy(sums, sum, sizeof sums);
            Sample* to = out.Rows[y] + x * K7Image::Channels;
            const int samples = std::min(kBlock, in.Width - x) * K7Image::Channels;
            for (int i = 0; i < samples; ++i)
                to[i] = SampleTraits<Sample>::Rounded(static_cast<double>(sums[i]));
        }
}

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

    const Buffer<BlurKernel> kernel(static_cast<std::size_t>(capacity), "DBlur", __LINE__);
    if (!kernel) {
        ReportMessage("Memory Allocation Error for kern\n");
        return;
    }
    const float fraction = static_cast<float>(Leng.Value / 100.0 * in.Width) / static_cast<float>(capacity);
    int count = 0;
    MakeBlurKernel(fraction, PixelAngle(out.AspectX / out.AspectY), capacity, Cent.Value, &count,
                   kernel.data());
    RunRows(*this, in.Height, [&](int first, int last) {
        for (int y = first; y <= last && !IsAborted(); y += kBandRows)
            BlurBand(in, out, kernel.data(), count, y, std::min(y + kBandRows - 1, last));
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
