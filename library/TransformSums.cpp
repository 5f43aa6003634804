#include "library/KernelSums.h"

#include "baselib/Buffer.h"
#include "library/Chunks.h"
#include "library/FourierTransform.h"
#include "library/K7Image.h"
#include "library/NumberTransform.h"

#include <bit>
#include <new>

namespace k7 {

namespace {

constexpr const char* kSource = "library/K7Image";

/// A long line of samples of one channel and its exact transform.
template <class Sample>
class Spectrum {
public:
    static constexpr int kChannels = 1; ///< that are transformed together

    struct Transform {
        explicit Transform(std::size_t) {}
        explicit operator bool() const { return true; }
    };

    explicit Spectrum(std::size_t length) : numbers_(length <= kLongestTransform ? length : 0, kSource) {}
    explicit operator bool() const { return static_cast<bool>(numbers_); }

    void Clear() { numbers_.Zero(); }
    void Set(std::size_t i, const Sample* samples) { numbers_[i] = samples[0]; }
    void SetWeight(std::size_t i, int weight) { numbers_[i] = static_cast<FieldNumber>(weight); }
    double Get(std::size_t i, int) const { return static_cast<double>(numbers_[i]); }

    void Forward(const Transform&) { ForwardTransform(numbers_.data(), numbers_.size()); }
    void Backward(const Transform&) { BackwardTransform(numbers_.data(), numbers_.size()); }
    void Scale() {
        const FieldNumber scale = FieldInverse(numbers_.size());
        for (FieldNumber& number : numbers_) number = FieldMultiply(number, scale);
    }
    void MultiplyBy(const Spectrum& other) {
        for (std::size_t i = 0; i < numbers_.size(); ++i)
            numbers_[i] = FieldMultiply(numbers_[i], other.numbers_[i]);
    }

private:
    Buffer<FieldNumber> numbers_;
};

/// Of floats: two channels at once, one in the real, the other in the imaginary part. Sums with real weights
/// do not mix them.
template <>
class Spectrum<float> {
public:
    static constexpr int kChannels = kFloatChannels;

    using Transform = FourierTransform;

    explicit Spectrum(std::size_t length)
        : parts_{Buffer<double>(length, kSource), Buffer<double>(length, kSource)} {}
    explicit operator bool() const { return parts_[0] && parts_[1]; }

    void Clear() {
        for (Buffer<double>& part : parts_) part.Zero();
    }
    void Set(std::size_t i, const float* samples) {
        for (int c = 0; c < kChannels; ++c) parts_[c][i] = samples[c];
    }
    void SetWeight(std::size_t i, int weight) { parts_[0][i] = weight; }
    double Get(std::size_t i, int channel) const { return parts_[channel][i]; }

    void Forward(const Transform& transform) { transform.Forward(parts_[0].data(), parts_[1].data()); }
    void Backward(const Transform& transform) { transform.Backward(parts_[0].data(), parts_[1].data()); }
    void Scale() {
        const double scale = 1.0 / static_cast<double>(parts_[0].size());
        for (Buffer<double>& part : parts_)
            for (double& value : part) value *= scale;
    }
    void MultiplyBy(const Spectrum& other) {
        double* x = parts_[0].data();
        double* y = parts_[1].data();
        const double* u = other.parts_[0].data();
        const double* v = other.parts_[1].data();
        for (std::size_t i = 0; i < parts_[0].size(); ++i) {
            const double real = x[i] * u[i] - y[i] * v[i];
            y[i] = x[i] * v[i] + y[i] * u[i];
            x[i] = real;
        }
    }

private:
    Buffer<double> parts_[kChannels];
};

/// The picture and the table as two long lines: rows contiguous, with as many zeros between them and behind
/// the last as the table reaches. The sums are a circular product of the two lines.
template <class Sample>
class TransformSums : public KernelSums<Sample> {
public:
    TransformSums(const GaussianKernel2D& kernel, KernelReach reach, int width, int height)
        : row_(static_cast<std::size_t>(width) + static_cast<std::size_t>(reach.x))
        , length_(
              std::bit_ceil(row_ * (static_cast<std::size_t>(height) + static_cast<std::size_t>(reach.y))))
        , transform_(length_)
        , weights_(length_)
        , samples_(length_) {
        if (!*this) return;
        // The weight that a sum takes from further on stands as far back from the start, round the end.
        weights_.Clear();
        for (int y = -reach.y; y <= reach.y; ++y)
            for (int x = -reach.x; x <= reach.x; ++x) {
                const std::ptrdiff_t back = -(y * static_cast<std::ptrdiff_t>(row_) + x);
                weights_.SetWeight(static_cast<std::size_t>(back) & (length_ - 1), kernel.Weight(y, x));
            }
        weights_.Forward(transform_);
        weights_.Scale();
    }
    explicit operator bool() const { return transform_ && weights_ && samples_; }

    void Start(const PictureK7<Sample>& source, int channel) override {
        channel_ = channel % Spectrum<Sample>::kChannels;
        if (channel_ != 0) return; // came with the one before
        width_ = source.Width;
        samples_.Clear();
        for (int y = 0; y < source.Height; ++y) {
            const Sample* pixel = source.Rows[y] + channel;
            std::size_t to = static_cast<std::size_t>(y) * row_;
            for (int x = 0; x < width_; ++x, pixel += K7Image::Channels) samples_.Set(to++, pixel);
        }
        samples_.Forward(transform_);
        if (AbortRequested()) return;
        samples_.MultiplyBy(weights_);
        samples_.Backward(transform_);
    }

    void Row(int y, double* sums) override {
        const std::size_t from = static_cast<std::size_t>(y) * row_;
        for (int x = 0; x < width_; ++x) sums[x] = samples_.Get(from + static_cast<std::size_t>(x), channel_);
    }

private:
    std::size_t row_;
    std::size_t length_;
    typename Spectrum<Sample>::Transform transform_;
    Spectrum<Sample> weights_; ///< transformed, over the length
    Spectrum<Sample> samples_;
    int width_ = 0;
    int channel_ = 0; ///< among those transformed together
};

} // namespace

template <class Sample>
std::unique_ptr<KernelSums<Sample>> MakeTransformSums(const GaussianKernel2D& kernel, KernelReach reach,
                                                      int width, int height) {
    std::unique_ptr<TransformSums<Sample>> sums(new (std::nothrow)
                                                    TransformSums<Sample>(kernel, reach, width, height));
    return sums && *sums ? std::move(sums) : nullptr;
}

template std::unique_ptr<KernelSums<u16>> MakeTransformSums(const GaussianKernel2D&, KernelReach, int, int);
template std::unique_ptr<KernelSums<float>> MakeTransformSums(const GaussianKernel2D&, KernelReach, int, int);

} // namespace k7
