#include "library/K7Image.h"

#include "library/Chunks.h"

#include <cstring>
#include <new>

namespace k7 {

namespace {
constexpr const char* kSource = "library/K7Image";
constexpr std::int64_t kMostPixels = std::numeric_limits<std::int32_t>::max();
} // namespace

K7Image::K7Image(int width, int height)
    : Width(width)
    , Height(height)
    , WidthScale(720.0f / static_cast<float>(width)) {}

bool K7Image::SetStore(u16* pixels) {
    rows_ = Buffer<u16*>(static_cast<std::size_t>(Height), kSource, __LINE__);
    if (!pixels || !rows_) return false;
    Pixels = pixels;
    Rows = rows_.data();
    const std::size_t step = static_cast<std::size_t>(Width) * Channels;
    for (u16*& row : rows_) {
        row = pixels;
        pixels += step;
    }
    return true;
}

std::unique_ptr<K7Image> K7Image::Make(int width, int height) {
    if (width < 1 || height < 1 || static_cast<std::int64_t>(width) * height > kMostPixels) return nullptr;
    std::unique_ptr<K7Image> image(new (std::nothrow) K7Image(width, height));
    if (!image) return nullptr;
    const std::size_t words = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * Channels;
    image->store_ = ImageBuffer<u16>(words, kSource, __LINE__);
    if (!image->SetStore(image->store_.data())) return nullptr;
    return image;
}

std::unique_ptr<K7Image> K7Image::MakeOver(u16* pixels, int width, int height) {
    if (width < 1 || height < 1 || static_cast<std::int64_t>(width) * height > kMostPixels) return nullptr;
    std::unique_ptr<K7Image> image(new (std::nothrow) K7Image(width, height));
    if (!image || !image->SetStore(pixels)) return nullptr;
    return image;
}

std::unique_ptr<K7Image> K7Image::MakeCopy(const K7Image& source) {
    std::unique_ptr<K7Image> image = Make(source.Width, source.Height);
    if (!image) return nullptr;
    image->AspectX = source.AspectX;
    image->AspectY = source.AspectY;
    image->WidthScale = source.WidthScale;
    std::memcpy(image->Rows[0], source.Rows[0], source.RowBytes() * static_cast<std::size_t>(source.Height));
    return image;
}

void K7Image::CopyAlphaRows(K7Image* image, int first, int last, int) {
    for (int y = first; y <= last; ++y) {
        const u16* from = image->copySource_->Rows[y] + 3;
        u16* to = image->Rows[y] + 3;
        for (int x = 0; x < image->Width; ++x, from += Channels, to += Channels) *to = *from;
    }
}

void K7Image::CopyColourRows(K7Image* image, int first, int last, int) {
    for (int y = first; y <= last; ++y) {
        const u16* from = image->copySource_->Rows[y];
        u16* to = image->Rows[y];
        for (int x = 0; x < image->Width; ++x, from += Channels, to += Channels) {
            to[0] = from[0];
            to[1] = from[1];
            to[2] = from[2];
        }
    }
}

void K7Image::CopyAlpha(const K7Image* source) {
    copySource_ = source;
    RunImageChunks(this, CopyAlphaRows, Height);
}

void K7Image::CopyColour(const K7Image* source) {
    copySource_ = source;
    RunImageChunks(this, CopyColourRows, Height);
}

void K7Image::CopyScaled(const K7Image* source, float gain0, float gain1, float gain2, float gain3) {
    if (gain0 == 1.0f && gain1 == 1.0f && gain2 == 1.0f && gain3 == 1.0f) {
        for (int y = 0; y < source->Height; ++y) std::memcpy(Rows[y], source->Rows[y], source->RowBytes());
        return;
    }
    const float gains[Channels] = {gain0, gain1, gain2, gain3};
    for (int y = 0; y < source->Height; ++y) {
        const u16* from = source->Rows[y];
        u16* to = Rows[y];
        for (int x = 0; x < source->Width; ++x, from += Channels, to += Channels)
            for (int c = 0; c < Channels; ++c)
                to[c] = ClampWord(Trunc(static_cast<float>(from[c]) * gains[c]));
    }
}

void K7Image::Fill(u16 red, u16 green, u16 blue, u16 alpha) {
    u16* to = Rows[0];
    for (int x = 0; x < Width; ++x, to += Channels) {
        to[0] = red;
        to[1] = green;
        to[2] = blue;
        to[3] = alpha;
    }
    for (int y = 1; y < Height; ++y) std::memcpy(Rows[y], Rows[0], RowBytes());
}

} // namespace k7
