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
/// combination. Real is the number type that a flare computes in. The Work values are computed from the
/// controls for each frame.
template <class Real>
class FlareWork : public CLRK7 {
protected:
    /// Starts a frame: reseeds the generator and takes the size of the output.
    template <class Sample>
    void Start(const PictureK7<Sample>& output);

    /// Makes the contrast curve, the tables and, once only, the streaks' random numbers. False: the frame
    /// stays as it is.
    [[nodiscard]] bool MakeTables();

    /// A light map, with undefined contents; null where allocation fails. It is not a picture: its words may
    /// lie above full scale, and nothing in it is negative.
    template <class Sample>
    struct LightMap {
        ImageBuffer<Sample> store;
        std::unique_ptr<PictureK7<Sample>> image;
    };
    template <class Sample>
    [[nodiscard]] LightMap<Sample> MakeLightMap() const;

    /// Collects the lights of a map and adds the ghosts of each to both: the nth lies n steps along the line
    /// through the centre, with reflectivity / (n + 1) of the light. False if allocation fails.
    template <class Sample>
    [[nodiscard]] bool CollectLights(const PictureK7<Sample>& map, int centreX, int centreY);

    /// Sums the collected lights and adds them to the background; `output` holds the background beforehand,
    /// and keeps it if allocation fails.
    template <class Sample>
    void ThrowLights(PluginK7& core, const PictureK7<Sample>& background, const PictureK7<Sample>& output);

    /// Frees what lives for one frame only.
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

private:
    bool MakeContrastTable();
    void FillStreakRandom();
    StreakSetup<Real> Setup() const;
    template <class Sample>
    void AddGhosts(const PictureK7<Sample>& map, const Light& light, int centreX, int centreY);
    template <class Sample>
    void AddGhost(const PictureK7<Sample>& map, const Light& light, int x, int y, Real gain);
    template <class Sample>
    void CombineRows(const PictureK7<Sample>& background, const PictureK7<Sample>& output, int first,
                     int last) const;

    LightAccumulation<Real> accumulation_;
    FlareTables<Real> tables_;
    Buffer<u16> contrastTable_; ///< of lastContrast_; lives across frames
    Real lastContrast_ = 0;
    StreakPairs<Real> streakRandom_{}; ///< drawn on the first frame, then kept
    bool streakRandomEmpty_ = true;
    Ran1 randomState_;
    LightList lights_;
};

} // namespace k7
