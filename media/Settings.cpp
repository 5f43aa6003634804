#include "media/Settings.h"

#include "host/Document.h"
#include "host/Tags.h"
#include "media/Errors.h"
#include "media/Words.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <vector>

namespace media {
namespace {

using host::Curve;
using host::Input;
using nlohmann::json;
using nlohmann::ordered_json;
using Type = Input::Type;

[[noreturn]] void Refuse(const Input& control, const std::string& text, const std::string& wanted) {
    throw UsageError("'" + text + "' is not a value for " + KeyOf(control) + " (" + control.Name() +
                     "): write " + wanted);
}

double ParseEntry(const Input& control, const std::string& text) {
    const std::vector<std::string> entries = control.GetAttrList(host::kTagEntry);
    std::string wanted = "the number or the text of an entry:";
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::string entry = Trimmed(entries[i]);
        if (text == std::to_string(i) || SameWord(Trimmed(text), entry)) return static_cast<double>(i);
        wanted += (i ? ", " : " ") + std::to_string(i) + " '" + entry + "'";
    }
    Refuse(control, text, wanted);
}

double ParseOne(const Input& control, const std::string& text) {
    const std::string kind = control.GetAttrS(host::kTagControlKind);
    if (kind == "ComboControl") return ParseEntry(control, text);
    const bool box = kind == "CheckboxControl";
    const auto isOneOf = [&](std::initializer_list<const char*> words) {
        return std::any_of(words.begin(), words.end(),
                           [&](const char* word) { return SameWord(text, word); });
    };
    if (box && isOneOf({"on", "yes", "true"})) return 1;
    if (box && isOneOf({"off", "no", "false"})) return 0;
    if (const std::optional<double> number = ParseNumber(text)) return *number;
    Refuse(control, text, box ? "0, 1, on or off" : "a number");
}

Curve::Value ParseValue(const Input& control, const std::string& text) {
    if (control.DataType() == Type::Number) return {ParseOne(control, text), 0};
    const std::vector<std::string> pieces = Split(text, ',');
    const std::optional<double> x = ParseNumber(pieces[0]);
    const std::optional<double> y = pieces.size() == 2 ? ParseNumber(pieces[1]) : std::nullopt;
    if (!x || !y) Refuse(control, text, "x,y");
    return {*x, *y};
}

std::vector<std::string> NamesOf(const host::Operator& op) {
    std::vector<std::string> names;
    for (const Input* input : op.Inputs())
        if (IsControl(*input)) names.push_back(KeyOf(*input));
    for (const Input* input : op.Inputs())
        if (IsControl(*input)) names.push_back(input->Name());
    return names;
}

// --- Saving -----------------------------------------------------------------------------------------------

/// A number as JSON; as text if JSON cannot write it as a number.
ordered_json NumberToJson(double value) {
    if (std::isfinite(value)) return value;
    return std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf";
}

double NumberFromJson(const json& saved) {
    const std::optional<double> number =
        saved.is_string() ? ParseNumber(saved.get<std::string>()) : std::nullopt;
    return number ? *number : saved.get<double>();
}

ordered_json CurveToJson(const Input& control, const Curve& curve) {
    const bool point = control.DataType() == Type::Point;
    if (!curve.Animated()) {
        if (!point) return NumberToJson(curve.Constant.x);
        return {NumberToJson(curve.Constant.x), NumberToJson(curve.Constant.y)};
    }
    ordered_json keys = ordered_json::array();
    for (const auto& [frame, value] : curve.Keys) {
        ordered_json key = {NumberToJson(frame), NumberToJson(value.x)};
        if (point) key.push_back(NumberToJson(value.y));
        keys.push_back(std::move(key));
    }
    return {{"keys", keys}};
}

Curve::Value ValueFromJson(const Input& control, const json& saved, std::size_t first) {
    if (control.DataType() == Type::Point)
        return {NumberFromJson(saved.at(first)), NumberFromJson(saved.at(first + 1))};
    return {NumberFromJson(first ? saved.at(first) : saved), 0};
}

Curve CurveFromJson(const Input& control, const json& saved) {
    Curve curve = control.GetCurve();
    if (!saved.is_object()) return {ValueFromJson(control, saved, 0), {}};
    for (const json& key : saved.at("keys")) {
        const double frame = NumberFromJson(key.at(0));
        if (!std::isfinite(frame)) throw UsageError(KeyOf(control) + " has a key without a frame");
        curve.Keys[frame] = ValueFromJson(control, key, 1);
    }
    return curve;
}

void SetText(Input& control, const std::string& text) {
    const host::AutoParameter value(new host::Text(text));
    control.SetSource(value.get(), host::kTimeNow, 1, nullptr);
}

/// The full path of a file that lies in the working folder or below; any other text as it is. Tools look for
/// plain names in a data folder of their own.
std::string FromWorkingFolder(const std::string& text) {
    std::error_code error;
    const std::filesystem::path path(text);
    const bool here = path.is_relative() && std::filesystem::is_regular_file(path, error);
    return here ? std::filesystem::absolute(path, error).string() : text;
}

/// What a control makes of a number that it does not take unchanged.
std::string Changed(const Input& control, const Curve& wanted) {
    if (control.DataType() != Type::Number) return "";
    const bool whole = control.GetAttrI(host::kTagInteger) != 0;
    const auto taken = [&](double value) {
        if (control.HasAttr(host::kTagLowest)) value = std::max(value, control.GetAttrD(host::kTagLowest));
        if (control.HasAttr(host::kTagHighest)) value = std::min(value, control.GetAttrD(host::kTagHighest));
        return whole ? std::trunc(value) : value;
    };
    const auto note = [&](double value) {
        if (!std::isfinite(value) || taken(value) == value) return std::string();
        char text[128];
        std::snprintf(text, sizeof text, ": %g counts as %g", value, taken(value));
        return KeyOf(control) + " (" + control.Name() + ")" + text;
    };
    for (const auto& [frame, value] : wanted.Keys)
        if (const std::string text = note(value.x); !text.empty()) return text;
    return wanted.Animated() ? "" : note(wanted.Constant.x);
}

/// For its lifetime, operators of the document do not react to changes.
class Silence {
public:
    explicit Silence(host::FusionDoc* document) : document_(document) {
        if (document_) document_->Silent = true;
    }
    ~Silence() {
        if (document_) document_->Silent = false;
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    host::FusionDoc* const document_;
};

} // namespace

bool IsControl(const Input& input) {
    return input.DataType() != Type::Image;
}

const std::string& KeyOf(const Input& control) {
    return control.Id().empty() ? control.Name() : control.Id();
}

Input& FindControl(const host::Operator& op, const std::string& name) {
    Input* found = name.empty() ? nullptr : op.FindInput(name);
    for (Input* input : op.Inputs())
        if (!found && !name.empty() && SameWord(input->Id(), name)) found = input;
    if (found && !IsControl(*found)) throw UsageError("'" + name + "' is an image: give it a file with -i");
    if (found) return *found;
    std::string ids;
    int count = 0;
    for (Input* input : op.Inputs()) {
        if (!IsControl(*input) || !SameWord(Trimmed(input->Name()), Trimmed(name))) continue;
        found = input;
        ids += (count++ ? ", " : "") + input->Id();
    }
    if (count > 1) throw UsageError("'" + name + "' is the label of several controls: name one of " + ids);
    if (!found) throw UsageError(op.Name + " has no control '" + name + "'" + DidYouMean(name, NamesOf(op)));
    return *found;
}

Curve ParseCurve(const Input& control, const std::string& text) {
    if (!text.starts_with('@')) return {ParseValue(control, text), {}};
    Curve curve = control.GetCurve();
    curve.Keys.clear();
    for (const std::string& key : Split(text.substr(1), control.DataType() == Type::Point ? ';' : ',')) {
        const std::size_t colon = key.find(':');
        const std::optional<double> frame = ParseNumber(key.substr(0, colon));
        if (colon == std::string::npos || !frame || !std::isfinite(*frame))
            Refuse(control, key, "a key as frame:value");
        curve.Keys[*frame] = ParseValue(control, key.substr(colon + 1));
    }
    return curve;
}

std::string ApplySetting(host::Operator& op, const std::string& setting) {
    const std::size_t equals = setting.find('=');
    if (equals == std::string::npos)
        throw UsageError("'" + setting + "' is not a setting: write CONTROL=VALUE");
    Input& control = FindControl(op, setting.substr(0, equals));
    const std::string value = setting.substr(equals + 1);
    if (control.DataType() == Type::Text) {
        if (!IsUtf8(value)) throw UsageError("the text for " + KeyOf(control) + " is not UTF-8");
        SetText(control, FromWorkingFolder(value));
        return "";
    }
    const Curve wanted = ParseCurve(control, value);
    const std::string note = Changed(control, wanted);
    control.SetCurve(wanted);
    return note;
}

std::vector<std::string> WithoutEffect(const host::Operator& op, const std::vector<std::string>& settings) {
    std::vector<std::string> idle;
    for (const std::string& setting : settings) {
        const Input& control = FindControl(op, setting.substr(0, setting.find('=')));
        const bool hidden = control.GetAttrI(host::kTagShown, 1) == 0;
        if (!control.HasAttr(host::kTagCommon) && (hidden || control.GetAttrI(host::kTagDisabled)))
            idle.push_back(KeyOf(control) + " (" + control.Name() + ") is " + (hidden ? "hidden" : "greyed") +
                           " and may have no effect with these settings");
    }
    return idle;
}

ordered_json SavedValue(const Input& control) {
    if (control.DataType() == Type::Text) return control.GetText();
    return CurveToJson(control, control.GetCurve());
}

ordered_json SaveSettings(const host::Operator& op) {
    ordered_json controls = ordered_json::object();
    for (const Input* input : op.Inputs()) {
        if (!IsControl(*input)) continue;
        controls[KeyOf(*input)] = SavedValue(*input);
    }
    return {{"tool", op.Class()->Id().Text()}, {"controls", controls}};
}

void CopySettings(const host::Operator& from, host::Operator& to) {
    const Silence silence(to.Document);
    const std::vector<Input*> own = to.Inputs();
    std::size_t i = 0;
    for (const Input* input : from.Inputs()) {
        Input& copy = *own[i++];
        if (!IsControl(copy)) continue;
        if (copy.DataType() == Type::Text)
            SetText(copy, input->GetText());
        else
            copy.SetCurve(input->GetCurve());
    }
}

void ScaleLengths(host::Operator& op, double factor) {
    const Silence silence(op.Document);
    for (Input* input : op.Inputs()) {
        if (!input->GetAttrI(host::kTagPixels)) continue;
        Curve curve = input->GetCurve();
        curve.Constant.x *= factor;
        for (auto& [frame, value] : curve.Keys) value.x *= factor;
        input->SetCurve(curve);
    }
}

void RestoreSettings(host::Operator& op, const json& saved) {
    const Silence silence(op.Document);
    try {
        if (saved.at("tool") != op.Class()->Id().Text())
            throw UsageError("the settings belong to " + saved.at("tool").get<std::string>() + ", not to " +
                             op.Class()->Id().Text());
        for (const auto& [name, value] : saved.at("controls").items()) {
            Input& control = FindControl(op, name);
            if (control.DataType() == Type::Text)
                SetText(control, value.get<std::string>());
            else
                control.SetCurve(CurveFromJson(control, value));
        }
    } catch (const json::exception& error) {
        throw UsageError(std::string("the settings are not as k7 writes them: ") + error.what());
    }
}

} // namespace media
