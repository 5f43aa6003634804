#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"

namespace k7 {

struct DitherInfo {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    SizeControlK7 Radius;   ///< width of the box that pixels come from, in tenths of the picture's width
    CheckboxControlK7 DpEd; ///< the edges of the picture repeat beyond it; otherwise it is empty there
    ListControlK7 DiRe;     ///< 1 both axes, 2 horizontal, 3 vertical
};

/// Breaks a picture up: each pixel is one of its neighbours, drawn at random. The pattern depends on the time
/// and starts again in each part into which the owner has the frame divided.
class Dither : public PluginK7, public DitherInfo, public OverlayK7 {
public:
    void Process() override;

private:
    template <class Sample>
    void ScatterRows(const PictureK7<Sample>& in, const PictureK7<Sample>& out, int first, int last);
};

} // namespace k7
