#include "media/Shrink.h"

#include "host/Tags.h"

#include <algorithm>
#include <vector>

namespace media {

using host::Image;

namespace {

/// Adds the pixels of a row that fall into each pixel of a smaller one.
void AddRow(const std::vector<float>& row, int divisor, std::vector<float>& sums) {
    const float* from = row.data();
    for (float* to = sums.data(); to != sums.data() + sums.size(); to += 4)
        for (int i = 0; i < divisor; ++i, from += 4)
            for (int c = 0; c < 4; ++c) to[c] += from[c];
}

} // namespace

Image* Shrunk(const Image& picture, int divisor) {
    const int width = std::max(1, picture.Width / divisor);
    const int height = std::max(1, picture.Height / divisor);
    host::Ref<Image> small(Image::Make(width, height, picture.PixelDepth, picture.PixelPlanes));
    if (!small) return nullptr;
    small->AspectX = picture.AspectX;
    small->AspectY = picture.AspectY;
    if (picture.HasAttr(host::kTagOpaque)) small->SetAttrs({{host::kTagOpaque, 0}});

    // A picture narrower than the divisor is read beyond its end: as zeros.
    std::vector<float> row(4 * static_cast<std::size_t>(std::max(picture.Width, width * divisor)));
    std::vector<float> sums(4 * static_cast<std::size_t>(width));
    const float share = 1.0f / static_cast<float>(divisor * divisor);
    for (int y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), 0.0f);
        for (int i = 0; i < divisor; ++i) {
            picture.ReadRow(std::min(y * divisor + i, picture.Height - 1), row.data());
            AddRow(row, divisor, sums);
        }
        for (float& sum : sums) sum *= share;
        small->WriteRow(y, sums.data());
    }
    return small.release();
}

} // namespace media
