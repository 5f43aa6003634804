#pragma once

#include "host/Parameter.h"

#include <map>
#include <mutex>
#include <string>

namespace host {

/// The time that stands for "now": a read takes the value at the document's current time; a write sets the
/// constant value and no key.
inline constexpr double kTimeNow = -1.0;

/// Where the value of an input lives: a curve in memory, or a setting of the surrounding program.
/// Thread-safe.
class K7HOST_API ValueStore {
public:
    virtual ~ValueStore() = default;

    /// The value at a time, with a reference for the caller.
    virtual Parameter* ValueAt(double time) const = 0;
    /// Sets a value of the input's type, within the input's limits; at kTimeNow it makes no key.
    virtual void Write(const Parameter& value, double time) = 0;
    /// The input has been shown or hidden, enabled or greyed.
    virtual void Show(bool shown, bool enabled);
};

/// The value of an input over time: one value, or keys, linear between them and held at the ends. A number
/// uses only x.
struct K7HOST_API Curve {
    struct Value {
        double x = 0.0;
        double y = 0.0;
        bool operator==(const Value&) const = default;
    };

    Value At(double time) const;
    bool Animated() const { return !Keys.empty(); }
    bool operator==(const Curve&) const = default;

    Value Constant;
    std::map<double, Value> Keys; ///< by time
};

/// Values in memory: a curve of numbers or points, or a text.
class K7HOST_API CurveStore : public ValueStore {
public:
    enum class Kind { Number, Point, Text };

    CurveStore(Kind kind, const Curve::Value& constant, std::string text)
        : kind_(kind)
        , text_(std::move(text)) {
        curve_.Constant = constant;
    }

    Parameter* ValueAt(double time) const override;
    void Write(const Parameter& value, double time) override;

    Curve GetCurve() const;
    void SetCurve(Curve curve);
    std::string GetText() const;

private:
    const Kind kind_;
    mutable std::mutex mutex_;
    Curve curve_;
    std::string text_;
};

} // namespace host
