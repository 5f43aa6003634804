#include "filters/NetworkMedian.h"

#include "filters/WindowMedians.h"

#include <algorithm>

namespace k7 {

template <class Sample>
NetworkMedian<Sample>::NetworkMedian(const PictureK7<Sample>& image)
    : image_(image)
    , room_(static_cast<std::size_t>(image.Width + kMost) * PictureK7<Sample>::Channels + kSpareKeys)
    , columns_(kMost * room_, "Clean")
    , spare_(static_cast<std::size_t>(image.Width) * PictureK7<Sample>::Channels, "Clean") {
    columns_.Zero();
}

template <class Sample>
void NetworkMedian<Sample>::FilterRows(int side, int low, Sample* to, Sample* above) {
    const Sample* rows[kMost + 1];
    for (int i = 0; i <= side; ++i) rows[i] = image_.Rows[std::min(low + i, image_.Height - 1)];
    Sample* const both[] = {to, above ? above : spare_.data()};
    if constexpr (SampleTraits<Sample>::kWords)
        kWindowsOfWords.Chosen()(side, rows, image_.Width, columns_.data(), room_, both);
    else
        kWindowsOfFloats.Chosen()(side, rows, image_.Width, columns_.data(), room_, both);
}

template class NetworkMedian<u16>;
template class NetworkMedian<float>;

} // namespace k7
