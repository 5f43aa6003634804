#include "frame/Controls.h"

namespace k7 {

namespace {

constexpr double kWordScale = 32767.0;
constexpr int kColourInputs = 4;
constexpr int kShownColourInputs = 3;

double NumberOr(ValueSource& source, ControlInput* input, double missing) {
    double value;
    return source.Number(input, &value) ? value : missing;
}

} // namespace

void ControlK7::SetDisabled(bool on) {
    Disabled = on;
    Input[0]->SetDisabled(on);
}

void ControlK7::SetHidden(bool on) {
    Hidden = on;
    Input[0]->SetShown(!on);
}

void IntegerControlK7::ReadValue(ValueSource& source) {
    Value = Trunc(NumberOr(source, Input[0], 0.0));
}
void IntegerControlK7::Set(double time, int value) {
    Input[0]->WriteNumber(time, value);
}
void IntegerControlK7::Get(double time, int* out) {
    *out = Trunc(Input[0]->ReadNumber(time));
}

void CheckboxControlK7::ReadValue(ValueSource& source) {
    Value = NumberOr(source, Input[0], 0.0) != 0.0;
}
void CheckboxControlK7::Set(double time, int value) {
    Input[0]->WriteNumber(time, value);
}
void CheckboxControlK7::Get(double time, int* out) {
    *out = Trunc(Input[0]->ReadNumber(time));
}

void ListControlK7::ReadValue(ValueSource& source) {
    Value = Trunc(NumberOr(source, Input[0], 0.0) + 1.0);
}
void ListControlK7::Set(double time, int entry) {
    Input[0]->WriteNumber(time, entry - 1.0);
}
void ListControlK7::Get(double time, int* out) {
    *out = Trunc(Trunc(Input[0]->ReadNumber(time)) + 1.0);
}

void FloatControlK7::ReadValue(ValueSource& source) {
    ReadShown(source);
    Value = Shown;
}
void FloatControlK7::ReadShown(ValueSource& source) {
    Shown = NumberOr(source, Input[0], 0.0);
}
void FloatControlK7::Set(double time, double value) {
    Input[0]->WriteNumber(time, value);
}

void PositionControlK7::ReadValue(ValueSource& source) {
    ReadShown(source);
    Value = Shown;
}
void PositionControlK7::ReadShown(ValueSource& source) {
    if (!source.Point(Input[0], &Shown.x, &Shown.y)) Shown = {0.5, 0.5};
}
void PositionControlK7::Set(double time, double x, double y) {
    Input[0]->WritePoint(time, x, y);
}

void FileControlK7::ReadValue(ValueSource& source) {
    if (!source.Text(Input[0], &Value)) Value.clear();
}

void ColourControlK7::SetDisabled(bool on) {
    Disabled = on;
    for (int i = 0; i < kColourInputs; ++i) Input[i]->SetDisabled(on);
}
void ColourControlK7::SetHidden(bool on) {
    Hidden = on;
    for (int i = 0; i < kShownColourInputs; ++i) Input[i]->SetShown(!on);
}
void ColourControlK7::ReadValue(ValueSource& source) {
    for (int i = 0; i < kColourInputs; ++i)
        Value[i] = Saturate<u16>(NumberOr(source, Input[i], 0.0) * kWordScale);
}
void ColourControlK7::Set(double time, u16 red, u16 green, u16 blue, u16 alpha) {
    const u16 words[kColourInputs] = {red, green, blue, alpha};
    for (int i = 0; i < kColourInputs; ++i) {
        Changing = true; // a reaction to the write before may have cleared it
        Input[i]->WriteNumber(time, static_cast<float>(words[i]) / static_cast<float>(kWordScale));
    }
    Changing = false;
}

} // namespace k7
