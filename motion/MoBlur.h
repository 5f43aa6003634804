#pragma once

#include "frame/Controls.h"
#include "frame/Overlay.h"
#include "frame/PluginK7.h"
#include "library/K7Image.h"
#include "motion/BlurRendering.h"
#include "motion/MotionEstimator.h"

#include <mutex>
#include <variant>

namespace k7 {

struct MoBlurInfo {
    ImageInputK7 ImageInput;
    ImageInputK7 MatteInput; ///< only its Input is used: the matte in which the automatic bound is found
    ImageOutputK7 Output;

    CrosshairOverlayK7 CentreWidget;
    RectangleOverlayK7 RegionWidget;

    CheckboxControlK7 ApplyMotionBlur; ///< apply the blur; otherwise the frame passes through
    IntegerControlK7 MaxSteps;         ///< steps of a path: one less than its samples
    FloatControlK7 Threshold;          ///< limit for outliers, in percent of full scale
    FloatControlK7 LengthScale;        ///< length of a path, in vectors
    FloatControlK7 PreBlur;            ///< reach of the Gaussian before the analysis, in pixels of the frame
    FloatControlK7 StartWeight;        ///< weights at the start and the end of a path
    FloatControlK7 EndWeight;
    CheckboxControlK7 DisplayVectors; ///< draw the vectors
    CheckboxControlK7 AutoBound;      ///< find the region in the matte
    FloatControlK7 BoundThreshold;    ///< brightness from which a pixel belongs to the region, in percent
    CheckboxControlK7 AutoKey;        ///< key the region that was found
    PositionControlK7 Centre;         ///< centre of the region
    CheckboxControlK7 MatchScales;    ///< the region is as high as it is wide
    FloatControlK7 ScaleX;            ///< sides of the region, both as fractions of the frame's width
    FloatControlK7 ScaleY;
};

/// Motion blur for what moves: finds the motion from the previous frame to this one and smears the previous
/// frame along it. Frames can be rendered in any order: no frame depends on what another has left behind.
class MoBlur : public PluginK7, public MoBlurInfo, public OverlayK7 {
public:
    void Process() override;
    void RefreshControls() override;

    /// The reaction to a change of "Auto Bound" or "AutoKey".
    void AutoBoundChanged(double time);
    /// The reaction to a change of "Apply Motion Blur": its vectors can be displayed only with it on.
    void ApplyBlurChanged();

    /// Safe while another thread is in Process: vectors are drawn when a frame is finished, until the next
    /// begins.
    void Draw() override;
    void Event(int event, float x, float y) override;

private:
    /// Inclusive ranges of pixels; ends may lie outside the frame.
    struct Box {
        int FirstColumn;
        int LastColumn;
        int FirstRow;
        int LastRow;
    };

    template <class Sample>
    void Blur(const PictureK7<Sample>& current, PictureK7<Sample>& output);
    template <class Sample>
    void RenderFrame(const PictureK7<Sample>& current, PictureK7<Sample>& output, const Box& region);
    template <class Sample>
    bool MakeBuffers(int width, int height);
    void Publish(const MotionField* field);

    Box Region(int width, int height);
    Box RegionOfControls(double width, double height) const;
    bool FindBounds(double frame, int width, int height, Box* bounds);
    Box BrightBox(const K7Image& picture) const;
    void WriteRegion(const Box& bounds, int width, int height);

    void DrawVectors();
    void DrawArrow(float x0, float y0, float x1, float y1, float size) const;

    template <class Sample>
    using Kept = std::unique_ptr<PictureK7<Sample>>;

    Kept<u16> boundsFrame_; ///< the frame that the automatic bound scans, in words: it is compared, not shown

    /// Frame t - 1 in the depth of the last frame; while it exists, all buffers have its size.
    std::variant<Kept<u16>, Kept<float>> previousFrame_;
    MotionEstimator estimator_;
    BlurRenderer renderer_;

    std::mutex fieldMutex_; ///< guards what Draw shows
    /// Of the last frame; null if that passed through, and while one is in progress.
    const MotionField* field_ = nullptr;
    bool showVectors_ = false;
};

} // namespace k7
