#include "host/ValueStore.h"

#include <iterator>
#include <utility>

namespace host {

void ValueStore::Show(bool, bool) {}

Curve::Value Curve::At(double time) const {
    if (Keys.empty()) return Constant;
    const auto after = Keys.lower_bound(time);
    if (after == Keys.end()) return Keys.rbegin()->second;
    if (after == Keys.begin() || after->first == time) return after->second;
    const auto before = std::prev(after);
    const double part = (time - before->first) / (after->first - before->first);
    const Value a = before->second;
    const Value b = after->second;
    return {a.x + (b.x - a.x) * part, a.y + (b.y - a.y) * part};
}

Parameter* CurveStore::ValueAt(double time) const {
    const std::lock_guard lock(mutex_);
    if (kind_ == Kind::Text) return new Text(text_);
    const Curve::Value value = curve_.At(time);
    if (kind_ == Kind::Point) return new Point(value.x, value.y, 0.0);
    return new Number(value.x);
}

void CurveStore::Write(const Parameter& value, double time) {
    const std::lock_guard lock(mutex_);
    Curve::Value xy;
    if (const auto* text = dynamic_cast<const Text*>(&value)) {
        text_ = text->Value;
        return;
    }
    if (const auto* number = dynamic_cast<const Number*>(&value)) xy = {number->Value, 0.0};
    if (const auto* point = dynamic_cast<const Point*>(&value)) xy = {point->X, point->Y};
    if (curve_.Animated() && time != kTimeNow)
        curve_.Keys[time] = xy;
    else
        curve_.Constant = xy;
}

Curve CurveStore::GetCurve() const {
    const std::lock_guard lock(mutex_);
    return curve_;
}

void CurveStore::SetCurve(Curve curve) {
    const std::lock_guard lock(mutex_);
    curve_ = std::move(curve);
}

std::string CurveStore::GetText() const {
    const std::lock_guard lock(mutex_);
    return text_;
}

} // namespace host
