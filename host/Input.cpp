#include "host/Input.h"

#include "host/Document.h"
#include "host/Operator.h"

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

CurveStore::Kind KindOf(Input::Type type) {
    if (type == Input::Type::Point) return CurveStore::Kind::Point;
    return type == Input::Type::Text ? CurveStore::Kind::Text : CurveStore::Kind::Number;
}

} // namespace

Input::Input(Operator* owner, const FuID& name, const FuID& id, const TagList& tags)
    : owner_(owner)
    , name_(name.Text())
    , id_(id.Text())
    , type_(TypeOf(tags)) {
    Object::SetAttrs(tags);
    Curve::Value constant = {GetAttrD(kTagDefault), 0.0};
    if (type_ == Type::Point) constant = {GetAttrD(kTagDefaultX), GetAttrD(kTagDefaultY)};
    memory_ = std::make_unique<CurveStore>(KindOf(type_), constant, GetAttrS(kTagDefaultText));
}

void Input::KeepValueIn(std::unique_ptr<ValueStore> store) {
    elsewhere_ = std::move(store);
}

void Input::SetAttrs(const TagList& tags) {
    Object::SetAttrs(tags);
    if (tags.Find(kTagShown) || tags.Find(kTagDisabled))
        Store().Show(GetAttrI(kTagShown, 1) != 0, GetAttrI(kTagDisabled) == 0);
}

Input::~Input() {
    if (owner_ && owner_->Document) owner_->Document->Forget(this);
}

double Input::TimeOf(double time) const {
    return time == kTimeNow && owner_ && owner_->Document ? owner_->Document->CurrentTime.load() : time;
}

Parameter* Input::GetSource(double time) {
    const double at = TimeOf(time);
    if (type_ != Type::Image) return Store().ValueAt(at);
    Image* picture = Unfiltered(at);
    return picture && filter_ ? filter_(picture, at) : picture;
}

Image* Input::Unfiltered(double time) {
    std::unique_lock lock(mutex_);
    ImageProvider* provider = provider_;
    lock.unlock();
    return provider ? provider->ImageAt(TimeOf(time)) : nullptr;
}

double Input::Held(double value) const {
    if (HasAttr(kTagLowest) && value < GetAttrD(kTagLowest)) value = GetAttrD(kTagLowest);
    if (HasAttr(kTagHighest) && value > GetAttrD(kTagHighest)) value = GetAttrD(kTagHighest);
    return value;
}

void Input::SetSource(Parameter* value, double time, int, TagList* tags) {
    if (const auto* number = dynamic_cast<const Number*>(value); number && type_ == Type::Number)
        Store().Write(*AutoNumber(Held(number->Value)).get(), time);
    else if ((dynamic_cast<const Point*>(value) && type_ == Type::Point) ||
             (dynamic_cast<const Text*>(value) && type_ == Type::Text))
        Store().Write(*value, time);
    else
        return;
    if (owner_) owner_->NotifyChanged(this, value, time, tags);
}

Curve Input::GetCurve() const {
    return memory_->GetCurve();
}

void Input::SetCurve(Curve curve) {
    if (type_ == Type::Number) {
        curve.Constant.x = Held(curve.Constant.x);
        for (auto& [time, value] : curve.Keys) value.x = Held(value.x);
    }
    const double time = curve.Animated() ? curve.Keys.begin()->first : kTimeNow;
    memory_->SetCurve(std::move(curve));
    const Ref<Parameter> value(GetSource(time));
    if (owner_) owner_->NotifyChanged(this, value.get(), TimeOf(time), nullptr);
}

std::string Input::GetText() const {
    return memory_->GetText();
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
