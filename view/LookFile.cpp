#include "view/LookFile.h"

#include "media/Errors.h"
#include "media/Settings.h"
#include "media/Stack.h"
#include "view/Command.h"

#include <nlohmann/json.hpp>

namespace view {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr const char* kClip = "clip";
constexpr const char* kFiles = "files";

ordered_json SavedLayer(const Layer& layer) {
    ordered_json saved = media::SaveSettings(*layer.op);
    if (!layer.on) saved["on"] = false;
    return saved;
}

Layer LayerFrom(Look& look, const json& saved) {
    Layer layer = look.NewLayer(media::ToolOf(saved));
    layer.on = media::IsOn(saved);
    media::RestoreSettings(*layer.op, saved);
    ShowAsValuesSay(*layer.op);
    return layer;
}

std::vector<Layer> LayersFrom(Look& look, const json& saved) {
    std::vector<Layer> layers;
    for (const json& element : media::SavedTools(saved)) layers.push_back(LayerFrom(look, element));
    return layers;
}

} // namespace

ordered_json SavedLook(const Look& look) {
    if (look.Layers().size() == 1) return SavedLayer(look.Layers().front());
    ordered_json tools = ordered_json::array();
    for (const Layer& layer : look.Layers()) tools.push_back(SavedLayer(layer));
    return {{"tools", tools}};
}

void TakeSavedLook(Look& look, const json& saved, const QString& title) {
    std::vector<Layer> layers = LayersFrom(look, saved);
    for (std::size_t i = 0; i < std::min(layers.size(), look.Layers().size()); ++i)
        if (const Layer& old = look.Layers()[i]; old.op->Class() == layers[i].op->Class())
            layers[i].files = old.files;
    look.ReplaceAll(title, std::move(layers));
}

void TakeStyle(Look& look, const json& saved, const QString& title) {
    const Layer styled = LayerFrom(look, saved);
    if (styled.op->Class() != look.Op().Class())
        throw media::UsageError("the style is one of " + styled.op->Name + ", not of " + look.Op().Name);
    look.Do(title.toStdString(), [&] { Restore(look.Op(), ValuesOf(*styled.op)); });
}

ordered_json SavedWork(const Look& look, const std::string& clip) {
    ordered_json files = ordered_json::array();
    for (const Layer& layer : look.Layers()) files.push_back(layer.files);
    ordered_json saved = SavedLook(look);
    saved[kClip] = clip;
    saved[kFiles] = files;
    return saved;
}

std::string TakeSavedWork(Look& look, const json& saved, const QString& title) {
    std::vector<Layer> layers = LayersFrom(look, saved);
    try {
        for (std::size_t i = 0; i < layers.size(); ++i) saved.at(kFiles).at(i).get_to(layers[i].files);
        std::string clip = saved.at(kClip);
        look.ReplaceAll(title, std::move(layers));
        return clip;
    } catch (const json::exception& error) {
        throw media::UsageError(std::string("what was kept cannot be read: ") + error.what());
    }
}

} // namespace view
