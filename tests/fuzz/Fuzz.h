#pragma once

#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fuzz {

/// Where all chance comes from: a round can be repeated with its seed.
class Chance {
public:
    explicit Chance(unsigned seed) : random_(seed) {}

    int Below(int end) { return std::uniform_int_distribution(0, end - 1)(random_); }
    std::size_t Index(std::string_view text) {
        return static_cast<std::size_t>(Below(static_cast<int>(text.size())));
    }
    double Normal() { return std::normal_distribution()(random_); }

    /// A text with a few bytes replaced, inserted, doubled or gone; `bytes` are likely ones.
    std::string Damaged(std::string text, std::string_view bytes);

private:
    std::mt19937 random_;
};

/// One input made and read. Throws std::runtime_error where the reader did what it must not.
using Round = std::function<void(Chance&)>;

Round LensFiles();
Round Pictures(const std::string& folder);
Round Settings(const std::string& folder);

inline void Require(bool holds, const std::string& what) {
    if (!holds) throw std::runtime_error(what);
}

} // namespace fuzz
