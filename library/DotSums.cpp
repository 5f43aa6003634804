#include "library/KernelSums.h"

#include "baselib/Buffer.h"
#include "library/Dot.h"
#include "library/K7Image.h"

#include <algorithm>
#include <new>

namespace k7 {

namespace {

constexpr const char* kSource = "library/K7Image";

/// The sums of a row, at pieces of `words` that begin `step` apart.
void DotRow(const std::int16_t* words, std::ptrdiff_t step, const std::int16_t* weights, std::size_t blocks,
            int width, double* sums) {
    constexpr int tile = 64;
    std::int32_t exact[tile];
    for (int x = 0; x < width; x += tile, words += tile * step) {
        const int count = std::min(tile, width - x);
        Dots(words, step, weights, blocks, count, exact);
        std::copy_n(exact, count, sums + x);
    }
}

/// Keeps the rows round the one in work, column after column, and the weights in the same order. So the words
/// below the table at a pixel are one piece of memory, and a step to the next row is a step of one word: the
/// place of each column's lowest word becomes that of its left neighbour's highest.
class DotSums : public KernelSums<u16> {
public:
    DotSums(const GaussianKernel2D& kernel, KernelReach reach, int width, int height)
        : tall_(reach.Tall())
        , reach_(reach)
        , blocks_(DotBlocks(static_cast<std::size_t>(reach.Places())))
        , weights_(blocks_ * kDotBlock, kSource, __LINE__)
        , words_((static_cast<std::size_t>(width) + static_cast<std::size_t>(2 * reach.x)) *
                         static_cast<std::size_t>(tall_) +
                     static_cast<std::size_t>(height) + static_cast<std::size_t>(reach.y) + kDotBlock,
                 kSource, __LINE__) {
        if (!*this) return;
        weights_.Zero();
        std::int16_t* to = weights_.data();
        for (int column = -reach.x; column <= reach.x; ++column)
            for (int row = -reach.y; row <= reach.y; ++row)
                *to++ = static_cast<std::int16_t>(kernel.Weight(row, column));
    }
    explicit operator bool() const { return weights_ && words_; }

    void Start(const K7Image& source, int channel) override {
        source_ = &source;
        channel_ = channel;
        words_.Zero();
        base_ = words_.data();
        for (int y = 0; y < reach_.y; ++y) Advance(y);
    }

    void Row(int y, double* sums) override {
        Advance(y + reach_.y);
        DotRow(base_, tall_, weights_.data(), blocks_, source_->Width, sums);
    }

private:
    /// Goes on by one row, which brings row `highest` in.
    void Advance(int highest) {
        std::int16_t* to = ++base_ + (reach_.x + 1) * tall_ - 1;
        if (reach_.x > 0) to[-tall_] = 0;
        const bool inside = highest < source_->Height;
        const u16* word = inside ? source_->Rows[highest] + channel_ : nullptr;
        for (int x = 0; x < source_->Width; ++x, to += tall_)
            *to = inside ? static_cast<std::int16_t>(word[static_cast<std::ptrdiff_t>(x) * K7Image::Channels])
                         : std::int16_t{0};
    }

    std::ptrdiff_t tall_;
    KernelReach reach_;
    std::size_t blocks_;
    Buffer<std::int16_t> weights_; ///< zeros behind them up to whole blocks
    Buffer<std::int16_t> words_;
    std::int16_t* base_ = nullptr; ///< column -reach, row -reach of the pixel at x 0
    const K7Image* source_ = nullptr;
    int channel_ = 0;
};

} // namespace

std::unique_ptr<KernelSums<u16>> MakeDotSums(const GaussianKernel2D& kernel, KernelReach reach, int width,
                                             int height) {
    std::unique_ptr<DotSums> sums(new (std::nothrow) DotSums(kernel, reach, width, height));
    return sums && *sums ? std::move(sums) : nullptr;
}

} // namespace k7
