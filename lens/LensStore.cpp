#include "lens/LensStore.h"

#include "frame/Random.h"

#include <algorithm>
#include <cmath>

namespace k7 {

namespace {

constexpr void ScaleToUnitAxis(LensTable* lens) {
    const float front = lens->Surfaces[0].Position;
    const float back = lens->Surfaces[lens->Count - 1].Position;
    const float scale = 2.0f / (front - back);
    const float centre = (back + front) * 0.5f;
    for (int i = 0; i < lens->Count; ++i) {
        LensSurface& surface = lens->Surfaces[i];
        surface.Position = (surface.Position - centre) * scale;
        surface.Radius = surface.Radius * scale;
    }
}

/// A row of a lens prescription, in the order in which they are printed and read.
struct Row {
    float position;
    float radius;
    float diameter;
};

template <int count>
constexpr LensTable Prescription(const Row (&rows)[count]) {
    LensTable lens;
    for (const Row& row : rows) lens.Surfaces[lens.Count++] = {row.radius, row.position, row.diameter};
    ScaleToUnitAxis(&lens);
    return lens;
}

constexpr LensTable kLenses[kBuiltInLenses] = {
    // Angulon 21mm
    Prescription({{15.0f, 50.0f, 0.4f},
                  {12.0f, 8.0f, 1.2f},
                  {7.5f, 15.0f, 0.8f},
                  {6.0f, 9.0f, 1.5f},
                  {2.0f, -5.0f, 1.2f},
                  {1.0f, 0.0f, 0.7f},
                  {-1.0f, 0.0f, 1.3f},
                  {-2.0f, 11.0f, 0.4f},
                  {-4.5f, -11.0f, 1.0f},
                  {-7.5f, -16.0f, 1.0f},
                  {-12.0f, -9.0f, 1.0f},
                  {-15.0f, -70.0f, 0.5f}}),
    // Summicron 35mm
    Prescription({{10.0f, 20.0f, 0.3f},
                  {8.0f, 32.0f, 0.6f},
                  {7.5f, 16.0f, 0.4f},
                  {5.0f, 0.0f, 1.0f},
                  {4.0f, 10.0f, 0.7f},
                  {-3.0f, -10.0f, 1.0f},
                  {-5.0f, -32.0f, 0.8f},
                  {-7.0f, -14.0f, 1.0f},
                  {-7.0f, -60.0f, 1.2f},
                  {-9.0f, -25.0f, 1.0f}}),
    // Summilux 50mm
    Prescription({{17.0f, 32.0f, 1.0f},
                  {13.5f, 66.0f, 1.0f},
                  {11.5f, 17.0f, 0.7f},
                  {7.0f, 27.0f, 1.0f},
                  {6.0f, 100.0f, 0.4f},
                  {4.0f, 13.0f, 1.0f},
                  {-4.0f, -13.0f, 0.6f},
                  {-5.0f, -65.0f, 1.0f},
                  {-7.0f, -20.0f, 1.0f},
                  {-8.0f, 52.0f, 0.5f},
                  {-12.0f, -12.0f, 1.0f},
                  {-13.0f, -38.0f, 1.0f}}),
    // Tele-Elmar 135mm
    Prescription({{19.0f, 22.0f, 1.0f},
                  {15.5f, 0.0f, 1.0f},
                  {14.0f, 30.0f, 0.3f},
                  {13.0f, 16.0f, 1.0f},
                  {9.0f, -37.0f, 1.0f},
                  {2.0f, 14.0f, 1.0f},
                  {-6.0f, 14.0f, 1.0f},
                  {-7.5f, 14.0f, 0.4f}}),
};

bool IsFinite(const LensSurface& surface) {
    return std::isfinite(surface.Radius) && std::isfinite(surface.Position) &&
           std::isfinite(surface.Diameter);
}

} // namespace

const LensTable& BuiltInLens(int number) {
    return kLenses[std::clamp(number, 1, kBuiltInLenses) - 1];
}

bool NormaliseLens(LensTable* lens) {
    ScaleToUnitAxis(lens);
    const LensSurface* front = lens->Surfaces;
    const LensSurface* end = front + lens->Count;
    return std::all_of(front, end, IsFinite) && front->Position != end[-1].Position;
}

void ExtendLens(const LensTable& lens, int more, std::uint32_t* randomState, LensTable* extended) {
    const float parts = static_cast<float>(more + 1);
    LensSurface* out = extended->Surfaces;
    for (int i = 0; i < lens.Count - 1; ++i) {
        const LensSurface& from = lens.Surfaces[i];
        const LensSurface& to = lens.Surfaces[i + 1];
        *out++ = from;
        for (int k = 1; k <= more; ++k) {
            const auto between = [&](float a, float b) {
                return static_cast<float>(k) * (b - a) / parts + a;
            };
            const double share = Rand15(randomState) * 0x1p-15;
            *out++ = {between(from.Radius, to.Radius), between(from.Position, to.Position),
                      static_cast<float>(between(from.Diameter, to.Diameter) * share)};
        }
    }
    *out++ = lens.Surfaces[lens.Count - 1];
    extended->Count = static_cast<int>(out - extended->Surfaces);
}

} // namespace k7
