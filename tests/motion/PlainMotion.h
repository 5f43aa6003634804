#pragma once

#include "library/K7Image.h"
#include "motion/BlurRendering.h"

#include <vector>

namespace k7::test {

/// A plane of values that can be read outside its edges.
template <class Value>
struct Plane {
    Plane(int w, int h)
        : width(w)
        , height(h)
        , values(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
    /// Filled by a function of the place.
    template <class Function>
    Plane(int w, int h, Function value) : Plane(w, h) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) At(x, y) = value(x, y);
    }

    Value& At(int x, int y) {
        return values[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    const Value& At(int x, int y) const { return const_cast<Plane*>(this)->At(x, y); }
    const Value& Nearest(int x, int y) const {
        return At(x < 0 ? 0 : x >= width ? width - 1 : x, y < 0 ? 0 : y >= height ? height - 1 : y);
    }
    bool Has(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }

    int width;
    int height;
    std::vector<Value> values;
};

/// Vectors of all pixels.
struct PlainField {
    PlainField(int w, int h) : dx(w, h), dy(w, h) {}
    Plane<float> dx;
    Plane<float> dy;
};

/// One block on one level with every pixel of every candidate compared. False if the guess is returned.
bool PlainMatchBlock(const Plane<int>& current, const Plane<int>& previous, int bx, int by, int guessX,
                     int guessY, int* x, int* y);

/// The estimator by definition: whole planes, one stage after the other. The region is first column, last
/// column, first row, last row.
PlainField PlainEstimate(const K7Image& previous, const K7Image& current, float preBlur, float outlierLimit,
                         const int (&region)[4]);

/// The renderer by definition, divided into chunks of rows as a frame is divided among threads.
void PlainRender(K7Image& output, const K7Image& previous, const K7Image& current, const PlainField& field,
                 const BlurPaths& paths, int chunks);

} // namespace k7::test
