#include "frame/Controls.h"

#include "tests/support/FakeInput.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace k7::test {
namespace {

/// Provides what the inputs in memory hold, or nothing at all.
struct FakeSource : ValueSource {
    bool Number(ControlInput* input, double* value) override {
        if (Known) *value = static_cast<FakeInput*>(input)->X;
        return Known;
    }
    bool Point(ControlInput* input, double* x, double* y) override {
        if (Known) *x = static_cast<FakeInput*>(input)->X;
        if (Known) *y = static_cast<FakeInput*>(input)->Y;
        return Known;
    }
    bool Text(ControlInput* input, std::string* text) override {
        if (Known) *text = input->Name();
        return Known;
    }
    bool Known = true;
};

/// A control of one kind on inputs in memory.
template <class Control>
struct Connected : Control {
    Connected() {
        for (int i = 0; i < 4; ++i) this->Input[i] = &inputs[i];
    }
    /// Value after the host's number has been read.
    auto& Read(double number) {
        FakeSource source;
        for (FakeInput& input : inputs) input.X = number;
        this->ReadValue(source);
        return this->Value;
    }
    FakeInput inputs[4];
};

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

TEST(Controls, ValuesAreTakenByTheirKind) {
    Connected<IntegerControlK7> integer;
    EXPECT_EQ(integer.Read(3.9), 3);
    EXPECT_EQ(integer.Read(-3.9), -3);
    EXPECT_EQ(integer.Read(1e20), kMost);
    EXPECT_EQ(integer.Read(-kInf), kLeast);
    EXPECT_EQ(integer.Read(std::nan("")), 0);

    Connected<CheckboxControlK7> box;
    EXPECT_EQ(box.Read(0.25), 1);
    EXPECT_EQ(box.Read(-2.0), 1);
    EXPECT_EQ(box.Read(0.0), 0);

    Connected<ListControlK7> list;
    EXPECT_EQ(list.Read(0.0), 1);
    EXPECT_EQ(list.Read(2.999), 3);
    EXPECT_EQ(list.Read(2147483647.0), kMost);

    Connected<FloatControlK7> number;
    EXPECT_EQ(number.Read(0.1), 0.1);

    Connected<ColourControlK7> colour;
    for (const auto& [host, word] :
         {std::pair{1.0, 32767}, {0.5, 16383}, {1.5, 49150}, {-0.5, 0}, {1e9, 65535}})
        EXPECT_EQ(colour.Read(host)[2], word);

    Connected<PositionControlK7> position;
    position.inputs[0].Y = -3.0;
    EXPECT_EQ(position.Read(0.25).x, 0.25);
    EXPECT_EQ(position.Value.y, -3.0);
    Connected<FileControlK7> file;
    file.inputs[0].Label = "D:\\lens.txt";
    EXPECT_EQ(file.Read(0.0), "D:\\lens.txt");
}

TEST(Controls, WithoutAValueEachKindHasItsOwn) {
    const auto missing = [](auto control, const auto& before) {
        FakeSource source;
        source.Known = false;
        control.Value = before;
        control.ReadValue(source);
        return control.Value;
    };
    EXPECT_EQ(ListControlK7().Value, 1);
    EXPECT_EQ(PositionControlK7().Value.x, 0.0);
    EXPECT_EQ(missing(IntegerControlK7(), 9), 0);
    EXPECT_EQ(missing(CheckboxControlK7(), 1), 0);
    EXPECT_EQ(missing(ListControlK7(), 9), 1);
    EXPECT_EQ(missing(SizeControlK7(), 9.0), 0.0);
    EXPECT_EQ(missing(FileControlK7(), "old"), "");
    const auto centre = missing(PositionControlK7(), PositionControlK7().Value);
    EXPECT_EQ(centre.x, 0.5);
    EXPECT_EQ(centre.y, 0.5);
}

TEST(Controls, SetWritesTheInputAndLeavesTheValueAndGetReadsIt) {
    Connected<ListControlK7> list;
    list.Value = 7;
    list.Set(12.0, 1);
    EXPECT_EQ(list.inputs[0].X, 0.0);
    EXPECT_EQ(list.inputs[0].LastTime, 12.0);
    EXPECT_EQ(list.Value, 7);
    EXPECT_FALSE(list.Changing);
    list.Set(0.0, kLeast);
    EXPECT_EQ(list.inputs[0].X, kLeast - 1.0);
    int value = 99;
    for (const auto& [host, entry] : {std::pair{0.0, 1}, {3.9, 4}, {-0.5, 1}, {1e20, kMost}}) {
        list.inputs[0].X = host;
        list.Get(kTimeNow, &value);
        EXPECT_EQ(value, entry) << host;
    }
    Connected<IntegerControlK7> integer;
    integer.inputs[0].X = -2.7;
    integer.Get(kTimeNow, &value);
    EXPECT_EQ(value, -2);
    Connected<PositionControlK7> position;
    position.Set(kTimeNow, 0.1, 0.9);
    EXPECT_EQ(position.inputs[0].X, 0.1);
    EXPECT_EQ(position.inputs[0].Y, 0.9);
    EXPECT_EQ(position.inputs[0].LastTime, -1.0);
}

TEST(Controls, HidingAndGreyingReachTheInputs) {
    Connected<FloatControlK7> number;
    Connected<ColourControlK7> colour;
    colour.inputs[3].Shown = false; // as alpha is made
    for (bool on : {true, false}) {
        number.SetHidden(on);
        number.SetDisabled(on);
        EXPECT_EQ(number.Hidden, on);
        EXPECT_EQ(number.Disabled, on);
        EXPECT_EQ(number.inputs[0].Shown, !on);
        EXPECT_EQ(number.inputs[0].Disabled, on);
        EXPECT_TRUE(number.inputs[1].Shown && !number.inputs[1].Disabled);

        colour.SetHidden(on);
        colour.SetDisabled(on);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(colour.inputs[i].Shown, !on);
        for (int i = 0; i < 4; ++i) EXPECT_EQ(colour.inputs[i].Disabled, on);
        EXPECT_FALSE(colour.inputs[3].Shown);
    }
    colour.inputs[3].Shown = true;
    colour.SetHidden(true);
    EXPECT_TRUE(colour.inputs[3].Shown);
}

/// An input whose write calls back, as a host's notification does.
struct NotifyingInput : FakeInput {
    void WriteNumber(double time, double value) override {
        FakeInput::WriteNumber(time, value);
        Notify();
    }
    std::function<void()> Notify;
};

TEST(Controls, ColourMarksItsOwnWrites) {
    ColourControlK7 colour;
    NotifyingInput inputs[4];
    std::vector<bool> changing;
    for (int i = 0; i < 4; ++i) {
        colour.Input[i] = &inputs[i];
        inputs[i].Notify = [&] {
            changing.push_back(colour.Changing);
            colour.Changing = false; // a reaction clears the mark
        };
    }
    colour.Set(2.0, 32767, 16383, 0, 1);
    EXPECT_EQ(changing, std::vector<bool>(4, true));
    EXPECT_FALSE(colour.Changing);
    const float want[4] = {1.0f, 16383.0f / 32767.0f, 0.0f, 1.0f / 32767.0f}; // 32-bit float
    for (int i = 0; i < 4; ++i) EXPECT_EQ(inputs[i].X, want[i]);
    EXPECT_EQ(inputs[3].LastTime, 2.0);
}

} // namespace
} // namespace k7::test
