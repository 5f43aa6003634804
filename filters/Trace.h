#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"

namespace k7 {

struct TraceInfo {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    FloatControlK7 Leve;    ///< level of the contour, in percent of full scale
    CheckboxControlK7 Over; ///< draw over the picture; otherwise on black
    ListControlK7 TCol;     ///< 1 a line for each channel, 2 white lines
};

/// Draws the contours of a level: a channel is marked at full scale where its 2 x 2 pixels lie partly above
/// and partly below.
class Trace : public PluginK7, public TraceInfo, public OverlayK7 {
public:
    void Process() override;

private:
    template <class Sample>
    void TraceRows(const PictureK7<Sample>& in, const PictureK7<Sample>& out, int first, int last);
};

} // namespace k7
