#pragma once

#include "host/Image.h"

#include <OpenImageIO/typedesc.h>

namespace media {

/// What OpenImageIO calls a depth.
inline OIIO::TypeDesc PixelType(host::Depth depth) {
    switch (depth) {
    case host::Depth::Int8:
        return OIIO::TypeDesc::UINT8;
    case host::Depth::Int16:
        return OIIO::TypeDesc::UINT16;
    case host::Depth::Half:
        return OIIO::TypeDesc::HALF;
    case host::Depth::Float:
        break;
    }
    return OIIO::TypeDesc::FLOAT;
}

/// Asks OpenImageIO to leave the colours of files with alpha as they are, in either direction.
inline constexpr const char* kUnassociatedAlpha = "oiio:UnassociatedAlpha";

} // namespace media
