#include "media/Stack.h"

#include "host/Tags.h"
#include "media/Errors.h"
#include "media/PlugIns.h"
#include "media/Settings.h"
#include "media/Words.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace media {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;

host::Input& FloatSwitch(const host::Operator& op) {
    return FindControl(op, "FloatPictures");
}

std::vector<json> ToolsThatAreOn(const json& saved) {
    std::vector<json> tools = SavedTools(saved);
    std::erase_if(tools, [](const json& tool) { return !IsOn(tool); });
    if (tools.empty()) throw UsageError("all tools of these settings are switched off");
    return tools;
}

} // namespace

std::pair<std::string, std::string> SplitLink(const std::string& link) {
    std::error_code ignored;
    const std::size_t equals = std::filesystem::exists(link, ignored) ? std::string::npos : link.find('=');
    if (equals >= link.find('/')) return {"", link}; // npos where there is neither
    return {link.substr(0, equals), link.substr(equals + 1)};
}

Stack::Stack(const std::vector<host::Registry*>& tools) {
    MakeTools({tools.begin(), tools.end()});
}

Stack::Stack(const Stack& other) {
    std::vector<const host::Registry*> tools;
    for (const Stage& stage : other.stages_) tools.push_back(stage.op->Class());
    MakeTools(tools);
    document_.CurrentTime = other.document_.CurrentTime.load();
    for (std::size_t i = 0; i < Size(); ++i) {
        CopySettings(other.Op(i), Op(i));
        host::TimeExtent extent(0, 0, 0);
        other.Op(i).GetExtent(extent, nullptr);
        Op(i).SetExtent(extent);
        for (const auto& [input, feed] : other.stages_[i].clips) {
            host::Input* own = Op(i).FindInput(input->Id());
            auto& copy = stages_[i].clips[own] = std::make_unique<ClipFeed>(*feed);
            own->Connect(copy.get());
        }
    }
}

void Stack::MakeTools(const std::vector<const host::Registry*>& tools) {
    for (const host::Registry* tool : tools) {
        Stage stage;
        stage.op = host::Ref<host::Operator>(tool->NewOperator(&document_));
        if (!stage.op) throw std::runtime_error("the tool " + PlainName(*tool) + " could not be made");
        if (!stages_.empty()) stage.before = std::make_unique<ToolFeed>(Last(), *stage.op);
        stages_.push_back(std::move(stage));
        if (ToolFeed* before = stages_.back().before.get()) MainInput(Size() - 1)->Connect(before);
    }
}

std::vector<std::atomic<bool>*> Stack::AbortFlags() const {
    std::vector<std::atomic<bool>*> flags;
    for (const Stage& stage : stages_) flags.push_back(&stage.op->AbortFlag);
    return flags;
}

host::Input* Stack::MainInput(std::size_t stage) const {
    for (host::Input* input : Op(stage).Inputs())
        if (!IsControl(*input) && input->GetAttrI(host::kTagMainLink) == 1) return input;
    throw std::runtime_error(Op(stage).Name + " has no image input");
}

host::Input& Stack::FindImageInput(std::size_t stage, const std::string& name) const {
    std::vector<std::string> names;
    for (host::Input* input : Op(stage).Inputs()) {
        if (IsControl(*input)) continue;
        if (SameWord(input->Id(), name) || SameWord(input->Name(), name)) return *input;
        names.push_back(input->Id());
    }
    throw UsageError(Op(stage).Name + " has no image input '" + name + "'" + DidYouMean(name, names));
}

void Stack::LinkAll(const std::vector<Links>& links, Missing missing, const std::string& aspect,
                    const ReadOptions& options) {
    const std::optional<Aspect> pixel = aspect.empty() ? std::nullopt : std::optional(ParseAspect(aspect));
    for (std::size_t i = 0; i < links.size(); ++i)
        for (const std::string& link : links[i]) Link(i, link, missing, pixel, options);
    CheckLinks();
}

void Stack::Link(std::size_t stage, const std::string& link, Missing missing, std::optional<Aspect> aspect,
                 const ReadOptions& options) {
    const auto [name, file] = SplitLink(link);
    if (name.empty()) stage = 0;
    host::Input* input = name.empty() ? MainInput(0) : &FindImageInput(stage, name);
    if (file.empty()) throw UsageError("'" + link + "' names no file");
    if (stage > 0 && input == MainInput(stage))
        throw UsageError("'" + link + "': the main picture of " + Op(stage).Name +
                         " is that of the tool before it");
    if (Feeding(input)) throw UsageError("'" + link + "': the input " + input->Id() + " already has a file");
    auto& feed = stages_[stage].clips[input] =
        std::make_unique<ClipFeed>(std::make_shared<Clip>(file, missing, aspect, options));
    input->Connect(feed.get());
}

void Stack::CheckLinks() const {
    for (const Stage& stage : stages_)
        for (host::Input* input : stage.op->Inputs())
            if (!IsControl(*input) && !input->HasAttr(host::kTagOptional) && !input->Connected())
                throw UsageError(stage.op->Name + " needs a picture at its input '" + input->Id() +
                                 "': name a file with -i");
}

ClipFeed* Stack::Feeding(host::Input* input) const {
    for (const Stage& stage : stages_)
        if (const auto found = stage.clips.find(input); found != stage.clips.end())
            return found->second.get();
    return nullptr;
}

std::vector<Clip*> Stack::Clips() const {
    std::vector<Clip*> clips;
    for (const Stage& stage : stages_)
        for (const auto& [input, feed] : stage.clips) clips.push_back(feed->Source().get());
    return clips;
}

