#include "filters/StreakSums.h"

#include "baselib/Vector.h"
#include "library/Chunks.h"

#include <algorithm>
#include <cstring>

namespace k7 {

namespace {

constexpr int kChannels = K7Image::Channels;
constexpr int kReach = 128; ///< columns and rows of a segment, at most

/// Pixels whose sums stay in registers while the kernel passes by.
constexpr int kBlock = 16;
typedef float Floats __attribute__((vector_size(64), aligned(4), may_alias));
constexpr int kFloats = 16;
constexpr int kVectors = kBlock * kChannels / kFloats;

constexpr std::size_t kSumRow = static_cast<std::size_t>(StreakSums::kColumns) * kChannels;

/// From row to row of what a tile sees: an odd number of cache lines, so that the pixels of a column do not
/// compete for the same places in the cache.
constexpr std::size_t kSeenRow = (StreakSums::kColumns + kReach) * kChannels + 16;
constexpr std::size_t kSeenRows = StreakSums::kRows + kReach;

template <class Sample>
K7_WIDE_VECTORS void Widen(const Sample* from, std::size_t count, float* to) {
    for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<float>(from[i]);
}

/// Turns columns `x` to x + columns - 1 of a row to floats; beyond the edges stand the pixels of the edge.
template <class Sample>
void WidenClamped(const Sample* row, int width, int x, int columns, float* to) {
    const int inside = std::clamp(x, 0, width - 1);
    const int end = std::clamp(x + columns, inside + 1, width);
    const auto repeat = [&](int from, int until, int column) {
        for (; from < until; ++from) Widen(row + column * kChannels, kChannels, to + (from - x) * kChannels);
    };
    repeat(x, std::min(0, x + columns), 0);
    if (end > std::max(x, 0) && inside < x + columns)
        Widen(row + inside * kChannels, static_cast<std::size_t>(end - inside) * kChannels,
              to + (inside - x) * kChannels);
    repeat(std::max(x, width), x + columns, width - 1);
}

/// Adds the steps of a segment to the sums of `blocks` blocks of a row; `seen` is what lies at the first
/// pixel. Lanes are samples side by side, and the inner loop writes no memory.
K7_WIDE_VECTORS void AddSteps(const float* seen, const StreakSegments::Step* first,
                              const StreakSegments::Step* end, int blocks, float* sums) {
    for (; blocks > 0; --blocks, seen += kBlock * kChannels, sums += kBlock * kChannels) {
        Floats sum[kVectors];
        std::memcpy(sum, sums, sizeof sum);
        for (const StreakSegments::Step* step = first; step != end; ++step) {
            const float* const at = seen + step->offset;
            for (int i = 0; i < kVectors; ++i)
                sum[i] += *reinterpret_cast<const Floats*>(at + i * kFloats) * step->weight;
        }
        std::memcpy(sums, sum, sizeof sum);
    }
}

template <class Sample>
K7_WIDE_VECTORS void StoreSums(const float* sums, std::size_t count, Sample* to) {
    for (std::size_t i = 0; i < count; ++i)
        to[i] = SampleTraits<Sample>::Rounded(static_cast<double>(sums[i]));
}

} // namespace

StreakSegments::StreakSegments(const BlurKernel* kernel, int count) {
    for (int i = 0; i < count; ++i) {
        const int x = kernel[i].Dx, y = kernel[i].Dy;
        steps_.push_back({y * static_cast<std::ptrdiff_t>(kSeenRow) + x * kChannels, kernel[i].Weight});
        if (!segments_.empty()) {
            Segment& last = segments_.back();
            const int left = std::min(last.left, x), right = std::max(last.right, x);
            const int bottom = std::min(last.bottom, y), top = std::max(last.top, y);
            if (right - left < kReach && top - bottom < kReach) {
                last = {last.first, i + 1, left, right, bottom, top};
                continue;
            }
        }
        segments_.push_back({i, i + 1, x, x, y, y});
    }
}

StreakSums::StreakSums() : sums_(kSumRow * kRows, "DBlur"), seen_(kSeenRow * kSeenRows, "DBlur") {}

template <class Sample>
void StreakSums::BlurTile(const PictureK7<Sample>& in, const PictureK7<Sample>& out,
                          const StreakSegments& kernel, int x, int y, int columns, int rows) {
    const int blocks = (columns + kBlock - 1) / kBlock;
    sums_.Zero();
    for (const StreakSegments::Segment& segment : kernel) {
        if (AbortRequested()) return;
        const int wide = blocks * kBlock + segment.right - segment.left;
        const int tall = rows + segment.top - segment.bottom;
        for (int j = 0; j < tall; ++j)
            WidenClamped(in.Rows[std::clamp(y + segment.bottom + j, 0, in.Height - 1)], in.Width,
                         x + segment.left, wide, seen_.data() + static_cast<std::size_t>(j) * kSeenRow);
        const float* const centre =
            seen_.data() - segment.bottom * static_cast<std::ptrdiff_t>(kSeenRow) - segment.left * kChannels;
        for (std::size_t j = 0; j < static_cast<std::size_t>(rows); ++j)
            AddSteps(centre + j * kSeenRow, kernel.Steps() + segment.first, kernel.Steps() + segment.end,
                     blocks, sums_.data() + j * kSumRow);
    }
    for (int j = 0; j < rows; ++j)
        StoreSums(sums_.data() + static_cast<std::size_t>(j) * kSumRow,
                  static_cast<std::size_t>(columns) * kChannels, out.Rows[y + j] + x * kChannels);
}

template void StreakSums::BlurTile(const K7Image&, const K7Image&, const StreakSegments&, int, int, int, int);
template void StreakSums::BlurTile(const FloatImageK7&, const FloatImageK7&, const StreakSegments&, int, int,
                                   int, int);

} // namespace k7
