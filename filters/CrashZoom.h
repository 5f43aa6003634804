#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"
#include "library/Numbers.h"

namespace k7 {

struct CrashZoomInfo {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    CrosshairOverlayK7 CentreOverlay;
    CircleOverlayK7 ClearOverlay;
    PositionControlK7 Cntr;
    SizeControlK7 DimX;  ///< diameter of the clear circle in widths of the frame
    FloatControlK7 Spee; ///< length of the blur in percent of the distance beyond the clear circle
    ListControlK7 Samp;  ///< 1 to 4: 1, 2, 4 or 8 samples for each pixel of the way
};

/// Radial blur: each pixel beyond the clear circle becomes the mean of the pixels on a line towards the
/// centre, or away from it where the speed is negative. Edge pixels repeat beyond the frame.
class CrashZoom : public PluginK7, public CrashZoomInfo, public OverlayK7 {
public:
    void Process() override;
    void Draw() override;
    void Event(int event, float x, float y) override;

private:
    template <class Sample>
    void Zoom(const PictureK7<Sample>& in, PictureK7<Sample>& out);
    template <class Sample>
    void BlurPixel(const PictureK7<Sample>& in, int x, int y, Sample* pixel) const;

    int Width = 0;
    int Height = 0;
    float AspectX = 1.0f; ///< of the frame; the overlay's is that of the preview
    float AspectY = 1.0f;
    float ClearPixels = 0.0f; ///< radius of the clear circle
    float CentreX = 0.0f;     ///< pixels
    float CentreY = 0.0f;
    float SpeedFactor = 0.0f;
    int SampleIndex = 1;
};

} // namespace k7
