#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"

namespace k7 {

struct DBlurInfo {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    AngleOverlayK7 AngleOverlay;
    FloatControlK7 Leng; ///< percent of the frame's width; negative: the other way
    AngleControlK7 Angl;
    CheckboxControlK7 Cent; ///< the streak's middle, not its start, lies on the pixel
};

/// Directional blur: each pixel becomes the mean of the pixels under a streak of any length and angle, drawn
/// with smooth edges. Edge pixels repeat beyond the frame. The streak is at most as long as the frame's
/// longer side.
class DBlur : public PluginK7, public DBlurInfo, public OverlayK7 {
public:
    void Process() override;
    void Draw() override;
    void Event(int event, float x, float y) override;

private:
    template <class Sample>
    void Blur(const PictureK7<Sample>& in, const PictureK7<Sample>& out);
    float PixelAngle(double aspect) const;
};

} // namespace k7
