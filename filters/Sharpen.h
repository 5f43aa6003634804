#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"

namespace k7 {

struct SharpenInfo {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    IntegerControlK7 RadS; ///< radius in pixels of the picture
    FloatControlK7 Powe;   ///< ten times the share of the difference from the blur that is added
    IntegerControlK7 Iter; ///< how many times; below 1 counts as 1
};

/// Raises local contrast: an unsharp mask, one or more times over.
class Sharpen : public PluginK7, public SharpenInfo, public OverlayK7 {
public:
    void Process() override;
};

} // namespace k7
