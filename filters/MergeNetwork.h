#pragma once

#include "filters/Comparators.h"

#include <vector>

namespace k7 {

/// A network that merges sorted runs and keeps some ranks of the result: odd-even merges (Batcher, Sorting
/// networks and their applications, 1968; for any lengths Knuth, The Art of Computer Programming 3, 5.3.4),
/// without the comparators on which none of those ranks depends.
class MergeNetwork {
public:
    MergeNetwork() = default;

    /// Ranks `first` to `first + count - 1` of the runs together. The inputs are the runs one behind the
    /// other, each ascending.
    MergeNetwork(const std::vector<int>& runs, int first, int count);

    /// Sorts `count` keys.
    static MergeNetwork Sort(int count);

    int Inputs() const { return inputs_; }
    int Results() const { return static_cast<int>(results_.size()); }
    ComparatorList List() const;

private:
    using Wires = std::vector<std::uint32_t>;

    Wires MergeAll(const std::vector<Wires>& runs);
    Wires Merge(const Wires& a, const Wires& b);
    void Prune(const Wires& results);

    int inputs_ = 0;
    Wires copied_;
    std::vector<Comparator> comparators_;
    int firstCount_ = 0;
    std::vector<ComparatorStep> steps_;
    Wires results_;
};

} // namespace k7
