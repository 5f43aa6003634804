#include "motion/MotionEstimator.h"

#include "frame/PluginK7.h"
#include "library/K7Image.h"
#include "motion/WorkBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace k7 {

namespace {

/// Grid points lie at kGridStart, kGridStart + kGridStep, ... in both directions. Four of them are the
/// corners of a cell.
constexpr int kGridStep = 16;
constexpr int kGridStart = 8;

/// Grey values that differ by less than this have not changed.
constexpr int kStillLimit = 1;

/// The largest blur before the comparison, in pixels, unless the picture itself is larger.
constexpr int kWidestBlur = 4096;

/// Squared length up to which a vector, or a mean of vectors, counts as none.
constexpr float kNoMotion = 0.001f;

/// Number of whole cells along `size` pixels, each with a pixel at its far corner.
int CellCount(int size) {
    return std::max(size - kGridStart - 1, 0) / kGridStep;
}

float Mix(float a, float b, float t) {
    return (b - a) * t + a;
}

} // namespace

bool MotionEstimator::MakeBuffers(int width, int height) {
    cellColumns_ = CellCount(width);
    cellRows_ = CellCount(height);
    const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const auto points = static_cast<std::size_t>(cellColumns_ + 1) * static_cast<std::size_t>(cellRows_ + 1);
    const bool made = MakeWorkBuffer(dx_, pixels, 0) && MakeWorkBuffer(dy_, pixels, 1) &&
                      previous_.Make(width, height, 2) && current_.Make(width, height, 3) &&
                      MakeWorkBuffer(grid_, points, 4) && MakeWorkBuffer(filtered_, points, 5);
    field_ = {width, height, dx_.data(), dy_.data()};
    return made;
}

template <class Sample>
const MotionField* MotionEstimator::EstimateMotion(PluginK7& core, const PictureK7<Sample>& previous,
                                                   const PictureK7<Sample>& current,
                                                   const MotionSearch& search) {
    // Grey frames over their joint range, so that a global fade between them is preserved.
    const LumaRange range = FindLumaRange(core, previous, current);
    if (core.IsAborted()) return nullptr; // the range may be empty
    const auto widest = static_cast<float>(std::max({field_.Width, field_.Height, kWidestBlur}));
    const Buffer<float> kernel = MakeBlurKernel(std::min(search.PreBlur, widest));
    for (int i = 0; i < 2 && range.low == range.high; ++i)
        ReportMessage("URGH! Input image has zero range!\n");
    if (!kernel || !previous_.Fill(core, previous, range, kernel)) {
        ReportMessage("Failed to blur cimg 1\n");
        return nullptr;
    }
    if (!current_.Fill(core, current, range, kernel)) {
        ReportMessage("Failed to blur cimg 2\n");
        return nullptr;
    }

    // Vectors on the grid. Outside of the region they are zero.
    grid_.Zero();
    SearchGrid(core, Region(search.FirstColumn, search.LastColumn, cellColumns_ + 1),
               Region(search.FirstRow, search.LastRow, cellRows_ + 1));
    FilterOutliers(search.OutlierLimit);

    // Vectors of all pixels.
    RunRows(core, field_.Height, [&](int first, int last) {
        for (int y = first; y <= last && !core.IsAborted(); ++y) {
            DensifyRow(y);
            ClearStill(y);
        }
    });
    return &field_;
}

template const MotionField* MotionEstimator::EstimateMotion(PluginK7&, const K7Image&, const K7Image&,
                                                            const MotionSearch&);
template const MotionField* MotionEstimator::EstimateMotion(PluginK7&, const FloatImageK7&,
                                                            const FloatImageK7&, const MotionSearch&);

MotionEstimator::GridSpan MotionEstimator::Region(int low, int high, int points) {
    if (low > high) std::swap(low, high);
    low = std::max(low, 0);
    high = std::max(high, -kGridStep); // no point is that low; keeps the difference in range
    return {(low - kGridStart) / kGridStep, std::min((high - kGridStart) / kGridStep + 1, points)};
}

void MotionEstimator::SearchGrid(PluginK7& core, GridSpan columns, GridSpan rows) {
    if (cellColumns_ == 0 || cellRows_ == 0) return;
    // Divide the points, not the rows of the frame: a small region then keeps all threads busy too.
    const int count = columns.Count();
    RunRows(core, count * rows.Count(), [&](int first, int last) {
        for (int i = first; i <= last && !core.IsAborted(); ++i) {
            const int column = columns.first + i % count;
            const int row = rows.first + i / count;
            grid_[static_cast<std::size_t>(row * (cellColumns_ + 1) + column)] =
                SearchPoint(kGridStart + kGridStep * column, kGridStart + kGridStep * row);
        }
    });
}

