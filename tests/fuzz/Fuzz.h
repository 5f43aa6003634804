#pragma once

#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fuzz {

/// The source of all random numbers: a round can be repeated with its seed.
class Chance {
public:
    explicit Chance(unsigned seed) : random_(seed) {}

    int Below(int end) { return std::uniform_int_distribution(0, end - 1)(random_); }
    std::size_t Index(std::string_view text) {
        return static_cast<std::size_t>(Below(static_cast<int>(text.size())));
    }
    double Normal() { return std::normal_distribution()(random_); }

    /// A text with a few bytes replaced, inserted, duplicated or erased; `bytes` are likely ones.
    std::string Damaged(std::string text, std::string_view bytes);

private:
    std::mt19937 random_;
};

/// Makes and reads one input. Throws std::runtime_error if the reader misbehaved.
using Round = std::function<void(Chance&)>;

Round LensFiles();
Round Pictures(const std::string& folder);
Round Settings(const std::string& folder);

inline void Require(bool holds, const std::string& what) {
    if (!holds) throw std::runtime_error(what);
}

} // namespace fuzz
