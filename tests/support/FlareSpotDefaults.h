#pragma once

#include "lens/FlareSpot.h"

namespace k7::test {

/// The values of a new tool.
inline void SetDefaults(FlareSpot& core) {
    core.StartControl.Value = {0.9, 0.9};
    core.EndControl.Value = {0.1, 0.1};
    core.RadiusControl.Value = 10.0;
    core.MinScaleControl.Value = 20.0;
    core.MaxScaleControl.Value = 124.4;
    core.BrightnessControl.Value = 10.0;
    core.SaturationControl.Value = 100.0;
    core.DefocusControl.Value = 10.0;
    core.SidesControl.Value = 19;
    core.EdgeBoostControl.Value = 1;
    core.RandomControl.Value = 557;
}

} // namespace k7::test
