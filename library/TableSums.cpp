#include "library/TableSums.h"

#include "library/PairSums.h"

#include <algorithm>

namespace k7 {

namespace {

constexpr const char* kSource = "library/K7Image";
constexpr int kChannels = K7Image::Channels;

/// Words are kept less half their range, so that the sum of two fits 16 bits with a sign.
constexpr int kHalfScale = 16384;

constexpr int WholeTiles(int lanes) {
    return (lanes + kPairTile - 1) / kPairTile * kPairTile;
}

} // namespace

TableSums::TableSums(const GaussianKernel2D& kernel, KernelReach reach, int width)
    : reach_(reach)
    , pairsOfRow_((reach.Wide() + 1) / 2)
    , lanes_(WholeTiles(width * kChannels))
    , keptLanes_(static_cast<std::size_t>(lanes_) + static_cast<std::size_t>(2 * pairsOfRow_ * kChannels))
    , groups_(static_cast<std::size_t>(reach.Tall()), kSource)
    , weights_(static_cast<std::size_t>(reach.Tall()) * static_cast<std::size_t>(pairsOfRow_), kSource)
    , rows_((static_cast<std::size_t>(reach.Tall()) + 2) * keptLanes_, kSource)
    , pairs_(keptLanes_ + kToCacheLine<std::int32_t>, kSource)
    , sums_(static_cast<std::size_t>(lanes_), kSource) {
    if (*this) MakeGroups(kernel);
}

void TableSums::MakeGroups(const GaussianKernel2D& kernel) {
    std::int32_t* to = weights_.data();
    for (int row = -reach_.y; row <= reach_.y; ++row) {
        const std::int32_t* const weights = to;
        for (int column = -reach_.x; column <= reach_.x; column += 2) {
            const int second = column < reach_.x ? kernel.Weight(row, column + 1) : 0;
            *to++ = kernel.Weight(row, column) | second << 16;
            bias_ += static_cast<std::uint32_t>(kernel.Weight(row, column) + second) * kHalfScale;
        }
        const auto same = [&](const Group& group) {
            return !group.both && std::equal(weights, weights + pairsOfRow_, group.weights);
        };
        Group* const end = groups_.begin() + groupCount_;
        Group* const found = std::find_if(groups_.begin(), end, same);
        if (found == end) {
            *end = {row, 0, false, weights};
            ++groupCount_;
        } else {
            found->other = row;
            found->both = true;
        }
    }
}

void TableSums::Start(const K7Image& source, int first) {
    source_ = &source;
    std::fill(rows_.begin(), rows_.end() - keptLanes_, static_cast<std::int16_t>(-kHalfScale));
    std::fill(rows_.end() - keptLanes_, rows_.end(), std::int16_t{0});
    std::fill(pairs_.begin(), pairs_.end(), 0);
    for (int y = first - reach_.y; y < first + reach_.y; ++y) Load(y);
}

void TableSums::Load(int y) {
    if (y < 0 || y >= source_->Height) return;
    const std::size_t samples = static_cast<std::size_t>(source_->Width) * kChannels;
    std::int16_t* const to = Kept(y) + reach_.x * kChannels;
    std::transform(source_->Rows[y], source_->Rows[y] + samples, to,
                   [](u16 word) { return static_cast<std::int16_t>(word - kHalfScale); });
}

std::int16_t* TableSums::Kept(int y) const {
    const int tall = reach_.Tall();
    const int place = y < 0 || y >= source_->Height ? tall : y % tall;
    return rows_.data() + static_cast<std::size_t>(place) * keptLanes_;
}

const std::int32_t* TableSums::Row(int y) {
    Load(y + reach_.y);
    std::fill(sums_.begin(), sums_.end(), static_cast<std::int32_t>(bias_));
    const std::int16_t* const none = rows_.end() - keptLanes_;
    const int pairLanes = static_cast<int>(keptLanes_) - kChannels;
    for (const Group* group = groups_.begin(); group != groups_.begin() + groupCount_; ++group) {
        const std::int16_t* const other = group->both ? Kept(y + group->other) : none;
        kFoldPairs.Chosen()(Kept(y + group->row), other, kChannels, pairLanes, FromCacheLine(pairs_));
        kAddPairs.Chosen()(FromCacheLine(pairs_), 2 * kChannels, group->weights, pairsOfRow_, lanes_,
                           sums_.data());
    }
    return sums_.data();
}

} // namespace k7
