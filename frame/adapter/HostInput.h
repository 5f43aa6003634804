#pragma once

#include "frame/Controls.h"
#include "frame/adapter/HostNames.h"

namespace k7 {

/// A host input behind the interface that controls and widgets know.
class HostInput : public ControlInput {
public:
    explicit HostInput(host::Input* input) : input_(input) {}

    host::Input* Get() const { return input_; }

    void WriteNumber(double time, double value) override;
    void WritePoint(double time, double x, double y) override;
    double ReadNumber(double time) override;
    void SetDisabled(bool on) override;
    void SetShown(bool on) override;
    double ShownLow() override;
    double ShownHigh() override;
    std::string Name() override;
    void StartUndo(const std::string& title) override;
    void EndUndo(bool keep) override;

private:
    host::Input* const input_;
};

/// The values of host inputs; subclasses know where a parameter comes from.
class HostValues : public ValueSource {
public:
    bool Number(ControlInput* input, double* value) override;
    bool Point(ControlInput* input, double* x, double* y) override;
    bool Text(ControlInput* input, std::string* text) override;

protected:
    /// The parameter of an input, valid until the next call. Null if there is none.
    virtual const host::Parameter* Get(host::Input* input) = 0;
};

/// Values for the frame of a request.
class RequestValues : public HostValues {
public:
    explicit RequestValues(host::Request* request) : request_(request) {}

protected:
    const host::Parameter* Get(host::Input* input) override { return request_->GetInputData(input, 0); }

private:
    host::Request* const request_;
};

/// Values at a time, outside of a request.
class InputValues : public HostValues {
public:
    explicit InputValues(double time) : time_(time) {}

protected:
    const host::Parameter* Get(host::Input* input) override {
        last_ = host::Ref<host::Parameter>(input->GetSource(time_));
        return last_.get();
    }

private:
    const double time_;
    host::Ref<host::Parameter> last_;
};

/// Reads an image input of an operator at times other than the frame's.
class HostFrames : public FrameSource {
public:
    HostFrames(host::Operator* op, host::Input* input) : operator_(op), input_(input) {}
    bool ReadInputAtTime(double time, K7Image& target) override { return Read(time, target); }
    bool ReadInputAtTime(double time, FloatImageK7& target) override { return Read(time, target); }

private:
    template <class Sample>
    bool Read(double time, PictureK7<Sample>& target);

    host::Operator* const operator_;
    host::Input* const input_;
};

} // namespace k7
