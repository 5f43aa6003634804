#include "ofx/ParameterStore.h"

#include "host/Tags.h"
#include "ofx/Errands.h"
#include "ofx/Names.h"

#include <algorithm>
#include <cmath>

namespace ofx {

using Kind = ParameterPlan::Kind;

ParameterStore::ParameterStore(Exchange& exchange, Param param, Kind kind, int channel,
                               const host::Input& input)
    : exchange_(exchange)
    , param_(param)
    , kind_(kind)
    , channel_(channel)
    , inPixels_(input.GetAttrI(host::kTagPixels) != 0) {}

host::Parameter* ParameterStore::ValueAt(double time) const {
    host::Parameter* value = nullptr;
    try {
        OnHostThread([&] { value = ReadAt(time); });
    } catch (const Failure& failure) {
        exchange_.refusals.Note(failure);
    }
    return value;
}

/// A length in pixels in a proxy; whole numbers stay whole, and above 0.
double ParameterStore::Scaled(double value) const {
    const double scale = inPixels_ ? exchange_.pixelScale.load() : 1.0;
    if (scale == 1.0) return value;
    if (kind_ != Kind::Integer) return value * scale;
    return value < 1.0 ? value : std::max(1.0, std::floor(value * scale + 0.5));
}

host::Parameter* ParameterStore::ReadAt(double time) const {
    const auto get = TheHost().param->paramGetValueAtTime;
    constexpr char what[] = "the value of a parameter";
    double values[3] = {};
    int whole = 0;
    char* text = nullptr;
    switch (kind_) {
    case Kind::Double:
        Check(get(param_, time, &values[0]), what);
        return new host::Number(Scaled(values[0]));
    case Kind::Point:
        Check(get(param_, time, &values[0], &values[1]), what);
        return new host::Point(values[0], values[1], 0.0);
    case Kind::Rgb:
        Check(get(param_, time, &values[0], &values[1], &values[2]), what);
        return new host::Number(values[channel_]);
    case Kind::File:
        Check(get(param_, time, &text), what);
        return new host::Text(text ? text : "");
    case Kind::Integer:
    case Kind::Boolean:
    case Kind::Choice:
        break;
    }
    Check(get(param_, time, &whole), what);
    return new host::Number(Scaled(whole));
}

/// A key if the parameter has keys and a time is given; otherwise the current value.
template <class... Values>
void ParameterStore::Hand(double time, Values... values) const {
    const ParameterSuite& suite = *TheHost().param;
    unsigned keys = 0;
    const bool animated = suite.paramGetNumKeys(param_, &keys) == kOk && keys > 0;
    const Status status = animated && time != host::kTimeNow
                              ? suite.paramSetValueAtTime(param_, time, values...)
                              : suite.paramSetValue(param_, values...);
    Check(status, "a new value of a parameter");
}

void ParameterStore::Write(const host::Parameter& value, double time) {
    if (const auto* number = dynamic_cast<const host::Number*>(&value))
        exchange_.writes.Take([this, time, v = number->Value] { WriteNumber(v, time); });
    else if (const auto* point = dynamic_cast<const host::Point*>(&value))
        exchange_.writes.Take([this, time, x = point->X, y = point->Y] { Hand(time, x, y); });
    else if (const auto* text = dynamic_cast<const host::Text*>(&value))
        exchange_.writes.Take([this, time, v = text->Value] { Hand(time, v.c_str()); });
}

void ParameterStore::WriteNumber(double value, double time) const {
    if (kind_ == Kind::Double) {
        Hand(time, value);
    } else if (kind_ == Kind::Rgb) {
        double rgb[3] = {};
        const auto& suite = *TheHost().param;
        Check(time == host::kTimeNow ? suite.paramGetValue(param_, &rgb[0], &rgb[1], &rgb[2])
                                     : suite.paramGetValueAtTime(param_, time, &rgb[0], &rgb[1], &rgb[2]),
              "the value of a colour");
        rgb[channel_] = value;
        Hand(time, rgb[0], rgb[1], rgb[2]);
    } else {
        constexpr double most = 2147483647.0;
        Hand(time, std::isnan(value) ? 0 : static_cast<int>(std::clamp(value, -most, most)));
    }
}

void ParameterStore::Show(bool shown, bool enabled) {
    if (channel_ != 0) return; // the first channel acts for the colour
    exchange_.writes.Take([this, shown, enabled] {
        PropertySet set = nullptr;
        Check(TheHost().param->paramGetPropertySet(param_, &set), "properties of a parameter");
        Properties(set).Set(kParamSecret, shown ? 0 : 1);
        Properties(set).Set(kParamEnabled, enabled ? 1 : 0);
    });
}

} // namespace ofx
