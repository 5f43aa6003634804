#include "app/Commands.h"
#include "app/Listener.h"
#include "app/PictureOptions.h"
#include "app/RenderJob.h"
#include "host/Application.h"
#include "media/Errors.h"
#include "media/PlugIns.h"
#include "media/Settings.h"
#include "media/Tool.h"
#include "media/WholeFile.h"
#include "media/Words.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <map>
#include <stdexcept>

namespace app {

using namespace media;
namespace {

Missing ParseMissing(const std::string& text) {
    static const std::map<std::string, Missing> words = {
        {"error", Missing::Error}, {"hold", Missing::Hold}, {"black", Missing::Black}};
    const auto found = words.find(text);
    if (found == words.end()) throw UsageError("--missing knows error, hold and black, not '" + text + "'");
    return found->second;
}

nlohmann::json ReadJson(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw UsageError("'" + path + "': the settings cannot be read");
    const nlohmann::json json = nlohmann::json::parse(file, nullptr, false);
    if (json.is_discarded()) throw UsageError("'" + path + "': is no JSON");
    return json;
}

class RenderCommand : public Command {
public:
    explicit RenderCommand(CLI::App& k7)
        : Command(k7.add_subcommand("render", "Renders frames of a clip with a tool")) {
        CLI::App& line = *Line();
        AddToolName(toolName_);
        AddEach("-i,--input", links_, "[INPUT=]FILE: the picture, sequence or `sample:` at an input")
            ->required();
        line.add_option("-o,--output", output_, "FILE to write; %04d or #### stand for the frame's number")
            ->required();
        AddEach("-s,--set", settings_, "CONTROL=VALUE, in the order given");
        line.add_option("-f,--frames", frames_, "FRAMES to render: 7, 1-100, 1-100x5, divided by commas");
        line.add_option("-t,--threads", threads_, "Number of processors that the tool is told of")
            ->check(CLI::Range(1, 4096));
        line.add_option("--extent", extent_, "A-B: first and last frame of the clip");
        line.add_option("--aspect", aspect_, "X:Y: width and height of a pixel");
        line.add_option("--missing", missing_, "What to do where a frame is not there: error, hold or black");
        line.add_flag("--skip-existing", skipExisting_, "Leave frames alone whose files are there");
        line.add_option("--settings", settingsFile_,
                        "Take the controls from a file that --save-settings wrote");
        line.add_option("--save-settings", saveFile_,
                        "Write all controls with their keys into a file at the end");
        line.add_flag("--quiet", quiet_, "Print only warnings and errors");
        pictures_.AddTo(line, true);
    }

    int Run() override {
        Tool tool(FindTool(toolName_));
        tool.LinkAll(links_, ParseMissing(missing_), aspect_, pictures_.Reading());
        const std::vector<int> frames = ChooseFrames(tool);
        CheckOutput(tool, frames);
        if (threads_) host::GetApp()->ProcessorCount = threads_;
        tool.Document().CurrentTime = frames.front();
        Set(tool.Op());

        const auto [least, most] = std::minmax_element(frames.begin(), frames.end());
        Console console(Console::StyleFor(quiet_), static_cast<int>(frames.size()), *least, *most);
        const Listener listener(console);
        const int code = RenderJob(tool, console, output_, skipExisting_, pictures_.Writing()).Run(frames);
        if (!saveFile_.empty()) Save(tool.Op());
        return code;
    }

private:
    /// The frames to render. Sets the tool's extent too: a single picture is there for all frames asked for.
    std::vector<int> ChooseFrames(Tool& tool) const {
        const bool sequence = tool.MainClip().IsSequence();
        std::optional<FrameSpan> span = tool.MainClip().Span();
        if (!extent_.empty()) span = ParseSpan(extent_);
        if (frames_.empty() && sequence && !span)
            throw UsageError("'" + links_.front() + "': no frame of this clip is there");
        std::vector<int> frames = ParseFrames(!frames_.empty() ? frames_ : sequence ? Describe(*span) : "0");
        const auto [least, most] = std::minmax_element(frames.begin(), frames.end());
        tool.SetExtent(span ? *span : FrameSpan{*least, *most});
        return frames;
    }

    void CheckOutput(const Tool& tool, const std::vector<int>& frames) const {
        CheckCanWrite(output_, pictures_.Writing());
        const FilePattern output(output_);
        // A tool that looks back would find its own work.
        if (tool.ReadsSequence(output.At(frames.front()), frames.front()))
            throw UsageError("'" + output_ + "' would overwrite the sequence that is read");
        if (frames.size() > 1 && !output.IsSequence())
            throw UsageError("'" + output_ + "' has room for one frame, not for " +
                             std::to_string(frames.size()) + ": write %04d or #### for the frame's number");
    }

    void Set(host::Operator& op) const {
        if (!settingsFile_.empty()) RestoreSettings(op, ReadJson(settingsFile_));
        for (const std::string& setting : settings_) ApplySetting(op, setting);
    }

    void Save(const host::Operator& op) const {
        const std::string text = SaveSettings(op).dump(2) + "\n";
        try {
            WholeFile(saveFile_).Finish({text.begin(), text.end()});
        } catch (const FrameError& error) {
            throw std::runtime_error(saveFile_ + ": " + error.what());
        }
    }

    std::string toolName_, output_, frames_, extent_, aspect_, settingsFile_, saveFile_;
    std::string missing_ = "error";
    std::vector<std::string> links_, settings_;
    PictureOptions pictures_;
    int threads_ = 0;
    bool skipExisting_ = false, quiet_ = false;
};

} // namespace

std::unique_ptr<Command> MakeRenderCommand(CLI::App& k7) {
    return std::make_unique<RenderCommand>(k7);
}

} // namespace app