bool Stack::ReadsSequence(const std::string& path, int frame) const {
    const auto place = [](const std::string& name) {
        std::error_code ignored;
        return std::filesystem::weakly_canonical(std::filesystem::absolute(name, ignored), ignored);
    };
    const std::vector<Clip*> clips = Clips();
    return std::any_of(clips.begin(), clips.end(), [&](const Clip* clip) {
        return clip->IsSequence() && place(clip->NameOf(frame)) == place(path);
    });
}

std::vector<std::string> Stack::FilesRead() const {
    std::vector<std::string> all;
    for (const Clip* clip : Clips())
        for (std::string& file : clip->Files()) all.push_back(std::move(file));
    return all;
}

std::vector<std::string> Stack::SingleFiles() const {
    std::vector<std::string> all;
    for (const Clip* clip : Clips())
        if (!clip->IsSequence())
            for (std::string& file : clip->Files()) all.push_back(std::move(file));
    return all;
}

void Stack::ChooseDepth(WorkingDepth depth, int frame) {
    bool floats = depth == WorkingDepth::Floats;
    if (depth == WorkingDepth::OfPicture) {
        for (std::size_t i = 0; i < Size(); ++i) floats |= FloatSwitch(Op(i)).GetCurve().Constant.x != 0.0;
        try {
            floats |= MainClip().At(frame).image->PixelDepth >= host::Depth::Half;
        } catch (const FrameError&) {
            // is reported when the frame is rendered
        }
    }
    for (std::size_t i = 0; i < Size(); ++i)
        FloatSwitch(Op(i)).SetSource(host::AutoNumber(floats).get(), host::kTimeNow, 1, nullptr);
    // Between tools nothing is lost beyond what the next one's words lose.
    if (Size() > 1) Feeding(MainInput(0))->Deepen(floats ? host::Depth::Float : host::Depth::Int16);
}

void Stack::SetExtent(const FrameSpan& span) {
    for (std::size_t i = 0; i < Size(); ++i)
        Op(i).SetExtent({static_cast<double>(span.first), static_cast<double>(span.last) + 1, 1});
}

std::string Stack::TakeErrors() const {
    std::string first;
    const auto take = [&](Feed& feed) {
        if (const std::string error = feed.TakeError(); first.empty()) first = error;
    };
    for (const Stage& stage : stages_) {
        for (const auto& [input, feed] : stage.clips) take(*feed);
        if (stage.before) take(*stage.before);
    }
    return first;
}

void Stack::Forget(std::size_t from) {
    for (std::size_t i = from + 1; i < Size(); ++i) stages_[i].before->Forget();
}

std::shared_ptr<host::Image> Stack::Render(int frame) {
    MainClip().At(frame); // throws if the main picture is missing: tools run only with one
    document_.CurrentTime = frame;
    host::Request request(frame);
    Last().Render(&request);
    for (const std::atomic<bool>* aborted : AbortFlags())
        if (*aborted) return nullptr;
    if (const std::string error = TakeErrors(); !error.empty()) throw FrameError(error);
    for (const host::Output* output : Last().Outputs())
        if (auto* image = dynamic_cast<host::Image*>(request.OutputData(output))) {
            image->Retain();
            return Share(image);
        }
    throw FrameError((Size() > 1 ? Last().Name : "the tool") +
                     " produced no picture, perhaps because memory ran out");
}

ordered_json SaveStack(const Stack& stack) {
    if (stack.Size() == 1) return SaveSettings(stack.Op());
    ordered_json tools = ordered_json::array();
    for (std::size_t i = 0; i < stack.Size(); ++i) tools.push_back(SaveSettings(stack.Op(i)));
    return {{"tools", tools}};
}

std::vector<json> SavedTools(const json& saved) {
    if (!saved.is_object()) throw UsageError("the settings are not as k7 writes them");
    if (!saved.contains("tools")) return {saved};
    const json& tools = saved["tools"];
    if (!tools.is_array() || tools.empty()) throw UsageError("\"tools\" is not a list of tools");
    for (std::size_t i = 0; i < tools.size(); ++i)
        if (!tools[i].is_object() || !tools[i].contains("tool") || !tools[i]["tool"].is_string())
            throw UsageError("tool " + std::to_string(i + 1) + " has no name under \"tool\"");
    return tools;
}

host::Registry& ToolOf(const json& element) {
    if (!element.contains("tool") || !element["tool"].is_string())
        throw UsageError("the settings have no name under \"tool\"");
    return FindTool(element["tool"].get<std::string>());
}

bool IsOn(const json& element) {
    return !element.contains("on") || element["on"] != false;
}

std::vector<host::Registry*> ToolsOf(const json& saved) {
    std::vector<host::Registry*> tools;
    for (const json& tool : ToolsThatAreOn(saved)) tools.push_back(&ToolOf(tool));
    return tools;
}

void RestoreStack(Stack& stack, const json& saved) {
    const std::vector<json> tools = ToolsThatAreOn(saved);
    if (tools.size() != stack.Size())
        throw UsageError("the settings are of " + std::to_string(tools.size()) + " tools, not of " +
                         std::to_string(stack.Size()));
    for (std::size_t i = 0; i < tools.size(); ++i) {
        try {
            RestoreSettings(stack.Op(i), tools[i]);
        } catch (const UsageError& error) {
            if (stack.Size() == 1) throw;
            throw UsageError("tool " + std::to_string(i + 1) + ", " + stack.Op(i).Name + ": " + error.what());
        }
    }
}

} // namespace media
