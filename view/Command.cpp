#include "view/Command.h"

#include "host/Document.h"
#include "host/Registry.h"
#include "host/Tags.h"
#include "media/Errors.h"
#include "media/PlugIns.h"
#include "media/Settings.h"

#include <QRegularExpression>

#include <algorithm>
#include <charconv>
#include <new>
#include <utility>

namespace view {

using host::Input;
using Type = Input::Type;

namespace {

/// The shortest text that is read as the same number.
std::string Exact(double value) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string ValueText(const Input& input, const host::Curve::Value& value) {
    std::string text = Exact(value.x);
    if (input.DataType() == Type::Point) text.append(1, ',').append(Exact(value.y));
    return text;
}

bool SameValue(const Input& a, const Input& b) {
    return a.DataType() == Type::Text ? a.GetText() == b.GetText() : a.GetCurve() == b.GetCurve();
}

std::string SettingFor(const Input& input) {
    const bool text = input.DataType() == Type::Text;
    const std::string value = text ? input.GetText() : CurveText(input, input.GetCurve());
    return std::string(media::KeyOf(input)).append(1, '=').append(value);
}

constexpr const char* kFloatSwitch = "FloatPictures=";

/// One tool in floats takes the whole stack there.
bool WorksInFloats(const Layer& layer) {
    return layer.on && media::FindControl(*layer.op, "FloatPictures").GetCurve().Constant.x != 0.0;
}

/// Settings, and the states to which they bring a new instance.
struct Rebuilt {
    std::vector<std::string> settings;
    Values states;
};

Rebuilt Rebuild(const host::Operator& op) {
    host::FusionDoc document;
    document.CurrentTime = op.Document->CurrentTime.load();
    const host::Ref<host::Operator> fresh(op.Class()->NewOperator(&document));
    if (!fresh) throw std::bad_alloc();
    Rebuilt rebuilt;
    const std::vector<Input*> now = op.Inputs(), built = fresh->Inputs();
    // Controls with reactions come first. What their reactions have put elsewhere is set once more.
    for (const bool reacting : {true, false, false})
        for (std::size_t i = 0; i < now.size(); ++i) {
            if (!media::IsControl(*now[i]) || SameValue(*now[i], *built[i])) continue;
            if (reacting && !now[i]->GetAttrI(host::kTagReacts)) continue;
            rebuilt.settings.push_back(SettingFor(*now[i]));
            media::ApplySetting(*fresh, rebuilt.settings.back());
        }
    rebuilt.states = ValuesOf(*fresh);
    return rebuilt;
}

} // namespace

std::string CurveText(const Input& input, const host::Curve& curve) {
    if (!curve.Animated()) return ValueText(input, curve.Constant);
    std::string text;
    for (const auto& [frame, value] : curve.Keys) {
        text += text.empty() ? '@' : input.DataType() == Type::Point ? ';' : ',';
        text.append(Exact(frame)).append(1, ':').append(ValueText(input, value));
    }
    return text;
}

std::vector<std::string> SettingsFor(const host::Operator& op) {
    return Rebuild(op).settings;
}

void ShowAsValuesSay(host::Operator& op) {
    const Values states = Rebuild(op).states;
    Values values = ValuesOf(op);
    for (std::size_t i = 0; i < states.size(); ++i) {
        values[i].shown = states[i].shown;
        values[i].enabled = states[i].enabled;
    }
    Restore(op, values);
}

QStringList RenderWords(const std::string& clip, const std::vector<Layer>& layers, const QString& output,
                        const QString& frames) {
    QStringList words, common{"-i", QString::fromStdString(clip), "-o", output};
    if (!frames.isEmpty()) common << "-f" << frames;
    if (std::any_of(layers.begin(), layers.end(), WorksInFloats)) common << "--float";
    for (const Layer& layer : layers) {
        if (!layer.on) continue;
        words << (words.isEmpty() ? "render" : "--then")
              << QString::fromStdString(media::PlainName(*layer.op->Class()));
        words << std::exchange(common, {});
        for (const auto& [id, file] : layer.files)
            words << "-i" << QString::fromStdString(std::string(id).append(1, '=').append(file));
        for (const std::string& setting : SettingsFor(*layer.op))
            if (!setting.starts_with(kFloatSwitch)) words << "-s" << QString::fromStdString(setting);
    }
    if (words.isEmpty()) throw media::UsageError("all tools are switched off: there is nothing to render");
    return words;
}

QString ShellLine(const QStringList& words) {
    static const QRegularExpression plain("^[A-Za-z0-9_.,:=@%+/-]+$");
    QStringList quoted;
    for (QString word : words)
        quoted << (plain.match(word).hasMatch() ? word : "'" + word.replace("'", "'\\''") + "'");
    return "k7 " + quoted.join(' ');
}

} // namespace view
