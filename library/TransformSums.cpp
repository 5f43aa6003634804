#include "library/KernelSums.h"

#include "baselib/Buffer.h"
#include "library/Chunks.h"
#include "library/K7Image.h"
#include "library/NumberTransform.h"

#include <bit>
#include <new>

namespace k7 {

namespace {

constexpr const char* kSource = "library/K7Image";

/// The picture and the table as two long lines of numbers: rows one behind the other, with as many zeros
/// between them and behind the last as the table reaches. The sums are a circular product of the two lines.
class TransformSums : public KernelSums {
public:
    TransformSums(const GaussianKernel2D& kernel, KernelReach reach, int width, int height)
        : row_(static_cast<std::size_t>(width) + static_cast<std::size_t>(reach.x))
        , length_(
              std::bit_ceil(row_ * (static_cast<std::size_t>(height) + static_cast<std::size_t>(reach.y))))
        , weights_(Allowed(), kSource, __LINE__)
        , numbers_(Allowed(), kSource, __LINE__) {
        if (!*this) return;
        // The weight that a sum takes from further on stands as far back from the start, round the end.
        weights_.Zero();
        for (int y = -reach.y; y <= reach.y; ++y)
            for (int x = -reach.x; x <= reach.x; ++x) {
                const std::ptrdiff_t back = -(y * static_cast<std::ptrdiff_t>(row_) + x);
                weights_[static_cast<std::size_t>(back) & (length_ - 1)] =
                    static_cast<FieldNumber>(kernel.Weight(y, x));
            }
        ForwardTransform(weights_.data(), length_);
        const FieldNumber scale = FieldInverse(length_);
        for (FieldNumber& weight : weights_) weight = FieldMultiply(weight, scale);
    }
    explicit operator bool() const { return weights_ && numbers_; }

    void Start(const K7Image& source, int channel) override {
        width_ = source.Width;
        numbers_.Zero();
        for (int y = 0; y < source.Height; ++y) {
            const u16* word = source.Rows[y] + channel;
            FieldNumber* to = numbers_.data() + static_cast<std::size_t>(y) * row_;
            for (int x = 0; x < width_; ++x, word += K7Image::Channels) to[x] = *word;
        }
        ForwardTransform(numbers_.data(), length_);
        if (AbortRequested()) return;
        for (std::size_t i = 0; i < length_; ++i) numbers_[i] = FieldMultiply(numbers_[i], weights_[i]);
        BackwardTransform(numbers_.data(), length_);
    }

    void Row(int y, double* sums) override {
        const FieldNumber* from = numbers_.data() + static_cast<std::size_t>(y) * row_;
        for (int x = 0; x < width_; ++x) sums[x] = static_cast<double>(from[x]);
    }

private:
    std::size_t Allowed() const { return length_ <= kLongestTransform ? length_ : 0; }

    std::size_t row_;
    std::size_t length_;
    Buffer<FieldNumber> weights_; ///< transformed, over the length
    Buffer<FieldNumber> numbers_;
    int width_ = 0;
};

} // namespace

std::unique_ptr<KernelSums> MakeTransformSums(const GaussianKernel2D& kernel, KernelReach reach, int width,
                                              int height) {
    std::unique_ptr<TransformSums> sums(new (std::nothrow) TransformSums(kernel, reach, width, height));
    return sums && *sums ? std::move(sums) : nullptr;
}

} // namespace k7
