#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"
#include "lens/FlareWork.h"

namespace k7 {

struct FlareInfo {
    ImageInputK7 LightInput; ///< where lights are searched for; of the background's size
    ImageInputK7 Background;
    ImageOutputK7 Output;
    CrosshairOverlayK7 CentreCross;
    RectangleOverlayK7 ScaleBox;
    FloatControlK7 Aperture; ///< mm, on a frame 720 wide
    IntegerControlK7 HaloFringes;
    FloatControlK7 HaloStrength;
    FloatControlK7 HaloFrnStr; ///< percent, as are all below without another unit
    FloatControlK7 Contrast;
    IntegerControlK7 Reflections;
    FloatControlK7 Reflectivity;
    FloatControlK7 ReflScale;
    IntegerControlK7 Streaks;
    FloatControlK7 MonoStreak;
    IntegerControlK7 StreakLength; ///< pixels of a frame 720 wide
    FloatControlK7 StreakRot;      ///< degrees
    FloatControlK7 StreakStrength;
    FloatControlK7 GlowRadius; ///< pixels of a frame 720 wide
    FloatControlK7 GlowStrength;
    CheckboxControlK7 LightMapOnly;
    CheckboxControlK7 MatchScales; ///< ScaleX is used for both axes
    PositionControlK7 Centre;      ///< of the rectangle in which lights are searched for
    SizeControlK7 ScaleX;          ///< its sides, as fractions of the frame's
    SizeControlK7 ScaleY;
    FloatControlK7 LowLight; ///< mean levels between which a pixel is a light
    ColourControlK7 Low;     ///< shows LowLight as a colour
    FloatControlK7 HighLight;
    ColourControlK7 High;
};

/// Lens flare of the bright pixels of a picture: each casts a halo, streaks and a glow whose colours are
/// those of light diffracted at an aperture.
class Flare : public PluginK7, public FlareInfo, public OverlayK7, public FlareWork<double> {
public:
    void Process() override;

    void RefreshControls() override;

    void Draw() override;
    void Event(int event, float x, float y) override;

    // Reactions to a change of a control; values are written at `time`.

    void ReflectionsChanged();
    void MatchScalesChanged();
    void LightMapOnlyChanged();
    void LowLightChanged(double time);
    void LowChanged(double time);
    void HighLightChanged(double time);
    void HighChanged(double time);

private:
    void TakeValues();
    PixelBox LightRectangle() const;
    bool WideOpen() const;
    template <class Sample>
    void Shine(const PictureK7<Sample>& background, PictureK7<Sample>& output);
    template <class Sample>
    void SelectRows(const PictureK7<Sample>& lights, const PictureK7<Sample>& map, int first, int last) const;

    int LowLevel = 0; ///< levels of a light, inclusive
    int HighLevel = 0;
};

} // namespace k7
