#pragma once

#include <cstdint>

namespace k7 {

/// A spherical surface. Its vertex lies at Position on the axis, its centre at Position - Radius.
struct LensSurface {
    float Radius;   ///< signed; 0 is a flat surface
    float Position; ///< decreases from front to back
    float Diameter; ///< relative size of this surface's ghost
};

/// The surfaces of a lens from the front, the side of the light, to the back. A lens in use has at least two,
/// the first at position 1 and the last at -1.
struct LensTable {
    static constexpr int kFileSurfaces = 50; ///< the most in a lens file
    static constexpr int kMoreElements = 10; ///< the most that can be inserted after each surface
    static constexpr int kRoom = kFileSurfaces * (1 + kMoreElements);

    int Count = 0;
    LensSurface Surfaces[kRoom] = {};
};

inline constexpr int kBuiltInLenses = 4;

/// A built-in lens by its number from 1; a number out of range counts as the nearest. Normalised.
const LensTable& BuiltInLens(int number);

/// Moves and scales the lens along the axis so that its ends lie at 1 and -1. False if that is impossible:
/// the ends coincide, or a value is not finite. The table must not be used then.
[[nodiscard]] bool NormaliseLens(LensTable* lens);

/// Inserts `more` surfaces (1 to kMoreElements) between each two of `lens`, interpolated from one to the
/// next, with random sizes below the interpolated ones. `lens` holds 1 to kFileSurfaces surfaces;
/// `randomState` is that of Rand15.
void ExtendLens(const LensTable& lens, int more, std::uint32_t* randomState, LensTable* extended);

} // namespace k7
