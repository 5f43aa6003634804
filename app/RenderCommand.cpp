#include "app/Commands.h"
#include "app/Listener.h"
#include "app/OutputCheck.h"
#include "app/PictureOptions.h"
#include "app/RenderJob.h"
#include "app/StackOptions.h"
#include "host/Application.h"
#include "media/Errors.h"
#include "media/Stack.h"
#include "media/Words.h"

#include <algorithm>
#include <map>

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

class RenderCommand : public Command {
public:
    explicit RenderCommand(CLI::App& k7)
        : Command(k7.add_subcommand("render", "Renders frames of a clip with one tool or several")) {
        CLI::App& line = *Line();
        tools_.AddTo(line);
        line.add_option("-o,--output", output_, "FILE to write; %04d or #### stand for the frame's number")
            ->required();
        line.add_option("-f,--frames", frames_, "FRAMES to render: 7, 1-100, 1-100x5, divided by commas");
        line.add_option("-t,--threads", threads_, "Number of processors that the tool is told of")
            ->check(CLI::Range(1, 4096));
        line.add_option("--extent", extent_, "A-B: first and last frame of the clip");
        line.add_option("--aspect", aspect_, "X:Y: width and height of a pixel");
        line.add_option("--missing", missing_, "What to do where a frame is not there: error, hold or black");
        line.add_flag("--skip-existing", skipExisting_,
                      "Leave frames alone whose files are there and can be read");
        line.add_flag("--no-mkdir", noFolder_, "Fail where the folder of the output is missing");
        line.add_option("--log", logFile_, "FILE for the lines of the run and its warnings, with times");
        line.add_flag("--quiet", quiet_, "Print only warnings and errors");
        pictures_.AddTo(line, true);
    }

    void SetLaterStages(std::vector<StageWords> stages) override { tools_.SetLater(std::move(stages)); }

    int Run() override {
        const std::unique_ptr<Stack> made = tools_.Make(ParseMissing(missing_), aspect_, pictures_.Reading());
        Stack& stack = *made;
        const std::vector<int> frames = ChooseFrames(stack);
        CheckBeforeWork({stack, output_, frames, pictures_.Writing(), !noFolder_});
        if (threads_) host::GetApp()->ProcessorCount = threads_;
        if (threads_) host::GetApp()->Division = threads_;
        stack.Document().CurrentTime = frames.front();
        const auto [least, most] = std::minmax_element(frames.begin(), frames.end());
        Console console(Console::StyleFor(quiet_), static_cast<int>(frames.size()), *least, *most);
        if (!logFile_.empty()) console.LogTo(logFile_);
        tools_.Apply(stack, pictures_.Working(), frames.front(), console);
        const Listener listener(console);
        const int code = RenderJob(stack, console, output_, skipExisting_, pictures_.Writing()).Run(frames);
        tools_.Save(stack);
        return code;
    }
    bool PrintsResult() const override { return false; }

private:
    /// The frames to render. Sets the extent of the tools too: a single picture is there for all frames asked
    /// for.
    std::vector<int> ChooseFrames(Stack& stack) const {
        const bool sequence = stack.MainClip().IsSequence();
        std::optional<FrameSpan> span = stack.MainClip().Span();
        if (!extent_.empty()) span = ParseSpan(extent_);
        if (frames_.empty() && sequence && !span)
            throw UsageError("'" + tools_.MainLink() + "': no frame of this clip is there");
        std::vector<int> frames = ParseFrames(!frames_.empty() ? frames_ : sequence ? Describe(*span) : "0");
        const auto [least, most] = std::minmax_element(frames.begin(), frames.end());
        stack.SetExtent(span ? *span : FrameSpan{*least, *most});
        return frames;
    }

    StackOptions tools_;
    std::string output_, frames_, extent_, aspect_, logFile_;
    std::string missing_ = "error";
    PictureOptions pictures_;
    int threads_ = 0;
    bool skipExisting_ = false, quiet_ = false, noFolder_ = false;
};

} // namespace

std::unique_ptr<Command> MakeRenderCommand(CLI::App& k7) {
    return std::make_unique<RenderCommand>(k7);
}

} // namespace app
