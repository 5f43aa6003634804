#pragma once

#include "lens/DiffractionTables.h"
#include "lens/Streaks.h"
#include "library/K7Image.h"
#include "library/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace k7::test {

/// The light accumulation by definition: a sum for each channel of the frame, every light of the map in scan
/// order, each streak walked from its light to its end.
template <class Real>
class PlainLight {
public:
    PlainLight(const K7Image& map, const FlareTables<Real>& tables, const StreakSetup<Real>& setup,
               const StreakPairs<Real>& pairs)
        : Sums(static_cast<std::size_t>(3 * map.Width * map.Height), 0)
        , tables_(tables)
        , setup_(setup)
        , width_(map.Width)
        , height_(map.Height) {
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) {
                const u16* words = map.Rows[y] + 4 * x;
                if (!words[0] && !words[1] && !words[2]) continue;
                AddKernel(x, y, words, tables.Halo().Radius,
                          [&](int i, int c) { return Channel(tables.Halo().Cells, i, c); });
                for (int k = 0; k < setup.Count; ++k)
                    for (int arm = 0; arm < 2; ++arm)
                        AddArm(x, y, words, pairs[static_cast<std::size_t>(k)], arm);
                AddKernel(x, y, words, tables.Glow().Radius,
                          [&](int i, int) { return tables.Glow().Cells[static_cast<std::size_t>(i)]; });
            }
    }

    std::vector<Real> Sums; ///< three per pixel

private:
    Real& Cell(int channel, std::int64_t x, std::int64_t y) {
        return Sums[static_cast<std::size_t>(3 * (y * width_ + x) + channel)];
    }
    bool Inside(std::int64_t x, std::int64_t y) const {
        return x >= 0 && x < width_ && y >= 0 && y < height_;
    }

    /// Adds a light times a kernel of 2 r + 1 columns and rows; gain(i, channel) is its cell i.
    template <class Gain>
    void AddKernel(int x, int y, const u16* words, int r, Gain gain) {
        int i = 0;
        for (int v = -r; v <= r; ++v)
            for (int u = -r; u <= r; ++u, ++i)
                for (int c = 0; c < 3; ++c)
                    if (Inside(x + u, y + v))
                        Cell(c, x + u, y + v) += static_cast<Real>(words[c]) * gain(i, c);
    }

    void AddArm(int x, int y, const u16* words, const StreakPair<Real>& pair, int arm) {
        const int length = Trunc(setup_.Length);
        if (length < 1) return;
        const Real lf = static_cast<Real>(length);
        const float aspect = setup_.Aspect;
        Real theta = static_cast<Real>(setup_.Rotation / 180.0 * 3.1415926 + pair.Angle);
        if (arm == 1) theta = static_cast<Real>(theta + 3.1415926);
        const Real reach = lf * pair.Length + lf;
        const Real c = std::cos(static_cast<float>(theta));
        const Real s = std::sin(static_cast<float>(theta));
        const int dx = Trunc(c * reach + static_cast<Real>(x)) - x;
        const int dy = Trunc(s * reach / aspect + static_cast<Real>(y)) - y;
        if (dx == 0 && dy == 0) return;

        const int sx = dx < 0 ? -1 : 1;
        const int sy = dy < 0 ? -1 : 1;
        const bool steep = std::abs(dy) > std::abs(dx);
        const int major = std::max(std::abs(dx), std::abs(dy));
        const int minor = std::min(std::abs(dx), std::abs(dy));
        const Real norm = 1 / static_cast<Real>(2 * std::sqrt(static_cast<float>(dx * dx + dy * dy)));
        int fade = static_cast<int>(major - major * 0.15);
        if (fade >= major) fade = major + 2;

        int e = -major, f = 0, ox = 0, oy = 0;
        for (int j = 0; j <= major; ++j) {
            const Real w = static_cast<Real>(f) * norm;
            if (x + ox >= 0 && x + ox < width_ && y + oy >= -1 && y + oy <= height_) {
                const auto square = [](int i) { return static_cast<float>(i * i); };
                const float d = aspect < 1.0f ? std::sqrt(square(ox) / aspect / aspect + square(oy))
                                              : std::sqrt(square(oy) * aspect * aspect + square(ox));
                const int i = std::min(Trunc(lf * (d / reach)), length - 1);
                const int side = w >= 0 ? 1 : -1;
                const int sideX = x + ox + (steep ? side * sx : 0);
                const int sideY = y + oy + (steep ? 0 : side * sy);
                for (int p = 0; p < 3; ++p) {
                    Real colour = Channel(tables_.Streaks().Entries, i, p);
                    if (j > fade) {
                        const Real t = static_cast<float>(j - fade) / static_cast<float>(major - fade);
                        colour *= 1 - (3 - 2 * t) * (t * t);
                    }
                    const float gain = static_cast<float>(words[p]) * 0.125f;
                    if (Inside(sideX, sideY)) Cell(p, sideX, sideY) += colour * std::abs(w) * gain;
                    if (Inside(x + ox, y + oy)) Cell(p, x + ox, y + oy) += colour * (1 - std::abs(w)) * gain;
                }
            }
            e += 2 * minor;
            f += 2 * minor;
            if (e > 0) {
                (steep ? ox : oy) += steep ? sx : sy;
                e -= 2 * major;
                f -= 2 * major;
            }
            (steep ? oy : ox) += steep ? sy : sx;
        }
    }

    static Real Channel(const Buffer<DiffractionEntry<Real>>& entries, int i, int channel) {
        const auto& entry = entries[static_cast<std::size_t>(i)];
        return channel == 0 ? entry.R : channel == 1 ? entry.G : entry.B;
    }

    const FlareTables<Real>& tables_;
    const StreakSetup<Real> setup_;
    const int width_, height_;
};

} // namespace k7::test
