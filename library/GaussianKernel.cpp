#include "library/GaussianKernel.h"

#include "library/Numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

namespace k7 {

namespace {

/// From here on every weight but the middle one is below 1/65536: the kernel is a single tap. (The weights
/// before scaling add up to 0.83 x 65536 x radius.)
constexpr float kSingleTapRadius = 100000.0f;

/// Weight of the table of half size n at a squared distance of the summit.
int BellWeight(float distance2, int n) {
    const float d = std::sqrt(distance2) * 2.5f / static_cast<float>(n);
    const float w = std::clamp(std::exp(d * -0.347f * d), 0.0f, 1.0f);
    return static_cast<int>(std::floor(w * 64.0f));
}

float Distance2(int i, int j) {
    return static_cast<float>(i) * static_cast<float>(i) + static_cast<float>(j) * static_cast<float>(j);
}

/// The largest squared distance at which the weight is at least `level`. Positive floats are ordered as their
/// bits are.
float DistanceOfLevel(int level, int n) {
    std::uint32_t inside = 0;
    std::uint32_t outside = std::bit_cast<std::uint32_t>(std::numeric_limits<float>::max());
    while (outside - inside > 1) {
        const std::uint32_t middle = inside + (outside - inside) / 2;
        (BellWeight(std::bit_cast<float>(middle), n) >= level ? inside : outside) = middle;
    }
    return std::bit_cast<float>(inside);
}

/// How many places of the table lie within a squared distance of its summit. The distances run from -n to
/// n - 2 on both axes; both signs of one are done together.
std::int64_t PlacesWithin(float distance2, int n) {
    std::int64_t places = 0;
    int j = n;
    for (int i = 0; i <= n; ++i) {
        while (j >= 0 && Distance2(i, j) > distance2) --j;
        if (j < 0) break;
        const std::int64_t inRow = j + 1 + std::min(j, n - 2);
        places += i == 0 || i > n - 2 ? inRow : 2 * inRow;
    }
    return places;
}

} // namespace

GaussianKernel1D MakeGaussianKernel1D(float radius) {
    GaussianKernel1D kernel;
    float x = static_cast<double>(radius) >= 0.01 ? radius : 0.01f;
    if (x >= kSingleTapRadius) x = 0.01f;

    const int n = static_cast<int>(std::ceil(x));
    const double sigma = x / 3.0;
    kernel.Weights = Buffer<std::uint32_t>(static_cast<std::size_t>(2 * n + 1), "library/K7Image");
    if (!kernel.Weights) return kernel;

    std::int64_t total = 0;
    for (int i = -n; i <= n; ++i) {
        const double square = static_cast<double>(i) * i;
        const float e = std::exp(static_cast<float>(-square / (2.0 * sigma * sigma)));
        const auto w = static_cast<std::uint32_t>(std::floor(e * 65536.0f));
        if (w == 0) continue;
        kernel.Weights[static_cast<std::size_t>(kernel.Taps++)] = w;
        total += w;
    }

    const float scale = 65536.0f / static_cast<float>(total);
    std::uint32_t missing = GaussianKernel1D::Sum;
    for (int i = 0; i < kernel.Taps; ++i) {
        std::uint32_t& w = kernel.Weights[static_cast<std::size_t>(i)];
        w = static_cast<std::uint32_t>(static_cast<double>(w) * static_cast<double>(scale));
        missing -= w;
    }
    kernel.Weights[static_cast<std::size_t>(kernel.Taps / 2)] += missing;
    return kernel;
}

int GaussianKernel2D::Weight(int row, int column) const {
    return BellWeight(Distance2(row - 1, column - 1), (Size + 1) / 2);
}

GaussianKernel2D MakeGaussianKernel2D(float radius) {
    GaussianKernel2D kernel;
    const int n = std::max(Trunc(radius), 2);
    kernel.Size = 2 * n - 1;
    // A weight is the number of levels from 1 to 64 that it reaches.
    for (int level = 1; level <= 64; ++level) kernel.Sum += PlacesWithin(DistanceOfLevel(level, n), n);
    return kernel;
}

} // namespace k7
