#pragma once

#include "library/GaussianKernel.h"
#include "library/Samples.h"

#include <cstdint>
#include <memory>

namespace k7 {

/// The sums of the samples round each pixel of a channel, times the weights of a table; black lies beyond the
/// picture. Sums of words are whole numbers below 2^53.
template <class Sample>
class KernelSums {
public:
    virtual ~KernelSums() = default;

    /// Begins a channel of a picture. Channels follow each other upwards from one that a transform takes
    /// first.
    virtual void Start(const PictureK7<Sample>& source, int channel) = 0;

    /// Writes the sums along row y. Rows are asked for upwards from 0; of the rows up to y of this channel
    /// the source is not needed any more.
    virtual void Row(int y, double* sums) = 0;
};

/// How far from a pixel the table has places that lie on the picture.
struct KernelReach {
    int x, y;
    int Wide() const { return 2 * x + 1; }
    int Tall() const { return 2 * y + 1; }
    std::int64_t Places() const { return static_cast<std::int64_t>(Wide()) * Tall(); }
};

// Ways to the same sums, for pictures of a size; null where allocation fails.

/// For floats: the places that share a weight are added first, in double precision. For tables whose size is
/// not much more than kMostBellSize.
inline constexpr int kMostBellSize = 41;
[[nodiscard]] std::unique_ptr<KernelSums<float>> MakeBellSums(const GaussianKernel2D& kernel, int width,
                                                              int height);

/// Channels of floats that a transform takes together: 0 and 1, 2 and 3.
inline constexpr int kFloatChannels = 2;

/// By a transform of the whole picture, in a time that hardly depends on the reach. Sums of words are exact;
/// of floats they err by less than 1e-12 of the largest.
template <class Sample>
[[nodiscard]] std::unique_ptr<KernelSums<Sample>> MakeTransformSums(const GaussianKernel2D& kernel,
                                                                    KernelReach reach, int width, int height);

} // namespace k7
