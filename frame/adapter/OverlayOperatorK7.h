#pragma once

#include "frame/Overlay.h"
#include "frame/adapter/OperatorK7.h"

#include <vector>

namespace k7 {

struct WidgetColour {
    int red, green, blue; ///< 0 to 65535
};
inline constexpr WidgetColour kWhite = {65535, 65535, 65535};

/// An operator whose core draws widgets over the preview: it passes the host's drawing and mouse calls to the
/// core. An effect's operator adds the widgets after its controls.
class OverlayOperatorK7 : public OperatorK7 {
public:
    using OperatorK7::OperatorK7;

    void AddControls(host::PreviewInfo* preview, host::TagList* tags) override;
    void GLDrawControls(host::OperatorControl* control, host::PreviewInfo* preview,
                        host::TagList* tags) override;
    int ControlDown(host::OperatorControl* control, host::PreviewInfo* preview, const host::Point* point,
                    host::TagList* tags) override;
    int ControlMove(host::OperatorControl* control, host::PreviewInfo* preview, const host::Point* point,
                    host::TagList* tags) override;
    int ControlUp(host::OperatorControl* control, host::PreviewInfo* preview, const host::Point* point,
                  host::TagList* tags) override;
    host::Input* ControlCommand(host::OperatorControl* control, host::PreviewInfo* preview,
                                const host::FuID& command, void* argument, host::TagList* tags) override;

protected:
    // The widgets of the core, in the order of its record, with the controls that they move.
    void AddWidget(CrosshairOverlayK7& widget, WidgetColour colour, PositionControlK7& position);
    void AddWidget(AngleOverlayK7& widget, WidgetColour colour, AngleControlK7& angle);
    void AddWidget(LineOverlayK7& widget, WidgetColour colour, PositionControlK7& first,
                   PositionControlK7& second);
    void AddWidget(SizeOverlayK7& widget, WidgetColour colour, PositionControlK7& centre,
                   FloatControlK7& width, FloatControlK7& height);

    void InputChanged(host::Input* in) override;

private:
    /// The pointer over the previews of this operator. Drags of two operators know nothing of each other.
    struct Pointer {
        host::OperatorControl* activeControl = nullptr; ///< where a drag began
        float x = 0.0f;                                 ///< fractions of the picture
        float y = 0.0f;
        float pressX = 0.0f;
        float pressY = 0.0f;
        float button = 0.0f; ///< 1 while the button counts as down
        float previousButton = 0.0f;
        bool latched = false; ///< from the first ControlDown of a drag to its end
    };

    void Enter(OverlayControlK7& widget, WidgetColour colour);
    void TakePointer(const host::PreviewInfo& preview);
    bool Dispatch();
    int NextEvent();
    bool Links(const OverlayControlK7& widget, const host::Input* in) const;

    std::vector<OverlayControlK7*> widgets_;
    OverlayK7* overlay_ = nullptr;
    Pointer pointer_;
};

} // namespace k7
