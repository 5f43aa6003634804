#pragma once

#include <optional>

namespace k7 {

// A kernel file, NAME.kernel.cpp, is compiled once for each level of vector registers, in a namespace of that
// level's name (K7_LEVEL). It includes nothing but the lanes and plain declarations: an inline function of
// another header would exist once in the program, for one of the levels.

enum class VectorLevel {
    Baseline, ///< what every processor of the architecture has
    Avx2,
    Avx512, ///< with the dot products of 16-bit integers
};

/// The widest level of this processor, or the one that is forced.
VectorLevel CurrentVectorLevel();

/// For tests: kernels of this level, which the processor must have, until called with nothing.
void ForceVectorLevel(std::optional<VectorLevel> level);

/// One function for each level.
template <class Function>
struct PerLevel {
    Function* baseline;
    Function* avx2;
    Function* avx512;

    Function* Chosen() const {
        const VectorLevel level = CurrentVectorLevel();
        return level == VectorLevel::Avx512 ? avx512 : level == VectorLevel::Avx2 ? avx2 : baseline;
    }
};

} // namespace k7
