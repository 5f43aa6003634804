#pragma once

#include "host/Object.h"

#include <string>
#include <utility>

namespace host {

/// A value of an input at one time.
class K7HOST_API Parameter : public Object {};

class K7HOST_API Number : public Parameter {
public:
    explicit Number(double value) : Value(value) {}
    double Value;
};

/// In fractions of the frame, y upwards.
class K7HOST_API Point : public Parameter {
public:
    Point(double x, double y, double z) : X(x), Y(y), Z(z) {}
    double X, Y, Z;
};

class K7HOST_API Text : public Parameter {
public:
    explicit Text(std::string value) : Value(std::move(value)) {}
    std::string Value;
};

/// A parameter that lives as long as this object, for writing a value into an input.
class AutoParameter {
public:
    explicit AutoParameter(Parameter* parameter) : parameter_(parameter) {}
    Parameter* get() const { return parameter_.get(); }

private:
    Ref<Parameter> parameter_;
};

class AutoNumber : public AutoParameter {
public:
    explicit AutoNumber(double value) : AutoParameter(new Number(value)) {}
};

} // namespace host
