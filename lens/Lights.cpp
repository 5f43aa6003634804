#include "lens/Lights.h"

#include "library/Chunks.h"

#include <algorithm>

namespace k7 {

namespace {

template <class Sample, class Visit>
void ForLights(const PictureK7<Sample>& map, const PixelBox& box, Visit visit) {
    for (int y = box.Bottom; y < box.Top && !AbortRequested(); ++y) {
        const Sample* pixel = map.Rows[y] + static_cast<std::size_t>(box.Left) * K7Image::Channels;
        for (int x = box.Left; x < box.Right; ++x, pixel += K7Image::Channels)
            if (pixel[0] > 0 || pixel[1] > 0 || pixel[2] > 0)
                visit(Light{x, y, static_cast<float>(pixel[0]), static_cast<float>(pixel[1]),
                            static_cast<float>(pixel[2])});
    }
}

} // namespace

template <class Sample>
bool LightList::Collect(const PictureK7<Sample>& lightMap, const PixelBox& box, const char* source) {
    std::size_t count = 0;
    ForLights(lightMap, box, [&](const Light&) { ++count; });
    if (AbortRequested()) return false; // before memory is filled for nothing
    lights_ = Buffer<Light>(count, source);
    if (lights_.size() != count) return false;
    Light* next = lights_.begin();
    ForLights(lightMap, box, [&](const Light& light) { *next++ = light; });
    return !AbortRequested();
}

template bool LightList::Collect(const K7Image&, const PixelBox&, const char*);
template bool LightList::Collect(const FloatImageK7&, const PixelBox&, const char*);

PixelBox LightList::Bounds() const {
    if (size() == 0) return {0, 0, 0, 0};
    PixelBox box{begin()->X, begin()->Y, begin()->X + 1, begin()->Y + 1};
    for (const Light& light : *this) {
        box.Left = std::min(box.Left, light.X);
        box.Right = std::max(box.Right, light.X + 1);
    }
    box.Top = (end() - 1)->Y + 1;
    return box;
}

} // namespace k7
