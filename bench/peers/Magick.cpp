#include "bench/peers/PeerFilters.h"

#include <magick/api.h>

#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

namespace k7::bench {

std::function<void()> MagickSpreadFrame(unsigned radius, int width, int height, int threads) {
    static const bool ready = (InitializeMagick(nullptr), true);
    if (!ready || !SetMagickResourceLimit(ThreadsResource, threads))
        throw std::runtime_error("GraphicsMagick: no threads");
    const std::size_t side = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<std::uint16_t> words(4 * side);
    std::minstd_rand random;
    for (std::uint16_t& word : words) word = static_cast<std::uint16_t>(random());
    ExceptionInfo problem;
    GetExceptionInfo(&problem);
    const std::shared_ptr<Image> noise(ConstituteImage(static_cast<unsigned long>(width),
                                                       static_cast<unsigned long>(height), "RGBA", ShortPixel,
                                                       words.data(), &problem),
                                       DestroyImage);
    if (!noise) throw std::runtime_error("GraphicsMagick: no picture");
    return [noise, radius] {
        ExceptionInfo failure;
        GetExceptionInfo(&failure);
        Image* spread = SpreadImage(noise.get(), radius, &failure);
        if (!spread) throw std::runtime_error("GraphicsMagick: no spread");
        DestroyImage(spread);
        DestroyExceptionInfo(&failure);
    };
}

} // namespace k7::bench
