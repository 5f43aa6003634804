#pragma once

#include "frame/Controls.h"

#include <string>
#include <utility>
#include <vector>

namespace k7::test {

/// A host input in memory that records everything that is done to it.
class FakeInput : public ControlInput {
public:
    explicit FakeInput(std::string name = "") : Label(std::move(name)) {}

    void WriteNumber(double time, double value) override {
        LastTime = time;
        X = value;
        ++Writes;
    }
    void WritePoint(double time, double x, double y) override {
        LastTime = time;
        X = x;
        Y = y;
        ++Writes;
    }
    double ReadNumber(double) override { return X; }
    void SetDisabled(bool on) override { Disabled = on; }
    void SetShown(bool on) override { Shown = on; }
    double ShownLow() override { return Low; }
    double ShownHigh() override { return High; }
    std::string Name() override { return Label; }
    void StartUndo(const std::string& title) override { Undo.push_back("start " + title); }
    void EndUndo(bool keep) override { Undo.push_back(keep ? "end keep" : "end drop"); }

    std::string Label;
    double X = 0.0;
    double Y = 0.0;
    double LastTime = 0.0;
    int Writes = 0;
    bool Shown = true;
    bool Disabled = false;
    double Low = 0.0;
    double High = 1.0;
    std::vector<std::string> Undo;
};

} // namespace k7::test
