#include "library/KernelSums.h"

#include "baselib/Buffer.h"
#include "baselib/Vector.h"
#include "library/K7Image.h"

#include <algorithm>
#include <new>

namespace k7 {

namespace {

constexpr const char* kSource = "library/K7Image";
constexpr int kTile = 16; ///< sums that stay in registers

/// The sum of two rows, or one of them where the table has no second.
K7_WIDE_VECTORS void AddRows(const float* row, const float* other, int count, double* to) {
    for (int x = 0; x < count; ++x) to[x] = row[x];
    if (!other) return;
    for (int x = 0; x < count; ++x) to[x] += other[x];
}

/// Adds a row of the table: weight b stands b to the left of the summit, and for 0 < b <= `both` as far to
/// the right.
K7_WIDE_VECTORS void AddWeighted(const double* row, const double* weights, int both, int last, int width,
                                 double* sums) {
    for (int x = 0; x < width; x += kTile, row += kTile, sums += kTile) {
        double local[kTile];
        for (int i = 0; i < kTile; ++i) local[i] = sums[i] + row[i] * weights[0];
        for (int b = 1; b <= both; ++b)
            for (int i = 0; i < kTile; ++i) local[i] += (row[i - b] + row[i + b]) * weights[b];
        for (int b = both + 1; b <= last; ++b)
            for (int i = 0; i < kTile; ++i) local[i] += row[i - b] * weights[b];
        std::copy_n(local, kTile, sums);
    }
}

/// The table is the same on both sides of its summit, along rows and along columns, except that it reaches
/// two places further to the left and down. Each row of the table takes the sum of the two rows of the
/// picture that share it, and of that the sum of each two columns.
class BellSums : public KernelSums<float> {
public:
    BellSums(const GaussianKernel2D& kernel, int width, int height)
        : width_(width)
        , height_(height)
        , most_((kernel.Size + 1) / 2)
        , room_(static_cast<std::size_t>(width + 2 * most_ + 2 * kTile))
        , weights_(static_cast<std::size_t>(most_ + 1) * static_cast<std::size_t>(most_ + 1), kSource)
        , plane_(room_ * static_cast<std::size_t>(height), kSource)
        , rows_(room_, kSource) {
        if (!*this) return;
        plane_.Zero();
        for (int a = 0; a <= most_; ++a)
            for (int b = 0; b <= most_; ++b) Weights(a)[b] = kernel.Weight(1 - a, 1 - b);
    }
    explicit operator bool() const { return weights_ && plane_ && rows_; }

    void Start(const FloatImageK7& source, int channel) override {
        for (int y = 0; y < height_; ++y) {
            const float* from = source.Rows[y] + channel;
            float* to = plane_.data() + room_ * static_cast<std::size_t>(y) + most_;
            for (int x = 0; x < width_; ++x, from += FloatImageK7::Channels) to[x] = *from;
        }
    }

    void Row(int y, double* sums) override {
        std::fill_n(sums, width_ + kTile, 0.0);
        const int both = most_ - 2;
        for (int a = 0; a <= most_; ++a) {
            const float* below = PlaneRow(y + 1 - a);
            const float* above = a > 0 && a <= both ? PlaneRow(y + 1 + a) : nullptr;
            if (!below) std::swap(below, above);
            if (!below) continue;
            AddRows(below, above, static_cast<int>(room_), rows_.data());
            AddWeighted(rows_.data() + most_ + 1, Weights(a), both, most_, width_, sums);
        }
    }

private:
    double* Weights(int a) const { return weights_.data() + static_cast<std::ptrdiff_t>(a) * (most_ + 1); }
    const float* PlaneRow(int y) const {
        return y >= 0 && y < height_ ? plane_.data() + room_ * static_cast<std::size_t>(y) : nullptr;
    }

    int width_, height_;
    int most_;               ///< furthest distance from the summit
    std::size_t room_;       ///< of a row, with black on both sides
    Buffer<double> weights_; ///< by the distances from the summit, rows first
    Buffer<float> plane_;
    Buffer<double> rows_;
};

} // namespace

std::unique_ptr<KernelSums<float>> MakeBellSums(const GaussianKernel2D& kernel, int width, int height) {
    std::unique_ptr<BellSums> sums(new (std::nothrow) BellSums(kernel, width, height));
    return sums && *sums ? std::move(sums) : nullptr;
}

} // namespace k7
