#pragma once

#include "media/sample/Paint.h"

namespace media::sample {

/// Light and opacity of a place on something that moves; the light is not multiplied by the opacity.
struct Paint {
    Light light;
    float alpha = 0;
};

/// The tram in its own coordinates: 0 to kTramLength along the rails, 0 to kTramHeight upward from the rail.
inline constexpr float kTramLength = 380;
inline constexpr float kTramHeight = 178;
Paint TramAt(float x, float y);

} // namespace media::sample
