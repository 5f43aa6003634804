#include "host/Matte.h"

#include "host/Tags.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

/// The pixels that make up one place of a fitted line, from `first` on.
struct Share {
    int first;
    std::vector<float> weights;
};

/// Linear interpolation where a line grows; where it shrinks, a mean of the pixels weighted by coverage.
std::vector<Share> SharesOf(int from, int to) {
    std::vector<Share> shares(static_cast<std::size_t>(to));
    const double step = static_cast<double>(from) / to;
    for (int i = 0; i < to; ++i) {
        Share& share = shares[static_cast<std::size_t>(i)];
        if (to >= from) {
            const double centre = std::clamp((i + 0.5) * step - 0.5, 0.0, from - 1.0);
            share.first = std::min(static_cast<int>(centre), std::max(from - 2, 0));
            const auto second = static_cast<float>(centre - share.first);
            share.weights = {1.0f - second};
            if (from > 1) share.weights.push_back(second);
            continue;
        }
        const double low = i * step;
        const double high = (i + 1) * step;
        share.first = static_cast<int>(low);
        for (int x = share.first; x < high && x < from; ++x)
            share.weights.push_back(
                static_cast<float>((std::min(high, x + 1.0) - std::max<double>(low, x)) / step));
    }
    return shares;
}

/// Fits lines of samples that lie `along` apart; the lines begin at `start` + i x `across`.
void FitLines(const std::vector<float>& from, std::vector<float>& to, const std::vector<Share>& shares,
              int lines, std::ptrdiff_t fromAlong, std::ptrdiff_t fromAcross, std::ptrdiff_t toAlong,
              std::ptrdiff_t toAcross) {
    for (std::size_t i = 0; i < shares.size(); ++i)
        for (int line = 0; line < lines; ++line) {
            const float* sample = from.data() + line * fromAcross + shares[i].first * fromAlong;
            float sum = 0.0f;
            for (const float weight : shares[i].weights) {
                sum += *sample * weight;
                sample += fromAlong;
            }
            to[static_cast<std::size_t>(line * toAcross + static_cast<std::ptrdiff_t>(i) * toAlong)] = sum;
        }
}

float Unit(float value) {
    return value > 0.0f ? std::min(value, 1.0f) : 0.0f; // NaN too
}

} // namespace

std::vector<float> MakeMatte(const Image& mask, MatteChannel channel, int width, int height) {
    if (channel == MatteChannel::Alpha && mask.HasAttr(kTagOpaque)) channel = MatteChannel::Luminance;
    constexpr int places[] = {3, 0, 1, 2};
    std::vector<float> row(static_cast<std::size_t>(mask.Width) * 4);
    std::vector<float> plane(static_cast<std::size_t>(mask.Width) * static_cast<std::size_t>(mask.Height));
    float* to = plane.data();
    for (int y = 0; y < mask.Height; ++y) {
        mask.ReadRow(y, row.data());
        for (const float* rgba = row.data(); rgba != row.data() + row.size(); rgba += 4)
            *to++ = channel == MatteChannel::Luminance
                        ? Unit(0.2126f * rgba[0] + 0.7152f * rgba[1] + 0.0722f * rgba[2])
                        : Unit(rgba[places[static_cast<int>(channel)]]);
    }
    if (mask.Width != width) {
        std::vector<float> fitted(static_cast<std::size_t>(width) * static_cast<std::size_t>(mask.Height));
        FitLines(plane, fitted, SharesOf(mask.Width, width), mask.Height, 1, mask.Width, 1, width);
        plane.swap(fitted);
    }
    if (mask.Height != height) {
        std::vector<float> fitted(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        FitLines(plane, fitted, SharesOf(mask.Height, height), width, width, 1, width, 1);
        plane.swap(fitted);
    }
    return plane;
}

} // namespace host
