#include "tests/motion/PlainMotion.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace k7::test {

namespace {

int LumaAt(const K7Image& picture, int x, int y) {
    const u16* p = picture.Rows[y] + 4 * x;
    return 77 * p[0] + 128 * p[1] + 51 * p[2];
}

std::vector<float> PlainKernel(float size) {
    const float x = std::max(size, 0.01f);
    const int r = static_cast<int>(std::ceil(x));
    const float sigma = x / 3;
    std::vector<float> kernel;
    float sum = 0;
    for (int i = -r; i <= r; ++i) {
        const float e = std::exp(static_cast<float>(-(i * i)) / (2 * sigma * sigma));
        if (e > 1e-5) kernel.push_back(e);
        if (e > 1e-5) sum += e;
    }
    for (float& k : kernel) k /= sum;
    return kernel;
}

Plane<int> PlainGrey(const K7Image& picture, int low, int high, float preBlur) {
    const int width = picture.Width;
    const int height = picture.Height;
    if (low == high) return {width, height};
    const float s = 255.0f / static_cast<float>(high - low);
    const Plane<float> grey(width, height, [&](int x, int y) {
        return std::trunc(static_cast<float>(LumaAt(picture, x, y) - low) * s);
    });
    const std::vector<float> kernel = PlainKernel(preBlur);
    const auto blurred = [&](auto tap) {
        float sum = 0;
        const int count = static_cast<int>(kernel.size());
        for (int k = 0; k < count; ++k) sum += tap(k - count / 2) * kernel[static_cast<std::size_t>(k)];
        return sum;
    };
    const Plane<float> rows(
        width, height, [&](int x, int y) { return blurred([&](int k) { return grey.Nearest(x + k, y); }); });
    return {width, height, [&](int x, int y) {
                const float sum = blurred([&](int k) { return rows.Nearest(x, y + k); });
                return static_cast<int>(std::clamp(sum, 0.0f, 255.0f));
            }};
}

std::vector<Plane<int>> PlainPyramid(Plane<int> grey) {
    std::vector<Plane<int>> levels = {std::move(grey)};
    while (levels.size() < 4)
        levels.emplace_back(levels.back().width / 2, levels.back().height / 2,
                            [from = levels.back()](int x, int y) {
                                return (from.At(2 * x, 2 * y) + from.At(2 * x + 1, 2 * y) +
                                        from.At(2 * x, 2 * y + 1) + from.At(2 * x + 1, 2 * y + 1)) >>
                                       2;
                            });
    return levels;
}

void PlainSearch(PlainField& field, const std::vector<Plane<int>>& previous,
                 const std::vector<Plane<int>>& current, int x, int y) {
    const int d = std::min({x, field.dx.width - 1 - x, y, field.dx.height - 1 - y});
    int start = 3;
    while (start > 0 && !(d > 8 * (1 << start))) --start;
    int resultX = 0;
    int resultY = 0;
    for (int l = start; l >= 0; --l) {
        const int f = 1 << l;
        const int guessX = l == start ? x / f : resultX / f;
        const int guessY = l == start ? y / f : resultY / f;
        const auto level = static_cast<std::size_t>(l);
        PlainMatchBlock(current[level], previous[level], x / f, y / f, guessX, guessY, &resultX, &resultY);
        resultX *= f;
        resultY *= f;
    }
    field.dx.At(x, y) = static_cast<float>(resultX - x);
    field.dy.At(x, y) = static_cast<float>(resultY - y);
}

void PlainFilter(PlainField& field, float limit) {
    const PlainField old = field;
    const auto square = [&](int x, int y) {
        return old.dx.At(x, y) * old.dx.At(x, y) + old.dy.At(x, y) * old.dy.At(x, y);
    };
    for (int y = 24; y < old.dx.height - 16; y += 16)
        for (int x = 24; x < old.dx.width - 16; x += 16) {
            float sum = 0, sumX = 0, sumY = 0;
            for (int v = y - 16; v <= y + 16; v += 16)
                for (int u = x - 16; u <= x + 16; u += 16) {
                    if (u == x && v == y) continue;
                    sum += square(u, v);
                    sumX += old.dx.At(u, v);
                    sumY += old.dy.At(u, v);
                }
            const float m = static_cast<float>(sum * 0.125);
            const float c = square(x, y);
            const float ratio = c > m && m > 0.001 ? c / m : c > 0.001 ? m / c : 0.0f;
            if (!(ratio > limit)) continue;
            field.dx.At(x, y) = static_cast<float>(sumX * 0.125);
            field.dy.At(x, y) = static_cast<float>(sumY * 0.125);
        }
}

/// Spreads one component from the grid. Everything outside the cells becomes zero.
Plane<float> PlainDensify(const Plane<float>& grid) {
    Plane<float> out(grid.width, grid.height);
    for (int y = 8; y < grid.height - 16; y += 16)
        for (int x = 8; x < grid.width - 16; x += 16)
            for (int r = 0; r < 16; ++r)
                for (int k = 0; k < 16; ++k) {
                    const float u = static_cast<float>(k) / 16;
                    const float v = static_cast<float>(r) / 16;
                    const float a = grid.At(x, y), b = grid.At(x + 16, y);
                    const float c = grid.At(x, y + 16), d = grid.At(x + 16, y + 16);
                    const float top = (b - a) * u + a;
                    const float bottom = (d - c) * u + c;
                    out.At(x + k, y + r) = (bottom - top) * v + top;
                }
    return out;
}

} // namespace

