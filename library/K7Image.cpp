#include "library/K7Image.h"

#include "library/Chunks.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace k7 {

namespace {
constexpr const char* kSource = "library/K7Image";
constexpr std::int64_t kMostPixels = std::numeric_limits<std::int32_t>::max();
} // namespace

template <class Sample>
PictureK7<Sample>::PictureK7(int width, int height)
    : Width(width)
    , Height(height)
    , WidthScale(720.0f / static_cast<float>(width)) {}

template <class Sample>
bool PictureK7<Sample>::SetStore(Sample* pixels) {
    rows_ = Buffer<Sample*>(static_cast<std::size_t>(Height), kSource);
    if (!pixels || !rows_) return false;
    Pixels = pixels;
    Rows = rows_.data();
    const std::size_t step = static_cast<std::size_t>(Width) * Channels;
    for (Sample*& row : rows_) {
        row = pixels;
        pixels += step;
    }
    return true;
}

template <class Sample>
std::unique_ptr<PictureK7<Sample>> PictureK7<Sample>::Make(int width, int height) {
    if (width < 1 || height < 1 || static_cast<std::int64_t>(width) * height > kMostPixels) return nullptr;
    std::unique_ptr<PictureK7> image(new (std::nothrow) PictureK7(width, height));
    if (!image) return nullptr;
    const std::size_t samples = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * Channels;
    image->store_ = ImageBuffer<Sample>(samples, kSource);
    if (!image->SetStore(image->store_.data())) return nullptr;
    return image;
}

template <class Sample>
std::unique_ptr<PictureK7<Sample>> PictureK7<Sample>::MakeOver(Sample* pixels, int width, int height) {
    if (width < 1 || height < 1 || static_cast<std::int64_t>(width) * height > kMostPixels) return nullptr;
    std::unique_ptr<PictureK7> image(new (std::nothrow) PictureK7(width, height));
    if (!image || !image->SetStore(pixels)) return nullptr;
    return image;
}

template <class Sample>
std::unique_ptr<PictureK7<Sample>> PictureK7<Sample>::MakeCopy(const PictureK7& source) {
    std::unique_ptr<PictureK7> image = Make(source.Width, source.Height);
    if (!image) return nullptr;
    image->AspectX = source.AspectX;
    image->AspectY = source.AspectY;
    image->WidthScale = source.WidthScale;
    RunImageRows(source.Height, [&](int first, int last) {
        if (first > last) return;
        const auto rows = static_cast<std::size_t>(last - first + 1);
        std::memcpy(image->Rows[first], source.Rows[first], source.RowBytes() * rows);
    });
    return image;
}

template <class Sample>
void PictureK7<Sample>::CopyAlpha(const PictureK7* source) {
    RunImageRows(Height, [&](int first, int last) {
        for (int y = first; y <= last; ++y) {
            const Sample* from = source->Rows[y] + 3;
            Sample* to = Rows[y] + 3;
            for (int x = 0; x < Width; ++x, from += Channels, to += Channels) *to = *from;
        }
    });
}

template <class Sample>
void PictureK7<Sample>::CopyColour(const PictureK7* source) {
    RunImageRows(Height, [&](int first, int last) {
        for (int y = first; y <= last; ++y) {
            const Sample* from = source->Rows[y];
            Sample* to = Rows[y];
            for (int x = 0; x < Width; ++x, from += Channels, to += Channels) std::copy_n(from, 3, to);
        }
    });
}

template <class Sample>
void PictureK7<Sample>::CopyScaled(const PictureK7* source, float gain0, float gain1, float gain2,
                                   float gain3) {
    if (gain0 == 1.0f && gain1 == 1.0f && gain2 == 1.0f && gain3 == 1.0f) {
        for (int y = 0; y < source->Height; ++y) std::memcpy(Rows[y], source->Rows[y], source->RowBytes());
        return;
    }
    const float gains[Channels] = {gain0, gain1, gain2, gain3};
    for (int y = 0; y < source->Height; ++y) {
        const Sample* from = source->Rows[y];
        Sample* to = Rows[y];
        for (int x = 0; x < source->Width; ++x, from += Channels, to += Channels)
            for (int c = 0; c < Channels; ++c)
                to[c] = SampleTraits<Sample>::Truncated(static_cast<float>(from[c]) * gains[c]);
    }
}

template <class Sample>
void PictureK7<Sample>::Fill(Sample red, Sample green, Sample blue, Sample alpha) {
    Sample* to = Rows[0];
    for (int x = 0; x < Width; ++x, to += Channels) {
        to[0] = red;
        to[1] = green;
        to[2] = blue;
        to[3] = alpha;
    }
    for (int y = 1; y < Height; ++y) std::memcpy(Rows[y], Rows[0], RowBytes());
}

// The blurs are defined, and made for both depths, in files of their own.
template class PictureK7<u16>;
template class PictureK7<float>;

} // namespace k7
