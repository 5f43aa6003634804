#pragma once

#include "frame/adapter/HostNames.h"
#include "library/K7Image.h"

#include <memory>

namespace k7 {

class PluginK7;

// Pictures cross between the host and the effects in whole rows, within a frame on all its threads. A host
// word loses its lowest bit on the way in; of floats only NaN and infinities are changed. Full scale is full
// scale on both sides. Rows keep their order. `Sample` is u16 or float. Where the frame is aborted, reading
// fails, and what is written lacks rows.

/// A new picture of the source's size and aspect. Null without a source or where allocation fails.
template <class Sample>
[[nodiscard]] std::unique_ptr<PictureK7<Sample>> HostToK7Image(const host::Image* source);

/// A new picture of the size of `like`, into which the source is resampled where its size differs, on the
/// threads of `core`. Null without a source or where allocation fails.
template <class Sample>
[[nodiscard]] std::unique_ptr<PictureK7<Sample>> HostToK7Image(const host::Image* source,
                                                               const PictureK7<Sample>& like, PluginK7* core);

/// Fills a picture that is there already and keeps its size; resamples on this thread. False, with the
/// picture as it was, without a source or where allocation fails.
template <class Sample>
[[nodiscard]] bool HostIntoK7Image(const host::Image* source, PictureK7<Sample>& target);

/// A new host image of the kind of `like`, which has the size of `source`. Null where allocation fails. The
/// caller owns it.
template <class Sample>
[[nodiscard]] host::Image* K7ImageToHost(const host::Image& like, const PictureK7<Sample>& source);

} // namespace k7
