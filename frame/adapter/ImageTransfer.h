#pragma once

#include "frame/adapter/HostNames.h"
#include "library/K7Image.h"

#include <memory>

namespace k7 {

class PluginK7;

// Pictures cross between the host and the effects pixel by pixel, in 16-bit units: a host word loses its
// lowest bit on the way in, and full scale is full scale on both sides. Rows keep their order.

/// A new picture of the source's size and aspect. Null without a source or memory.
[[nodiscard]] std::unique_ptr<K7Image> HostToK7Image(const host::Image* source);

/// A new picture of the size of `like`, into which the source is resampled where its size differs, on the
/// threads of `core`. Null without a source or memory.
[[nodiscard]] std::unique_ptr<K7Image> HostToK7Image(const host::Image* source, const K7Image& like,
                                                     PluginK7* core);

/// Fills a picture that is there already and keeps its size; resamples on this thread. False, with the
/// picture as it was, without a source or memory.
[[nodiscard]] bool HostIntoK7Image(const host::Image* source, K7Image& target);

/// A new host image of the kind of `like`, which has the size of `source`. Null without memory. The caller
/// owns it.
[[nodiscard]] host::Image* K7ImageToHost(const host::Image& like, const K7Image& source);

} // namespace k7
