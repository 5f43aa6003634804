#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"

namespace k7 {

struct DefocusInfo {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    FloatControlK7 RadB;    ///< radius in percent of the picture's width
    CheckboxControlK7 DpEd; ///< Exact: the edges of the picture repeat beyond it
    ListControlK7 Mode;     ///< 1 Constant, 2 Exact
    ListControlK7 Dire;     ///< 1 both axes, 2 horizontal, 3 vertical
};

/// Gaussian blur of the whole picture: recursive, in a time that does not depend on the radius, or by exact
/// convolution.
class Defocus : public PluginK7, public DefocusInfo, public OverlayK7 {
public:
    void Process() override;
    void RefreshControls() override;

    /// Shows "Dup Edges" if the mode at `time` has a use for it.
    void ShowDupEdges(double time);

private:
    template <class Sample>
    void Blur(const PictureK7<Sample>& in, PictureK7<Sample>& out) const;
};

} // namespace k7