bool PlainMatchBlock(const Plane<int>& current, const Plane<int>& previous, int bx, int by, int guessX,
                     int guessY, int* x, int* y) {
    const int width = current.width;
    const int height = current.height;
    *x = guessX;
    *y = guessY;
    if (bx + 8 < 0 || by + 8 < 0 || bx - 8 > width - 1 || by - 8 > height - 1) return false;
    const int x0 = std::max(bx - 8, 0), x1 = std::min(bx + 8, width - 1);
    const int y0 = std::max(by - 8, 0), y1 = std::min(by + 8, height - 1);
    int best = INT_MAX;
    bool compared = false;
    int foundX = 0, foundY = 0;
    for (int dy = -8; dy <= 8; ++dy)
        for (int dx = -8; dx <= 8; ++dx) {
            const int ox = guessX - bx + dx, oy = guessY - by + dy;
            int sum = 0;
            for (int v = y0; v <= y1; ++v)
                for (int u = x0; u <= x1; ++u)
                    if (current.Has(u + ox, v + oy)) {
                        sum += std::abs(previous.At(u, v) - current.At(u + ox, v + oy));
                        compared = true;
                    }
            if (sum < best) {
                best = sum;
                foundX = x0 + ox + 8;
                foundY = y0 + oy + 8;
            }
        }
    if (!compared) return false;
    *x = foundX;
    *y = foundY;
    return true;
}

PlainField PlainEstimate(const K7Image& previous, const K7Image& current, float preBlur, float outlierLimit,
                         const int (&region)[4]) {
    const int width = previous.Width;
    const int height = previous.Height;
    PlainField field(width, height);
    int low = INT_MAX, high = 0;
    for (const K7Image* picture : {&previous, &current})
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                low = std::min(low, LumaAt(*picture, x, y));
                high = std::max(high, LumaAt(*picture, x, y));
            }
    const auto before = PlainPyramid(PlainGrey(previous, low, high, preBlur));
    const auto after = PlainPyramid(PlainGrey(current, low, high, preBlur));

    const auto begin = [](int a, int b) { return (std::max(std::min(a, b), 0) - 8) / 16 * 16 + 8; };
    const auto end = [](int a, int b, int size) {
        return std::min(size, ((std::max(a, b) - 8) / 16 + 1) * 16 + 8);
    };
    for (int y = begin(region[2], region[3]); y < end(region[2], region[3], height); y += 16)
        for (int x = begin(region[0], region[1]); x < end(region[0], region[1], width); x += 16)
            PlainSearch(field, before, after, x, y);

    PlainFilter(field, outlierLimit);
    field.dx = PlainDensify(field.dx);
    field.dy = PlainDensify(field.dy);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (before[0].At(x, y) == after[0].At(x, y)) field.dx.At(x, y) = field.dy.At(x, y) = 0;
    return field;
}

} // namespace k7::test
