#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"
#include "lens/GhostShade.h"
#include "lens/LensStore.h"

#include <string>

namespace k7 {

struct FlareSpotInfo {
    ImageInputK7 Input; ///< the background
    ImageOutputK7 Output;

    LineOverlayK7 Line;
    CrosshairOverlayK7 Source;
    CrosshairOverlayK7 Target;

    PositionControlK7 EndControl;
    PositionControlK7 StartControl;
    FloatControlK7 RadiusControl;
    FloatControlK7 MinScaleControl;
    FloatControlK7 MaxScaleControl;
    FloatControlK7 BrightnessControl;
    FloatControlK7 SaturationControl;
    FloatControlK7 DefocusControl;
    IntegerControlK7 SidesControl;
    ListControlK7 LensControl; ///< entries 1 to 4 the built-in lenses, 5 the user's
    CheckboxControlK7 EdgeBoostControl;
    IntegerControlK7 MoreControl;
    IntegerControlK7 RandomControl;
    FileControlK7 FileControl;
    CheckboxControlK7 OverrideControl;
    ColourControlK7 ColourStartControl;
    ColourControlK7 ColourEndControl;
};

/// Draws the chain of ghosts that a light casts through a lens: a bundle of parallel rays from Start to End
/// leaves its footprint on each surface of the lens. Rays run straight; only the curvature and the position
/// of a surface shift and bend its ghost.
class FlareSpot : public PluginK7, public FlareSpotInfo, public OverlayK7 {
public:
    FlareSpot();

    void Process() override;
    void RefreshControls() override;
    void Draw() override;
    void Event(int event, float x, float y) override;

    /// The folder in which plain names of lens files are looked up; ends in a separator.
    std::string LensDirectory;

private:
    template <class Sample>
    void Shine(const PictureK7<Sample>& in, const PictureK7<Sample>& out);
    void ReadControls(int width, int height, double aspectX, double aspectY);
    const LensTable* GetLens(int lens, int moreElements);
    bool LoadUserLens();

    void DrawGhosts(int first, int last) const;
    bool TraceGhost(const LensTable& lens, int surface, GhostPolygon* ghost) const;
    void DrawGhost(GhostPolygon* ghost, int surface, int firstRow, int endRow, int lastSurface) const;
    void ColourGhost(GhostPolygon* ghost, int surface, int lastSurface) const;
    void DrawFan(const GhostPolygon& ghost, int firstRow, int endRow) const;

    // The frame in progress.
    const LensTable* Lens = nullptr;
    int Width = 0;
    int Height = 0;
    float SourceRadius = 0.0f;
    int Sides = 0;
    float StartX = 0.0f; ///< lens space
    float StartY = 0.0f;
    float EndX = 0.0f;
    float EndY = 0.0f;
    float MinScale = 0.0f;
    float MaxScale = 0.0f;
    float Gain = 0.0f;
    float Falloff = 0.0f;
    float Saturation = 0.0f;
    int HueStart = 0;
    int HueEnd = 0;
    bool EdgeBoost = false;
    bool ColourOverride = false;
    GhostCanvas Sums;
    std::uint32_t RandomState = 0;
    double RimCos[GhostPolygon::kMaxSides] = {}; ///< corners of the bundle on the unit circle
    double RimSin[GhostPolygon::kMaxSides] = {};

    LensTable UserLens;
    LensTable ExtendedLens;
};

} // namespace k7
