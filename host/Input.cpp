#include "host/Input.h"

#include "host/Document.h"
#include "host/Operator.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace host {

namespace {

Input::Type TypeOf(const TagList& tags) {
    const TagValue* value = tags.Find(kTagDataType);
    const auto* id = value ? std::get_if<FuID>(value) : nullptr;
    if (id && *id == FuID("Point")) return Input::Type::Point;
    if (id && *id == FuID("Text")) return Input::Type::Text;
    if (id && *id == FuID("Image")) return Input::Type::Image;
    return Input::Type::Number;
}

} // namespace

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

Input::Input(Operator* owner, const FuID& name, const FuID& id, const TagList& tags)
    : owner_(owner)
    , name_(name.Text())
    , id_(id.Text())
    , type_(TypeOf(tags)) {
    SetAttrs(tags);
    text_ = GetAttrS(kTagDefaultText);
    if (type_ == Type::Point)
        curve_.Constant = {GetAttrD(kTagDefaultX), GetAttrD(kTagDefaultY)};
    else
        curve_.Constant = {GetAttrD(kTagDefault), 0.0};
}

Input::~Input() {
    if (owner_ && owner_->Document) owner_->Document->Forget(this);
}

double Input::TimeOf(double time) const {
    return time == kTimeNow && owner_ && owner_->Document ? owner_->Document->CurrentTime.load() : time;
}

Parameter* Input::GetSource(double time) {
    const double at = TimeOf(time);
    std::unique_lock lock(mutex_);
    if (type_ == Type::Image) {
        ImageProvider* provider = provider_;
        lock.unlock();
        return provider ? provider->ImageAt(at) : nullptr;
    }
    if (type_ == Type::Text) return new Text(text_);
    const Curve::Value value = curve_.At(at);
    if (type_ == Type::Point) return new Point(value.x, value.y, 0.0);
    return new Number(value.x);
}

double Input::Held(double value) const {
    if (HasAttr(kTagLowest) && value < GetAttrD(kTagLowest)) value = GetAttrD(kTagLowest);
    if (HasAttr(kTagHighest) && value > GetAttrD(kTagHighest)) value = GetAttrD(kTagHighest);
    return value;
}

void Input::SetSource(Parameter* value, double time, int, TagList* tags) {
    Curve::Value xy;
    if (const auto* number = dynamic_cast<const Number*>(value); number && type_ == Type::Number)
        xy = {Held(number->Value), 0.0};
    else if (const auto* point = dynamic_cast<const Point*>(value); point && type_ == Type::Point)
        xy = {point->X, point->Y};
    else if (!dynamic_cast<const Text*>(value) || type_ != Type::Text)
        return;
    {
        const std::lock_guard lock(mutex_);
        if (type_ == Type::Text)
            text_ = static_cast<const Text*>(value)->Value;
        else if (curve_.Animated() && time != kTimeNow)
            curve_.Keys[time] = xy;
        else
            curve_.Constant = xy;
    }
    if (owner_) owner_->NotifyChanged(this, value, time, tags);
}

Curve Input::GetCurve() const {
    const std::lock_guard lock(mutex_);
    return curve_;
}

void Input::SetCurve(Curve curve) {
    if (type_ == Type::Number) {
        curve.Constant.x = Held(curve.Constant.x);
        for (auto& [time, value] : curve.Keys) value.x = Held(value.x);
    }
    double time = kTimeNow;
    {
        const std::lock_guard lock(mutex_);
        curve_ = std::move(curve);
        if (curve_.Animated()) time = curve_.Keys.begin()->first;
    }
    const Ref<Parameter> value(GetSource(time));
    if (owner_) owner_->NotifyChanged(this, value.get(), TimeOf(time), nullptr);
}

std::string Input::GetText() const {
    const std::lock_guard lock(mutex_);
    return text_;
}

void Input::Connect(ImageProvider* provider) {
    const std::lock_guard lock(mutex_);
    provider_ = provider;
}

bool Input::Connected() const {
    const std::lock_guard lock(mutex_);
    return provider_ != nullptr;
}

void Input::StartUndo(const char* title, const TagList*) {
    if (owner_ && owner_->Document) owner_->Document->StartUndo(title, this);
}

void Input::EndUndo(bool keep, const TagList*) {
    if (owner_ && owner_->Document) owner_->Document->EndUndo(keep);
}

} // namespace host
