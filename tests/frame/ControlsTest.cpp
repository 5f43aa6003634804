#include "frame/Controls.h"

#include "tests/support/FakeInput.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>

namespace k7::test {
namespace {

/// Values by input; an input that is not listed has none.
struct FakeSource : ValueSource {
    bool Number(ControlInput* input, double* value) override {
        if (!Numbers.count(input)) return false;
        *value = Numbers[input];
        return true;
    }
    bool Point(ControlInput* input, double* x, double* y) override {
        if (!Points.count(input)) return false;
        *x = Points[input].first;
        *y = Points[input].second;
        return true;
    }
    bool Text(ControlInput* input, std::string* text) override {
        if (!Texts.count(input)) return false;
        *text = Texts[input];
        return true;
    }
    std::map<ControlInput*, double> Numbers;
    std::map<ControlInput*, std::pair<double, double>> Points;
    std::map<ControlInput*, std::string> Texts;
};

/// A control of one kind on inputs in memory.
template <class Control>
struct Connected {
    Connected() {
        for (int i = 0; i < 4; ++i) control.Input[i] = &inputs[i];
    }
    /// Value after the host's number has been read.
    auto& Read(double number) {
        FakeSource source;
        for (FakeInput& input : inputs) source.Numbers[&input] = number;
        control.ReadValue(source);
        return control.Value;
    }
    auto& ReadNothing() {
        FakeSource source;
        control.ReadValue(source);
        return control.Value;
    }
    FakeInput inputs[4];
    Control control;
};

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

TEST(Controls, NumbersAreTakenByTheirKind) {
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
    EXPECT_EQ(list.Read(4.0), 5);
    EXPECT_EQ(list.Read(2.999), 3);
    EXPECT_EQ(list.Read(2147483647.0), kMost);

    Connected<FloatControlK7> number;
    EXPECT_EQ(number.Read(0.1), 0.1);
}

TEST(Controls, ColoursBecomeWords) {
    Connected<ColourControlK7> colour;
    const auto read = [&](double value) { return colour.Read(value)[2]; };
    EXPECT_EQ(read(1.0), 32767);
    EXPECT_EQ(read(0.5), 16383);
    EXPECT_EQ(read(1.5), 49150);
    EXPECT_EQ(read(-0.5), 0);
    EXPECT_EQ(read(1e9), 65535);
}

TEST(Controls, WithoutAValueEachKindHasItsOwn) {
    Connected<IntegerControlK7> integer;
    integer.control.Value = 9;
    EXPECT_EQ(integer.ReadNothing(), 0);
    Connected<CheckboxControlK7> box;
    box.control.Value = 1;
    EXPECT_EQ(box.ReadNothing(), 0);
    Connected<ListControlK7> list;
    list.control.Value = 9;
    EXPECT_EQ(list.ReadNothing(), 1);
    Connected<SizeControlK7> size;
    size.control.Value = 9;
    EXPECT_EQ(size.ReadNothing(), 0.0);
    Connected<PositionControlK7> position;
    position.ReadNothing();
    EXPECT_EQ(position.control.Value.x, 0.5);
    EXPECT_EQ(position.control.Value.y, 0.5);
    Connected<FileControlK7> file;
    file.control.Value = "old";
    EXPECT_EQ(file.ReadNothing(), "");
    Connected<ColourControlK7> colour;
    colour.control.Value[3] = 9;
    EXPECT_EQ(colour.ReadNothing()[3], 0);
}

TEST(Controls, StartAtTheirKindsZero) {
    EXPECT_EQ(IntegerControlK7().Value, 0);
    EXPECT_EQ(ListControlK7().Value, 1);
    EXPECT_EQ(AngleControlK7().Value, 0.0);
    EXPECT_EQ(PositionControlK7().Value.x, 0.0);
    EXPECT_EQ(FileControlK7().Value, "");
    EXPECT_EQ(ColourControlK7().Value[0], 0);
}

TEST(Controls, PointsAndTextsAreTakenAsTheyAre) {
    Connected<PositionControlK7> position;
    Connected<FileControlK7> file;
    FakeSource source;
    source.Points[&position.inputs[0]] = {0.25, -3.0};
    source.Texts[&file.inputs[0]] = "D:\\lens.txt";
    position.control.ReadValue(source);
    file.control.ReadValue(source);
    EXPECT_EQ(position.control.Value.x, 0.25);
    EXPECT_EQ(position.control.Value.y, -3.0);
    EXPECT_EQ(file.control.Value, "D:\\lens.txt");
}

TEST(Controls, SetWritesTheInputAndLeavesTheValue) {
    Connected<ListControlK7> list;
    list.control.Value = 7;
    list.control.Set(12.0, 1);
    EXPECT_EQ(list.inputs[0].X, 0.0);
    EXPECT_EQ(list.inputs[0].LastTime, 12.0);
    EXPECT_EQ(list.control.Value, 7);
    EXPECT_FALSE(list.control.Changing);
    list.control.Set(0.0, kLeast);
    EXPECT_EQ(list.inputs[0].X, kLeast - 1.0);

    Connected<IntegerControlK7> integer;
    integer.control.Set(kTimeNow, 5);
    EXPECT_EQ(integer.inputs[0].X, 5.0);
    EXPECT_EQ(integer.inputs[0].LastTime, -1.0);
    Connected<PositionControlK7> position;
    position.control.Set(3.0, 0.1, 0.9);
    EXPECT_EQ(position.inputs[0].X, 0.1);
    EXPECT_EQ(position.inputs[0].Y, 0.9);
    Connected<AngleControlK7> angle;
    angle.control.Set(3.0, -45.5);
    EXPECT_EQ(angle.inputs[0].X, -45.5);
}

TEST(Controls, GetReadsTheInput) {
    int value = 99;
    Connected<IntegerControlK7> integer;
    integer.inputs[0].X = -2.7;
    integer.control.Get(kTimeNow, &value);
    EXPECT_EQ(value, -2);
    Connected<CheckboxControlK7> box;
    box.inputs[0].X = 1.0;
    box.control.Get(kTimeNow, &value);
    EXPECT_EQ(value, 1);
    Connected<ListControlK7> list;
    for (const auto& [host, entry] : {std::pair{0.0, 1}, {3.9, 4}, {-0.5, 1}, {1e20, kMost}}) {
        list.inputs[0].X = host;
        list.control.Get(kTimeNow, &value);
        EXPECT_EQ(value, entry) << host;
    }
}

TEST(Controls, HidingAndGreyingReachTheInput) {
    Connected<FloatControlK7> number;
    number.control.SetHidden(true);
    number.control.SetDisabled(true);
    EXPECT_FALSE(number.inputs[0].Shown);
    EXPECT_TRUE(number.inputs[0].Disabled);
    EXPECT_TRUE(number.control.Hidden);
    EXPECT_TRUE(number.control.Disabled);
    number.control.SetHidden(false);
    number.control.SetDisabled(false);
    EXPECT_TRUE(number.inputs[0].Shown);
    EXPECT_FALSE(number.inputs[0].Disabled);
    EXPECT_TRUE(number.inputs[1].Shown && !number.inputs[1].Disabled);
}

TEST(Controls, ColourHidesThreeInputsAndGreysFour) {
    Connected<ColourControlK7> colour;
    colour.inputs[3].Shown = false; // as alpha is made
    for (bool on : {true, false}) {
        colour.control.SetHidden(on);
        colour.control.SetDisabled(on);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(colour.inputs[i].Shown, !on);
        for (int i = 0; i < 4; ++i) EXPECT_EQ(colour.inputs[i].Disabled, on);
        EXPECT_FALSE(colour.inputs[3].Shown);
    }
    colour.inputs[3].Shown = true;
    colour.control.SetHidden(true);
    EXPECT_TRUE(colour.inputs[3].Shown);
}

/// An input whose writing calls back, as a host's notification does.
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
            colour.Changing = false; // a reaction uses the mark up
        };
    }
    colour.Set(2.0, 32767, 16383, 0, 1);
    EXPECT_EQ(changing, std::vector<bool>(4, true));
    EXPECT_FALSE(colour.Changing);
    EXPECT_EQ(inputs[0].X, 1.0);
    EXPECT_EQ(inputs[1].X, 16383.0f / 32767.0f); // 32-bit float
    EXPECT_EQ(inputs[2].X, 0.0);
    EXPECT_EQ(inputs[3].X, 1.0f / 32767.0f);
    EXPECT_EQ(inputs[3].LastTime, 2.0);
}

} // namespace
} // namespace k7::test
