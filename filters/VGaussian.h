#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"

namespace k7 {

struct VGaussianInfo {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    CheckboxControlK7 BRGB; ///< blur colour
    CheckboxControlK7 BluA; ///< blur alpha
    CheckboxControlK7 Sync; ///< alpha takes the sizes of colour
    FloatControlK7 RadX;    ///< sizes of colour and of alpha, in percent of the picture's width on both axes
    FloatControlK7 RadY;
    FloatControlK7 RdAX;
    FloatControlK7 RDAY;
};

/// Gaussian blur with a size for each axis, and sizes of their own for colour and for alpha.
class VGaussian : public PluginK7, public VGaussianInfo, public OverlayK7 {
public:
    void Process() override;
    void RefreshControls() override;

private:
    template <class Sample>
    void Blur(const PictureK7<Sample>& in, PictureK7<Sample>& out) const;
};

} // namespace k7
