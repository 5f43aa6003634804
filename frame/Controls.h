#pragma once

#include "library/Samples.h"

#include <cstdint>
#include <memory>
#include <string>

namespace k7 {

/// The time that stands for "now": a read returns the value at the document's current time, a write sets the
/// constant value and no key.
inline constexpr double kTimeNow = -1.0;

/// A host input as a control sees it. The operator implements it for the host, a test in memory.
class ControlInput {
public:
    virtual ~ControlInput() = default;
    virtual void WriteNumber(double time, double value) = 0;
    virtual void WritePoint(double time, double x, double y) = 0;
    virtual double ReadNumber(double time) = 0;
    virtual void SetDisabled(bool on) = 0; ///< greys the control, or not
    virtual void SetShown(bool on) = 0;    ///< shows the control, or hides it
    virtual double ShownLow() = 0;         ///< the displayed range
    virtual double ShownHigh() = 0;
    virtual std::string Name() = 0; ///< the label; empty if it has none
    virtual void StartUndo(const std::string& title) = 0;
    virtual void EndUndo(bool keep) = 0;
};

/// Where values are read from: a request for a frame, or the inputs themselves at some time. Each returns
/// false if there is no value.
class ValueSource {
public:
    virtual ~ValueSource() = default;
    virtual bool Number(ControlInput* input, double* value) = 0;
    virtual bool Point(ControlInput* input, double* x, double* y) = 0;
    virtual bool Text(ControlInput* input, std::string* text) = 0;
};

/// A core's view of one setting. The owner fills Value before each frame; the core may write the setting
/// back, grey it or hide it. Value does not change by Set: it follows when the owner next reads the input.
class ControlK7 {
public:
    virtual ~ControlK7() = default;

    virtual void SetDisabled(bool on);
    virtual void SetHidden(bool on);

    /// Reads Value from the source; without a value there, takes the default of its kind.
    virtual void ReadValue(ValueSource& source) = 0;
    /// The same for the value that widgets show, while a frame uses Value.
    virtual void ReadShown(ValueSource&) {}

    static constexpr int kInputs = 16;
    ControlInput* Input[kInputs] = {}; ///< element 0; a colour has 0 to 3, red to alpha
    bool Disabled = false;             ///< as last set
    bool Hidden = false;
    bool Changing = false; ///< the core itself is writing: the echo is not a change by the user
};

/// Whole number, truncated. Without a value 0.
class IntegerControlK7 : public ControlK7 {
public:
    void ReadValue(ValueSource& source) override;
    void Set(double time, int value);
    void Get(double time, int* out);
    int Value = 0;
};

/// 0 or 1. Without a value 0.
class CheckboxControlK7 : public ControlK7 {
public:
    void ReadValue(ValueSource& source) override;
    void Set(double time, int value);
    void Get(double time, int* out);
    int Value = 0;
};

/// Entry number from 1. Without a value 1.
class ListControlK7 : public ControlK7 {
public:
    void ReadValue(ValueSource& source) override;
    void Set(double time, int entry);
    void Get(double time, int* out);
    int Value = 1;
};

/// Without a value 0.
class FloatControlK7 : public ControlK7 {
public:
    void ReadValue(ValueSource& source) override;
    void ReadShown(ValueSource& source) override;
    void Set(double time, double value);
    double Value = 0.0;
    double Shown = 0.0; ///< the value for widgets: newer than Value while a frame is in progress
};

/// A float that is the size of an on-screen circle or box.
class SizeControlK7 : public FloatControlK7 {};

/// A float that is an angle in degrees.
class AngleControlK7 : public FloatControlK7 {};

/// Fractions of the frame. Without a value the middle.
class PositionControlK7 : public ControlK7 {
public:
    void ReadValue(ValueSource& source) override;
    void ReadShown(ValueSource& source) override;
    void Set(double time, double x, double y);
    struct Position {
        double x = 0.0;
        double y = 0.0;
    };
    Position Value;
    Position Shown; ///< for widgets, as that of a float
};

/// A file name. Without a value empty.
class FileControlK7 : public ControlK7 {
public:
    void ReadValue(ValueSource& source) override;
    std::string Value;
};

/// Four words of red, green, blue, alpha; 32767 is 1.0. Without a value 0.
class ColourControlK7 : public ControlK7 {
public:
    void SetDisabled(bool on) override;
    void SetHidden(bool on) override; ///< alpha stays hidden
    void ReadValue(ValueSource& source) override;
    void Set(double time, u16 red, u16 green, u16 blue, u16 alpha);
    u16 Value[4] = {};
};

/// Reads an image input at times other than the frame's.
class FrameSource {
public:
    virtual ~FrameSource() = default;
    /// Fills `target`, which keeps its size, with the picture at `time`, clamped to the clip. False if the
    /// host has none; `target` is then unchanged.
    [[nodiscard]] virtual bool ReadInputAtTime(double time, K7Image& target) = 0;
    [[nodiscard]] virtual bool ReadInputAtTime(double time, FloatImageK7& target) = 0;
};

/// A picture of the frame in its depth: one of the two, or neither. Belongs to the owner and lives for one
/// frame.
struct ImageSlotK7 {
    K7Image* Image = nullptr;
    FloatImageK7* Floats = nullptr;

    template <class Sample>
    PictureK7<Sample>*& Of() {
        if constexpr (SampleTraits<Sample>::kWords)
            return Image;
        else
            return Floats;
    }
};

/// An image input of an effect. It holds no picture if nothing is connected.
struct ImageInputK7 : ImageSlotK7 {
    FrameSource* Input = nullptr;
};

/// The image that Process fills.
struct ImageOutputK7 : ImageSlotK7 {};

/// Calls work(in, out) with the pictures of a frame, in the depth that they have. Further inputs have the
/// same depth: `Second.Of<Sample>()`.
template <class Work>
void InDepth(ImageInputK7& input, ImageOutputK7& output, Work&& work) {
    if (output.Floats)
        work(*input.Floats, *output.Floats);
    else
        work(*input.Image, *output.Image);
}

} // namespace k7
