#pragma once

#include "host/Input.h"
#include "host/ValueStore.h"
#include "ofx/Abi.h"
#include "ofx/Exchange.h"
#include "ofx/Plan.h"

namespace ofx {

/// The value of an input in a host's parameter, or in one channel of it. Refusals of the host are noted; a
/// value that cannot be read is null.
class ParameterStore : public host::ValueStore {
public:
    ParameterStore(Exchange& exchange, Param param, ParameterPlan::Kind kind, int channel,
                   const host::Input& input);

    host::Parameter* ValueAt(double time) const override;
    void Write(const host::Parameter& value, double time) override;
    void Show(bool shown, bool enabled) override;

private:
    host::Parameter* ReadAt(double time) const;
    double Scaled(double value) const;
    void WriteNumber(double value, double time) const;
    template <class... Values>
    void Hand(double time, Values... values) const;

    Exchange& exchange_;
    const Param param_;
    const ParameterPlan::Kind kind_;
    const int channel_; ///< of a colour
    const bool inPixels_;
};

} // namespace ofx
