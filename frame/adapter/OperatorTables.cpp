// How the rows of an operator's tables become inputs of the host.

#include "frame/adapter/OperatorK7.h"

#include <string>

namespace k7 {

using namespace host;

void OperatorK7::Page(const char* name) {
    page_ = AddControlPage(name);
}

TagList OperatorK7::TagsFor(const char* dataType, const char* kind, unsigned notes) const {
    TagList tags{
        {kTagDataType, FuID(dataType)}, {kTagControlKind, FuID(kind)}, {kTagPage, page_}, {kTagDisabled, 0}};
    if (notes & kChange) {
        tags.Add({kTagReacts, 1});
        tags.Add({kTagReactsToo, 0});
    }
    if (notes & kHidden) tags.Add({kTagShown, 0});
    return tags;
}

ControlInput* OperatorK7::NewInput(const char* label, const char* id, const TagList& tags) {
    inputs_.push_back(std::make_unique<HostInput>(AddInput(FuID(label), FuID(id), tags)));
    return inputs_.back().get();
}

void OperatorK7::Note(ControlK7& control, unsigned notes) {
    controls_.push_back(&control);
    if (!(notes & kUnmirrored)) mirrored_.push_back(&control);
}

void OperatorK7::Enter(ControlK7& control, const ControlName& name, const TagList& tags) {
    control.Input[0] = NewInput(name.label, name.id, tags);
    Note(control, name.notes);
}

namespace {

TagList With(TagList tags, const Slider& slider) {
    tags.Add({kTagShownLow, slider.shownLow});
    tags.Add({kTagShownHigh, slider.shownHigh});
    tags.Add({kTagDefault, slider.standard});
    return tags;
}

TagList With(TagList tags, const Screw& screw) {
    const std::pair<Tag, std::optional<double>> bounds[] = {{kTagShownLow, screw.shownLow},
                                                            {kTagShownHigh, screw.shownHigh},
                                                            {kTagLowest, screw.lowest},
                                                            {kTagHighest, screw.highest}};
    for (const auto& [tag, bound] : bounds)
        if (bound) tags.Add({tag, *bound});
    tags.Add({kTagDefault, screw.standard});
    return tags;
}

TagList WithInteger(TagList tags) {
    tags.Add({kTagInteger, 1});
    return tags;
}

} // namespace

void OperatorK7::Add(FloatControlK7& control, const ControlName& name, const Slider& slider) {
    Enter(control, name, With(TagsFor("Number", "SliderControl", name.notes), slider));
}
void OperatorK7::Add(FloatControlK7& control, const ControlName& name, const Screw& screw) {
    Enter(control, name, With(TagsFor("Number", "ScrewControl", name.notes), screw));
}
void OperatorK7::Add(IntegerControlK7& control, const ControlName& name, const Slider& slider) {
    Enter(control, name, WithInteger(With(TagsFor("Number", "SliderControl", name.notes), slider)));
}
void OperatorK7::Add(IntegerControlK7& control, const ControlName& name, const Screw& screw) {
    Enter(control, name, WithInteger(With(TagsFor("Number", "ScrewControl", name.notes), screw)));
}

void OperatorK7::Add(CheckboxControlK7& control, const ControlName& name, const Check& check) {
    TagList tags = WithInteger(TagsFor("Number", "CheckboxControl", name.notes));
    tags.Add({kTagCheckbox, 0});
    tags.Add({kTagDefault, static_cast<double>(check.standard)});
    Enter(control, name, tags);
}

void OperatorK7::Add(ListControlK7& control, const ControlName& name, const Combo& combo) {
    const double last = static_cast<double>(combo.entries.size()) - 1.0;
    TagList tags = With(TagsFor("Number", "ComboControl", name.notes), Slider{0.0, 0.0, last});
    for (const char* entry : combo.entries) tags.Add({kTagEntry, entry});
    Enter(control, name, tags);
}

void OperatorK7::Add(PositionControlK7& control, const ControlName& name, const Offset& offset) {
    TagList tags = TagsFor("Point", "OffsetControl", name.notes);
    tags.Add({kTagDefaultX, offset.x});
    tags.Add({kTagDefaultY, offset.y});
    Enter(control, name, tags);
}

void OperatorK7::Add(FileControlK7& control, const ControlName& name, const FileName& file) {
    TagList tags = TagsFor("Text", "FileControl", name.notes);
    tags.Add({kTagDefaultText, file.standard});
    Enter(control, name, tags);
}

void OperatorK7::Add(ColourControlK7& control, const ControlName& name, const ColourSwatch& colour) {
    const double standards[] = {colour.red, colour.green, colour.blue, colour.alpha};
    const char* const letters[] = {"R", "G", "B", "A"};
    constexpr int alpha = 3;
    for (int i = 0; i <= alpha; ++i) {
        TagList tags = TagsFor("Number", "ColorControl", name.notes | (i == alpha ? kHidden : kPlain));
        tags.Add({kTagColourLabel, name.label});
        tags.Add({kTagDefault, standards[i]});
        if (i < alpha) {
            tags.Add({kTagColourGroup, colour.group});
            tags.Add({kTagColourChannel, i});
        }
        control.Input[i] = NewInput(name.label, (std::string(name.id) + letters[i]).c_str(), tags);
    }
    Note(control, name.notes);
}

void OperatorK7::AddDepthSwitch() {
    floatPictures_ = AddInput(FuID("Float Pictures"), FuID("FloatPictures"),
                              {{kTagDataType, FuID("Number")},
                               {kTagControlKind, FuID("CheckboxControl")},
                               {kTagCommon, 0},
                               {kTagShown, 0},
                               {kTagInteger, 1},
                               {kTagCheckbox, 0},
                               {kTagDefault, 0.0}});
}

namespace {

Input* InputOf(const ControlK7& control) {
    return static_cast<HostInput*>(control.Input[0])->Get();
}

} // namespace

void OperatorK7::InPixels(const ControlK7& control) {
    InputOf(control)->SetAttrs({{kTagPixels, 1}});
}

void OperatorK7::IdleAt(const ControlK7& control, double value) {
    InputOf(control)->SetAttrs({{kTagIdleAt, value}});
}

void OperatorK7::AidAt(const ControlK7& control, double value) {
    InputOf(control)->SetAttrs({{kTagAidAt, value}});
}

Input* OperatorK7::NewImageInput(const char* name, int number, bool optional) {
    TagList tags{{kTagDataType, FuID("Image")}, {kTagMainLink, number}};
    if (optional) tags.Add({kTagOptional, 0});
    return AddInput(FuID(name), FuID(name), tags);
}

void OperatorK7::AddMainImage(ImageInputK7& slot, const char* name) {
    mainInput_ = NewImageInput(name, 1, false);
    mainFrames_ = std::make_unique<HostFrames>(this, mainInput_);
    mainSlot_ = &slot;
    slot.Input = mainFrames_.get();
}

void OperatorK7::AddSecondImage(ImageInputK7& slot, const char* name, SecondImage use) {
    secondInput_ = NewImageInput(name, 2, true);
    secondFrames_ = std::make_unique<HostFrames>(this, secondInput_);
    secondSlot_ = &slot;
    secondUse_ = use;
    slot.Input = secondFrames_.get();
}

void OperatorK7::AddImageOutput(ImageOutputK7& slot) {
    output_ = AddOutput(FuID("Output"), FuID("Output"), {{kTagDataType, FuID("Image")}, {kTagMainLink, 1}});
    outputSlot_ = &slot;
    AddDepthSwitch();
}

} // namespace k7