MotionEstimator::Vector MotionEstimator::SearchPoint(int x, int y) const {
    // Begin on the coarsest level on which the block does not touch the border.
    const int border = std::min({x, field_.Width - 1 - x, y, field_.Height - 1 - y});
    int level = GreyPyramid::kLevels - 1;
    while (level > 0 && border <= kBlockHalf << level) --level;

    // Each level starts from what the coarser one has found.
    int foundX = x;
    int foundY = y;
    for (; level >= 0; --level) {
        const int factor = 1 << level;
        MatchBlock(current_[level], previous_[level], x / factor, y / factor, foundX / factor,
                   foundY / factor, &foundX, &foundY);
        foundX *= factor;
        foundY *= factor;
    }
    return {static_cast<float>(foundX - x), static_cast<float>(foundY - y)};
}

void MotionEstimator::FilterOutliers(float limit) {
    // Collect first, then copy, so that all points see their neighbours unfiltered. The outermost points lack
    // neighbours and stay unchanged.
    if (cellColumns_ == 0 || cellRows_ == 0) return;
    const std::size_t stride = static_cast<std::size_t>(cellColumns_) + 1;
    std::memcpy(filtered_.data(), grid_.data(), grid_.size() * sizeof(Vector));
    for (std::size_t row = 1; row < static_cast<std::size_t>(cellRows_); ++row)
        for (std::size_t i = row * stride + 1; i < (row + 1) * stride - 1; ++i)
            filtered_[i] = Filtered(&grid_[i], limit);
    grid_.swap(filtered_);
}

MotionEstimator::Vector MotionEstimator::Filtered(const Vector* point, float limit) const {
    const std::ptrdiff_t stride = cellColumns_ + 1;
    const auto square = [](const Vector& v) { return v.dx * v.dx + v.dy * v.dy; };
    Vector sum = {0.0f, 0.0f};
    float squares = 0.0f;
    for (const std::ptrdiff_t neighbour : {-stride - 1, -stride, -stride + 1, std::ptrdiff_t{-1},
                                           std::ptrdiff_t{1}, stride - 1, stride, stride + 1}) {
        const Vector& v = point[neighbour];
        sum.dx += v.dx;
        sum.dy += v.dy;
        squares += square(v);
    }

    // A vector is replaced both if it stands out from quiet surroundings and if it is still among moving
    // ones.
    const float mean = squares * 0.125f;
    const float own = square(*point);
    float ratio = 0.0f;
    if (own > mean && mean > kNoMotion)
        ratio = own / mean;
    else if (own > kNoMotion)
        ratio = mean / own;
    return ratio > limit ? Vector{sum.dx * 0.125f, sum.dy * 0.125f} : *point;
}

void MotionEstimator::DensifyRow(int y) {
    const std::size_t width = static_cast<std::size_t>(field_.Width);
    float* dx = dx_.data() + static_cast<std::size_t>(y) * width;
    float* dy = dy_.data() + static_cast<std::size_t>(y) * width;
    const int cellRow = y < kGridStart ? cellRows_ : (y - kGridStart) / kGridStep;
    std::fill(dx, dx + width, 0.0f);
    std::fill(dy, dy + width, 0.0f);
    if (cellRow >= cellRows_) return;

    // Interpolate along the upper and the lower side of each cell, then between them.
    const float v = static_cast<float>((y - kGridStart) % kGridStep) / kGridStep;
    const Vector* upper =
        grid_.data() + static_cast<std::size_t>(cellRow) * (static_cast<std::size_t>(cellColumns_) + 1);
    const Vector* lower = upper + cellColumns_ + 1;
    dx += kGridStart;
    dy += kGridStart;
    for (int cell = 0; cell < cellColumns_; ++cell, ++upper, ++lower, dx += kGridStep, dy += kGridStep)
        for (int k = 0; k < kGridStep; ++k) {
            const float u = static_cast<float>(k) / kGridStep;
            dx[k] = Mix(Mix(upper[0].dx, upper[1].dx, u), Mix(lower[0].dx, lower[1].dx, u), v);
            dy[k] = Mix(Mix(upper[0].dy, upper[1].dy, u), Mix(lower[0].dy, lower[1].dy, u), v);
        }
}

void MotionEstimator::ClearStill(int y) {
    const std::size_t start = static_cast<std::size_t>(y) * static_cast<std::size_t>(field_.Width);
    const std::uint8_t* before = previous_[0].Row(y);
    const std::uint8_t* after = current_[0].Row(y);
    float* dx = dx_.data() + start;
    float* dy = dy_.data() + start;
    for (int x = 0; x < field_.Width; ++x) {
        const bool still = std::abs(before[x] - after[x]) < kStillLimit;
        dx[x] = still ? 0.0f : dx[x];
        dy[x] = still ? 0.0f : dy[x];
    }
}

} // namespace k7
