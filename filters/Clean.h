#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"

namespace k7 {

struct CleanInfo {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    IntegerControlK7 XRad; ///< full width and height of the window, in pixels of a frame 720 wide
    IntegerControlK7 YRad;
};

/// Removes specks: each channel becomes its median over a window round the pixel. Windows shrink at the
/// borders; of an even number of values the upper of the two middle ones is taken.
class Clean : public PluginK7, public CleanInfo, public OverlayK7 {
public:
    void Process() override;
};

} // namespace k7
