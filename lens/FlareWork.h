#pragma once

#include "baselib/Buffer.h"
#include "frame/Random.h"
#include "lens/DiffractionTables.h"
#include "lens/LightAccumulation.h"
#include "lens/clr.h"
#include "library/K7Image.h"

#include <memory>

namespace k7 {

class PluginK7;

/// What the two flares share: working values of a frame, the tables, ghosts of lights, contrast and
/// combination. Real is the number type that a flare works in. The Work values are taken from the controls
/// for each frame.
template <class Real>
class FlareWork : public CLRK7 {
protected:
    /// Starts a frame: reseeds the generator and takes the measures of the pictures.
    void Start(const K7Image& lightInput, const K7Image& output);

    /// Makes contrast curve and tables, and once the streaks' random numbers. False: the frame stays as it
    /// is.
    [[nodiscard]] bool MakeTables();

    /// Makes LightMapImage, with undefined contents. It is no picture: its words may lie above full scale.
    /// False without memory.
    [[nodiscard]] bool MakeLightMap();

    /// Collects the lights of LightMapImage and adds the ghosts of each to both: the nth lies n steps along
    /// the line through the centre, with reflectivity / (n + 1) of the light's words. False without memory.
    [[nodiscard]] bool CollectLights(int centreX, int centreY);

    /// Readies planes and streaks for the collected lights. False without memory.
    [[nodiscard]] bool PrepareLights();

    /// Adds rows `first` to `last` of the planes to the background, and writes the sum into `output`, which
    /// holds the background elsewhere.
    void CombineRows(const K7Image& background, const K7Image& output, int first, int last) const;

    /// Gives back what lives for one frame only.
    void Finish();

    Real WorkAperture = 0;     ///< mm; less for a wider frame, in which a pixel is a smaller angle
    Real WorkGlowRadius = 0;   ///< pixels
    Real WorkStreakRot = 0;    ///< degrees
    Real WorkStreakLength = 0; ///< pixels
    Real WorkHaloGain = 0;
    Real WorkStreakGain = 0;
    Real WorkGlowGain = 0;
    Real WorkFringeGain = 0;
    Real WorkMono = 0;
    Real WorkReflectivity = 0;
    Real WorkReflScale = 0;
    Real WorkContrast = 0;
    int WorkStreaks = 0;
    int WorkFringes = 0;
    int WorkGhosts = 0; ///< of each light

    PixelBox LightBox{}; ///< pixels of the map that may be lit
    int Width = 0;       ///< of light map and planes
    int Height = 0;
    float WidthScale = 1.0f;
    float Aspect = 1.0f; ///< height of a pixel over its width

    std::unique_ptr<K7Image> LightMapImage;
    LightAccumulation<Real> Accumulation;

private:
    bool MakeContrastTable();
    void FillStreakRandom();
    StreakSetup<Real> Setup() const;
    void AddGhosts(const Light& light, int centreX, int centreY);
    void AddGhost(const Light& light, int x, int y, Real gain);

    ImageBuffer<u16> lightWords_;
    FlareTables<Real> tables_;
    Buffer<u16> contrastTable_; ///< of lastContrast_; lives across frames
    Real lastContrast_ = 0;
    StreakPairs<Real> streakRandom_{}; ///< drawn on the first frame, then kept
    bool streakRandomEmpty_ = true;
    Ran1 randomState_;
    LightList lights_;
};

} // namespace k7
