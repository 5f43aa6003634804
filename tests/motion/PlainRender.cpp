#include "tests/motion/PlainMotion.h"

#include <algorithm>
#include <cmath>

namespace k7::test {

namespace {

/// A canvas or a level above it: red, green, blue, alpha, weight.
struct Canvas {
    Canvas(int w, int h) : planes(5, Plane<float>(w, h)) {}
    int Width() const { return planes[0].width; }
    int Height() const { return planes[0].height; }
    std::vector<Plane<float>> planes;
};

/// One chunk of the splatting.
struct PlainChunk {
    Canvas& canvas;
    const K7Image& previous;
    const K7Image& current;
    const BlurPaths& paths;
    int first;
    int last;

    void Add(int x, int y, float k, const float* colour) {
        if (x >= previous.Width || y < first || y > last) return;
        for (int c = 0; c < 4; ++c) canvas.planes[static_cast<std::size_t>(c)].At(x, y) += k * colour[c];
        canvas.planes[4].At(x, y) += k;
    }

    static float End(float at, int size) {
        if (at < 1) at = 1;
        if (at > static_cast<float>(size - 2)) at = static_cast<float>(size - 2);
        return at;
    }

    float Bilinear(float x, float y, int c) const {
        const int ix = static_cast<int>(x), iy = static_cast<int>(y);
        const float fx = x - static_cast<float>(ix), fy = y - static_cast<float>(iy);
        const auto at = [&](int u, int v) { return static_cast<float>(current.Rows[v][4 * u + c]); };
        return (at(ix, iy) * (1 - fx) + at(ix + 1, iy) * fx) * (1 - fy) +
               (at(ix, iy + 1) * (1 - fx) + at(ix + 1, iy + 1) * fx) * fy;
    }

    void Pixel(int x, int y, float dx, float dy) {
        float p[4], q[4];
        for (int c = 0; c < 4; ++c) p[c] = previous.Rows[y][4 * x + c];
        if (std::fabs(dx) < 0.0001 && std::fabs(dy) < 0.0001) return Add(x, y, 1, p);

        const float fromX = static_cast<float>(x), fromY = static_cast<float>(y);
        const float ex = End(fromX + paths.Scale * dx, previous.Width);
        const float ey = End(fromY + paths.Scale * dy, previous.Height);
        if (std::max(fromY, ey) < static_cast<float>(first)) return;
        if (std::min(fromY, ey) > static_cast<float>(last + 1)) return;

        const float sx = End(fromX + dx, previous.Width);
        const float sy = End(fromY + dy, previous.Height);
        for (int c = 0; c < 4; ++c) q[c] = Bilinear(sx, sy, c);
        const float px = ex - fromX, py = ey - fromY;
        int n = static_cast<int>((std::sqrt(px * px + py * py) + 1.0f) * 1.5f);
        n = n < 2 ? 2 : std::min(n, paths.StepLimit);
        for (int i = 0; i < n; ++i) {
            const float t = static_cast<float>(i) / static_cast<float>(n - 1);
            const float w = (paths.EndWeight - paths.StartWeight) * t + paths.StartWeight;
            float colour[4];
            for (int c = 0; c < 4; ++c) colour[c] = (q[c] - p[c]) * t + p[c];
            Sample(px * t + fromX, py * t + fromY, w, colour);
        }
    }

    void Sample(float x, float y, float w, const float* colour) {
        const int ix = static_cast<int>(x), iy = static_cast<int>(y);
        const float fx = x - static_cast<float>(ix), fy = y - static_cast<float>(iy);
        Add(ix, iy, w * (1 - fx) * (1 - fy), colour);
        Add(ix + 1, iy, w * fx * (1 - fy), colour);
        Add(ix, iy + 1, w * (1 - fx) * fy, colour);
        Add(ix + 1, iy + 1, w * fx * fy, colour);
    }
};

Canvas PlainHalf(const Canvas& from) {
    Canvas to(from.Width() / 2, from.Height() / 2);
    for (std::size_t c = 0; c < 5; ++c)
        to.planes[c] = {to.Width(), to.Height(), [&from = from.planes[c]](int x, int y) {
                            return (from.At(2 * x, 2 * y) + from.At(2 * x + 1, 2 * y) +
                                    from.At(2 * x, 2 * y + 1) + from.At(2 * x + 1, 2 * y + 1)) *
                                   0.25f;
                        }};
    return to;
}

void PlainResolve(K7Image& output, const std::vector<Canvas>& levels, int x, int y) {
    float sums[5];
    for (std::size_t c = 0; c < 5; ++c) sums[c] = levels[0].planes[c].At(x, y);
    int cx = x / 2, cy = y / 2;
    for (std::size_t l = 1; l < levels.size() && !(sums[4] > 0.9995); ++l, cx /= 2, cy /= 2) {
        const float k = 1 - sums[4];
        for (std::size_t c = 0; c < 5; ++c) sums[c] += k * levels[l].planes[c].Nearest(cx, cy);
    }
    if (!(sums[4] > 0.0001)) return;
    for (int c = 0; c < 4; ++c)
        output.Rows[y][4 * x + c] = static_cast<u16>(std::clamp(sums[c] / sums[4] + 0.5, 0.0, 32767.0));
}

} // namespace

void PlainRender(K7Image& output, const K7Image& previous, const K7Image& current, const PlainField& field,
                 const BlurPaths& paths, int chunks) {
    const int width = output.Width;
    const int height = output.Height;
    std::vector<Canvas> levels(1, Canvas(width, height));
    const int per = height / chunks;
    for (int i = 0; i < chunks; ++i) {
        const int last = i == chunks - 1 ? height - 1 : per * (i + 1) - 1;
        PlainChunk chunk = {levels[0], previous, current, paths, per * i, last};
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) chunk.Pixel(x, y, field.dx.At(x, y), field.dy.At(x, y));
    }
    while (levels.size() < 10 && levels.back().Width() >= 2 && levels.back().Height() >= 2)
        levels.push_back(PlainHalf(levels.back()));

    output.Fill(0, 0, 0, 32767);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) PlainResolve(output, levels, x, y);
}

} // namespace k7::test
