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

/// The light accumulation as its definition reads: three planes of the frame's size, every light of the map
/// in scan order, each streak walked anew from its light to its end.
template <class Real>
class PlainLight {
public:
    PlainLight(const K7Image& map, const FlareTables<Real>& tables, const StreakSetup<Real>& setup,
               const StreakPairs<Real>& pairs)
        : tables_(tables)
        , setup_(setup)
        , width_(map.Width)
        , height_(map.Height) {
        for (auto& plane : Planes) plane.assign(static_cast<std::size_t>(width_ * height_), 0);
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) {
                const u16* words = map.Rows[y] + 4 * x;
                if (!words[0] && !words[1] && !words[2]) continue;
                AddHalo(x, y, words);
                for (int k = 0; k < setup.Count; ++k)
                    for (int arm = 0; arm < 2; ++arm)
                        AddArm(x, y, words, pairs[static_cast<std::size_t>(k)], arm);
                AddGlow(x, y, words);
            }
    }

    std::vector<Real> Planes[3];

private:
    Real& Cell(int plane, std::int64_t x, std::int64_t y) {
        return Planes[plane][static_cast<std::size_t>(y * width_ + x)];
    }
    bool Inside(std::int64_t x, std::int64_t y) const {
        return x >= 0 && x < width_ && y >= 0 && y < height_;
    }

    void AddHalo(int x, int y, const u16* words) {
        const int r = tables_.Halo().Radius;
        for (int v = -r; v <= r; ++v)
            for (int u = -r; u <= r; ++u) {
                if (!Inside(x + u, y + v)) continue;
                const auto& e =
                    tables_.Halo().Entries[static_cast<std::size_t>((v + r) * (2 * r + 1) + u + r)];
                Cell(0, x + u, y + v) += static_cast<Real>(words[0]) * e.R;
                Cell(1, x + u, y + v) += static_cast<Real>(words[1]) * e.G;
                Cell(2, x + u, y + v) += static_cast<Real>(words[2]) * e.B;
            }
    }

    void AddGlow(int x, int y, const u16* words) {
        const int r = tables_.Glow().Radius;
        for (int v = -r; v <= r; ++v)
            for (int u = -r; u <= r; ++u)
                for (int c = 0; c < 3; ++c)
                    if (Inside(x + u, y + v))
                        Cell(c, x + u, y + v) +=
                            static_cast<Real>(words[c]) *
                            tables_.Glow().Weights[static_cast<std::size_t>((v + r) * (2 * r + 1) + u + r)];
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
                    Real colour = Colour(i, p);
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

    Real Colour(int i, int plane) const {
        const auto& entry = tables_.Streaks().Entries[static_cast<std::size_t>(i)];
        return plane == 0 ? entry.R : plane == 1 ? entry.G : entry.B;
    }

    const FlareTables<Real>& tables_;
    const StreakSetup<Real> setup_;
    const int width_, height_;
};

} // namespace k7::test
