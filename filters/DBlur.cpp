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

/// Copies kBlock pixels of a row from column `x` on, where columns beyond the edges repeat them.
void CopyHeld(const u16* row, int width, int x, u16* pixels) {
    for (int i = 0; i < kBlock; ++i)
        std::memcpy(pixels + i * K7Image::Channels, row + std::clamp(x + i, 0, width - 1) * K7Image::Channels,
                    K7Image::Channels * sizeof(u16));
}

/// Blurs a few rows, a block of columns after the other. The sums of a block stay in registers, and each of
/// them adds its products in the order of the kernel.
K7_WIDE_VECTORS
void BlurBand(const K7Image& in, const K7Image& out, const BlurKernel* kernel, int count, int first,
              int last) {
    typedef u16 Words __attribute__((vector_size(16)));
    typedef int Whole __attribute__((vector_size(32)));
    typedef float Floats __attribute__((vector_size(32)));
    constexpr int wordsAtOnce = 8;
    constexpr int blockWords = kBlock * K7Image::Channels;
    constexpr int vectors = blockWords / wordsAtOnce;

    const BlurKernel* const end = kernel + count;
    u16 held[blockWords];
    float sums[blockWords];

    for (int x = 0; x < in.Width; x += kBlock)
        for (int y = first; y <= last; ++y) {
            Floats sum[vectors] = {};
            for (const BlurKernel* entry = kernel; entry != end; ++entry) {
                const u16* row = in.Rows[std::clamp(y + entry->Dy, 0, in.Height - 1)];
                const int column = x + entry->Dx;
                const u16* pixels = held;
                if (column >= 0 && column <= in.Width - kBlock)
                    pixels = row + column * K7Image::Channels;
                else
                    CopyHeld(row, in.Width, column, held);
                for (int i = 0; i < vectors; ++i) {
                    Words words;
                    std::memcpy(&words, pixels + i * wordsAtOnce, sizeof words);
                    const Whole whole = __builtin_convertvector(words, Whole);
                    sum[i] += __builtin_convertvector(whole, Floats) * entry->Weight;
                }
            }
            std::memcpy(sums, sum, sizeof sums);
            u16* to = out.Rows[y] + x * K7Image::Channels;
            const int words = std::min(kBlock, in.Width - x) * K7Image::Channels;
            for (int i = 0; i < words; ++i) to[i] = ClampWord(Trunc(static_cast<double>(sums[i]) + 0.5));
        }
}

} // namespace

void DBlur::Process() {
    if (IsAborted()) return;
    const K7Image& in = *Input.Image;
    const int capacity = std::max(in.Width, in.Height) - 1;
    if (capacity == 0) return; // a single pixel has nothing to be blurred with

    const Buffer<BlurKernel> kernel(static_cast<std::size_t>(capacity), "DBlur", __LINE__);
    if (!kernel) {
        ReportMessage("Memory Allocation Error for kern\n");
        return;
    }
    const float fraction = static_cast<float>(Leng.Value / 100.0 * in.Width) / static_cast<float>(capacity);
    int count = 0;
    MakeBlurKernel(fraction, PixelAngle(), capacity, Cent.Value, &count, kernel.data());
    RunRows(*this, in.Height, [&](int first, int last) {
        for (int y = first; y <= last && !IsAborted(); y += kBandRows)
            BlurBand(in, *Output.Image, kernel.data(), count, y, std::min(y + kBandRows - 1, last));
    });
    if (!ProcessAlpha) Output.Image->CopyAlpha(Input.Image);
}

/// The angle as it lies on the frame's pixels, which need not be square.
float DBlur::PixelAngle() const {
    const float angle = static_cast<float>(Angl.Value);
    const float aspect = static_cast<float>(Output.Image->AspectX / Output.Image->AspectY);
    const float a =
        static_cast<float>(std::atan(std::tan(angle * kRadians) * static_cast<double>(aspect)) * kDegrees);
    if (angle >= 0.0f && angle < 90.0f) return a;
    return a + (angle >= 90.0f && angle < 270.0f ? 180.0f : 360.0f);
}

void DBlur::Draw() {
    if (!AngleOverlay.Visible) return;
    AngleOverlay.X = 0.5f;
    AngleOverlay.Y = 0.5f;
    AngleOverlay.Length = 0.2f;
    AngleOverlay.Angle = static_cast<float>(Angl.Value);
    AngleOverlay.Draw();
}

void DBlur::Event(int event, float x, float y) {
    AngleOverlay.Event(event, x, y);
}

} // namespace k7
