#include "lens/GhostTrace.h"

#include <cmath>

namespace k7 {

namespace {

constexpr float kLevel = 1e-5f; // a ray with less rise than this runs along a flat surface

/// The nearest root of t² + b t + e that is not negative, in the form without cancellation (Numerical
/// Recipes, 5.6). False if there is none.
bool FirstRoot(float b, float e, float* t) {
    const float discriminant = b * b - 4.0f * e;
    if (!(discriminant >= 0.0f)) return false;
    const float root = std::sqrt(discriminant);
    const float q = -(b >= 0.0f ? b + root : b - root) / 2.0f;
    const float other = e / q; // NaN if both roots are 0
    if (!(q >= 0.0f) && !(other >= 0.0f)) return false;
    *t = other >= 0.0f && !(q >= 0.0f && q <= other) ? other : q;
    return true;
}

} // namespace

bool IntersectSurface(const LensTable& lens, int surface, const float ray[6], float point[3]) {
    if (surface < 0 || surface >= lens.Count) return false;
    const float* o = ray;
    const float* d = ray + 3;
    const float radius = lens.Surfaces[surface].Radius;
    const float position = lens.Surfaces[surface].Position;
    const float centre = position - radius;

    float t;
    if (radius == 0.0f) {
        if (std::abs(d[2]) < kLevel) return false;
        t = -(o[2] - position) / d[2];
        if (!(t >= 0.0f)) return false;
    } else {
        const float uz = o[2] - centre;
        const float b = 2.0f * (o[0] * d[0] + o[1] * d[1] + uz * d[2]);
        const float e = o[0] * o[0] + o[1] * o[1] + uz * uz - radius * radius;
        if (!FirstRoot(b, e, &t)) return false;
    }
    for (int i = 0; i < 3; ++i) point[i] = o[i] + t * d[i];
    return radius == 0.0f || (point[2] - centre) / std::abs(radius) * radius >= 0.0f;
}

} // namespace k7
