#include "filters/MergeNetwork.h"

#include <algorithm>
#include <numeric>

namespace k7 {

namespace {

std::vector<std::uint32_t> EverySecond(const std::vector<std::uint32_t>& wires, std::size_t first) {
    std::vector<std::uint32_t> taken;
    taken.reserve(wires.size() / 2 + 1);
    for (std::size_t i = first; i < wires.size(); i += 2) taken.push_back(wires[i]);
    return taken;
}

} // namespace

// While a network is made its wires are numbers; Prune turns them to bytes.

MergeNetwork::MergeNetwork(const std::vector<int>& runs, int first, int count) {
    std::vector<Wires> wires;
    for (const int length : runs) {
        Wires& run = wires.emplace_back(length);
        std::iota(run.begin(), run.end(), static_cast<std::uint32_t>(inputs_));
        inputs_ += length;
    }
    const Wires sorted = MergeAll(wires);
    Prune(Wires(sorted.begin() + first, sorted.begin() + first + count));
}

MergeNetwork MergeNetwork::Sort(int count) {
    return {std::vector<int>(static_cast<std::size_t>(count), 1), 0, count};
}

/// Merges runs of about the same length with each other, so that no long one is walked often.
MergeNetwork::Wires MergeNetwork::MergeAll(const std::vector<Wires>& runs) {
    std::vector<Wires> left = runs;
    const auto longer = [](const Wires& a, const Wires& b) { return a.size() > b.size(); };
    std::make_heap(left.begin(), left.end(), longer);
    const auto takeShortest = [&] {
        std::pop_heap(left.begin(), left.end(), longer);
        Wires run = std::move(left.back());
        left.pop_back();
        return run;
    };
    while (left.size() > 1) {
        const Wires a = takeShortest();
        left.push_back(Merge(a, takeShortest()));
        std::push_heap(left.begin(), left.end(), longer);
    }
    return left.front();
}

/// Merges the even and the odd places of both runs, and then only neighbours can be out of order.
MergeNetwork::Wires MergeNetwork::Merge(const Wires& a, const Wires& b) {
    if (a.empty()) return b;
    if (b.empty()) return a;
    if (a.size() == 1 && b.size() == 1) {
        comparators_.push_back({a[0], b[0]});
        return {a[0], b[0]};
    }
    const Wires even = Merge(EverySecond(a, 0), EverySecond(b, 0));
    const Wires odd = Merge(EverySecond(a, 1), EverySecond(b, 1));
    Wires merged = {even[0]};
    merged.reserve(a.size() + b.size());
    for (std::size_t i = 0; i < odd.size(); ++i) {
        merged.push_back(odd[i]);
        if (i + 1 == even.size()) continue;
        comparators_.push_back({odd[i], even[i + 1]});
        merged.push_back(even[i + 1]);
    }
    if (even.size() > odd.size() + 1) merged.push_back(even.back());
    return merged;
}

/// Drops what no result depends on, and orders the rest by steps, as early as its wires allow.
void MergeNetwork::Prune(const Wires& results) {
    enum Kind { Both, LowOnly, HighOnly, Unread };
    const auto wireCount = static_cast<std::size_t>(inputs_);
    std::vector<bool> read(wireCount);
    for (const std::uint32_t wire : results) read[wire] = true;
    std::vector<Kind> kinds(comparators_.size());
    for (std::size_t i = comparators_.size(); i-- > 0;) {
        const auto [low, high] = comparators_[i];
        kinds[i] = read[low] ? (read[high] ? Both : LowOnly) : (read[high] ? HighOnly : Unread);
        if (kinds[i] != Unread) read[low] = read[high] = true;
    }

    struct Placed {
        std::uint32_t step;
        Kind kind;
        Comparator comparator;
    };
    std::vector<Placed> placed;
    std::vector<std::uint32_t> free(wireCount); // the step from which a wire is
    for (std::size_t i = 0; i < comparators_.size(); ++i) {
        if (kinds[i] == Unread) continue;
        const auto [low, high] = comparators_[i];
        const std::uint32_t step = std::max(free[low], free[high]);
        free[low] = free[high] = step + 1;
        placed.push_back({step, kinds[i], {low * kWireBytes, high * kWireBytes}});
    }
    std::stable_sort(placed.begin(), placed.end(), [](const Placed& a, const Placed& b) {
        return a.step != b.step ? a.step < b.step : a.kind < b.kind;
    });

    comparators_.clear();
    std::vector<bool> copied(wireCount, true);
    Kind last = Both;
    for (const auto& [step, kind, comparator] : placed) {
        comparators_.push_back(comparator);
        if (step == 0) {
            ++firstCount_;
            copied[comparator.low / kWireBytes] = copied[comparator.high / kWireBytes] = false;
            continue;
        }
        if (steps_.empty() || kind < last) steps_.push_back({0, 0, 0});
        last = kind;
        ComparatorStep& to = steps_.back();
        ++(kind == Both ? to.both : kind == LowOnly ? to.lowOnly : to.highOnly);
    }
    for (std::uint32_t wire = 0; wire < wireCount; ++wire)
        if (copied[wire]) copied_.push_back(wire * kWireBytes);
    for (const std::uint32_t wire : results) results_.push_back(wire * kWireBytes);
}

ComparatorList MergeNetwork::List() const {
    const auto size = [](const auto& list) { return static_cast<int>(list.size()); };
    return {copied_.data(), size(copied_), comparators_.data(), firstCount_,
            steps_.data(),  size(steps_),  results_.data(),     size(results_)};
}

} // namespace k7
