#pragma once

#include "baselib/Buffer.h"
#include "library/GaussianKernel.h"
#include "library/K7Image.h"
#include "library/KernelSums.h"

#include <cstdint>

namespace k7 {

/// The words round each pixel times the weights of a table, summed place by place and for all channels at
/// once; black lies beyond the picture. The weights within reach must not add up to more than kMostWeight.
/// Rows of the picture that get the same weights are added before they are multiplied.
class TableSums {
public:
    static constexpr int kMostWeight = 65535;

    /// Test the object before use: it is false where allocation fails.
    TableSums(const GaussianKernel2D& kernel, KernelReach reach, int width);
    explicit operator bool() const { return groups_ && weights_ && rows_ && pairs_ && sums_; }

    /// Begins with row `first` of a picture of the width.
    void Start(const K7Image& source, int first);

    /// The sums along row y, four to a pixel, until the next call. Rows are asked for upwards from the first.
    const std::int32_t* Row(int y);

private:
    /// One row of the table, or two of the same weights.
    struct Group {
        int row, other;              ///< from the table's middle
        bool both;                   ///< otherwise there is no other
        const std::int32_t* weights; ///< in pairs along the row
    };

    void MakeGroups(const GaussianKernel2D& kernel);
    void Load(int y);
    std::int16_t* Kept(int y) const;

    const KernelReach reach_;
    const int pairsOfRow_;
    const int lanes_;             ///< of a row of results
    const std::size_t keptLanes_; ///< of a row with its margins
    std::uint32_t bias_ = 0;
    Buffer<Group> groups_; ///< the first ones are used
    int groupCount_ = 0;
    Buffer<std::int32_t> weights_;
    Buffer<std::int16_t> rows_; ///< those under the table, then a black one and one of zeros
    Buffer<std::int32_t> pairs_;
    Buffer<std::int32_t> sums_;
    const K7Image* source_ = nullptr;
};

} // namespace k7
