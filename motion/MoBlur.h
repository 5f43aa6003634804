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

    CheckboxControlK7 Prss; ///< apply the blur; otherwise the frame passes through
    IntegerControlK7 Maps;  ///< steps of a path: one less than its samples
    FloatControlK7 LTsh;    ///< limit for outliers, in percent of full scale
    FloatControlK7 LSle;    ///< length of a path, in vectors
    FloatControlK7 Prur;    ///< reach of the Gaussian before the analysis, in pixels of the frame
    FloatControlK7 Stht;    ///< weights at the start and the end of a path
    FloatControlK7 Enht;
    CheckboxControlK7 Sers; ///< draw the vectors
    CheckboxControlK7 Aund; ///< find the region in the matte
    FloatControlK7 ABsh;    ///< brightness from which a pixel belongs to the region, in percent
    CheckboxControlK7 Auey; ///< key the region that was found
    PositionControlK7 Cere; ///< centre of the region
    CheckboxControlK7 Maes; ///< the region is as high as it is wide
    FloatControlK7 XSle;    ///< sides of the region, both as fractions of the frame's width
    FloatControlK7 YSle;
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
    const MotionField* field_ =
        nullptr; ///< the last frame's; null while one is in progress, or if it passed through
    bool showVectors_ = false;
};

} // namespace k7
