#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"
#include "lens/FlareWork.h"

namespace k7 {

struct Flare2Info {
    ImageInputK7 LightInput; ///< where the colours of a light may come from; of the background's size
    ImageInputK7 Background;
    ImageOutputK7 Output;
    CrosshairOverlayK7 SourceCross;
    CrosshairOverlayK7 ReflectCross;
    ListControlK7 Halo;      ///< styles write the controls of their group and are not used by frames
    FloatControlK7 Aperture; ///< mm, on a frame 720 wide
    FloatControlK7 HaloStr;
    IntegerControlK7 HaloFringes;
    FloatControlK7 HaloFrnStr; ///< percent
    ListControlK7 Streak;
    IntegerControlK7 Streaks;
    FloatControlK7 MonoStreak;     ///< percent
    IntegerControlK7 StreakLength; ///< pixels of a frame 720 wide
    AngleControlK7 StreakRot;      ///< degrees
    FloatControlK7 StreakStr;
    ListControlK7 Glow;
    FloatControlK7 GlowRadius; ///< pixels of a frame 720 wide
    FloatControlK7 GlowStrength;
    ListControlK7 Reflection;
    IntegerControlK7 Reflections;
    FloatControlK7 Reflectivity; ///< percent
    FloatControlK7 ReflScale;
    ListControlK7 ColourFrom; ///< 1: LightColour, 2: the light input
    ColourControlK7 LightColour;
    PositionControlK7 Source;
    IntegerControlK7 Boost;    ///< size of the light
    FloatControlK7 Contrast;   ///< percent
    PositionControlK7 Reflect; ///< the point through which ghosts are cast
};

/// Lens flare of one small light that the user places.
class Flare2 : public PluginK7, public Flare2Info, public OverlayK7, public FlareWork<float> {
public:
    void Process() override;
    void RefreshControls() override;

    void Draw() override;
    void Event(int event, float x, float y) override;

    // Reactions to a change of a control; values are written at `time`.
    void HaloChanged(double time);
    void StreakChanged(double time);
    void GlowChanged(double time);
    void ReflectionChanged(double time);
    void ReflectionsChanged();
    void ColourFromChanged();

private:
    void TakeValues();
    PixelBox LightPixels() const;
    template <class Sample>
    void Shine(const PictureK7<Sample>& background, PictureK7<Sample>& output);
    template <class Sample>
    void FillLightMap(const PictureK7<Sample>& map);
};

} // namespace k7
