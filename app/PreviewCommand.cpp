#include "app/Commands.h"
#include "app/Describe.h"
#include "app/Listener.h"
#include "app/PictureOptions.h"
#include "app/PreviewView.h"
#include "app/SettingsFile.h"
#include "media/Errors.h"
#include "media/PictureDepth.h"
#include "media/PlugIns.h"
#include "media/Settings.h"
#include "media/Tool.h"
#include "media/Words.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace app {

using namespace media;
namespace {

using nlohmann::ordered_json;

constexpr int kLargestView = 8192; ///< pixels of a side

ViewSize ParseSize(const std::string& text) {
    const std::vector<std::string> sides = Split(text, 'x');
    const auto side = [&](std::size_t i) {
        return i < sides.size() ? ParseInteger(sides[i]).value_or(0) : 0;
    };
    const ViewSize size{side(0), side(1)};
    if (sides.size() != 2 || std::min(size.width, size.height) < 1 ||
        std::max(size.width, size.height) > kLargestView)
        throw UsageError("'" + text + "' is no size of a view: write WxH with sides from 1 to " +
                         std::to_string(kLargestView));
    return size;
}

struct DragPath {
    Spot from, to;
};

DragPath ParseDrag(const std::string& text) {
    std::vector<double> numbers;
    const std::vector<std::string> ends = Split(text, ':');
    bool good = ends.size() == 2;
    for (const std::string& end : ends) {
        const std::vector<std::string> pieces = Split(end, ',');
        good = good && pieces.size() == 2;
        for (const std::string& piece : pieces) numbers.push_back(ParseNumber(piece).value_or(NAN));
    }
    const bool finite =
        std::all_of(numbers.begin(), numbers.end(), [](double n) { return std::isfinite(n); });
    if (!good || !finite)
        throw UsageError("'" + text + "' is no drag: write X1,Y1:X2,Y2 in fractions of the picture");
    return {{numbers[0], numbers[1]}, {numbers[2], numbers[3]}};
}

/// The natural size of a picture, made smaller where it is too large for a view.
ViewSize DefaultSize(const host::Image& picture) {
    const ViewSize natural = PreviewView::NaturalSize(picture);
    const double shrink =
        std::min(1.0, static_cast<double>(kLargestView) / std::max(natural.width, natural.height));
    const auto side = [&](int pixels) { return std::max(1, static_cast<int>(pixels * shrink)); };
    return {side(natural.width), side(natural.height)};
}

/// Carries out a drag and tells what has come of it.
ordered_json PerformDrag(Tool& tool, PreviewView& view, const DragPath& path) {
    const ordered_json before = SaveSettings(tool.Op())["controls"];
    const std::size_t steps = tool.Document().UndoTitles().size();
    const bool hit = view.Drag(path.from, path.to);

    const ordered_json after = SaveSettings(tool.Op())["controls"];
    ordered_json changed = ordered_json::array();
    for (const auto& [id, value] : after.items())
        if (value != before[id])
            changed.push_back({{"id", id}, {"label", FindControl(tool.Op(), id).Name()}, {"value", value}});
    const std::vector<std::string> titles = tool.Document().UndoTitles();
    return {{"from", {path.from.x, path.from.y}},
            {"to", {path.to.x, path.to.y}},
            {"hit", hit},
            {"changed", changed},
            {"undo", titles.size() > steps ? ordered_json(titles.back()) : ordered_json()}};
}

void Print(const ordered_json& drags) {
    for (std::size_t i = 0; i < drags.size(); ++i) {
        std::cout << "Drag " << i + 1;
        if (drags[i]["hit"] == false) std::cout << ": nothing to be dragged there";
        std::cout << '\n';
        for (const ordered_json& control : drags[i]["changed"])
            std::cout << "  " << std::string(control["label"]) << " (" << std::string(control["id"])
                      << ") = " << Plain(control["value"]) << '\n';
        if (!drags[i]["undo"].is_null()) std::cout << "  Undo: " << std::string(drags[i]["undo"]) << '\n';
    }
}

class PreviewCommand : public Command {
public:
    explicit PreviewCommand(CLI::App& k7)
        : Command(k7.add_subcommand("preview", "Shows a frame with a tool's on-screen controls over it")) {
        CLI::App& line = *Line();
        AddToolName(toolName_);
        AddEach("-i,--input", links_, "[INPUT=]FILE: the picture, sequence or `sample:` at an input")
            ->required();
        line.add_option("-o,--output", output_, "FILE to write")->required();
        AddEach("-s,--set", settings_, "CONTROL=VALUE, in the order given");
        line.add_option("-f,--frame", frame_, "FRAME to show");
        line.add_option("--size", size_, "WxH: pixels of the view; the picture fills it as far as it goes");
        AddEach("--drag", drags_,
                "X1,Y1:X2,Y2: press, move and let go, in fractions of the picture; y upward");
        line.add_option("--aspect", aspect_, "X:Y: width and height of a pixel");
        AddSettingsFiles(settingsFile_, saveFile_);
        line.add_option("--exposure", exposure_, "STOPS by which the picture is shown brighter or darker")
            ->check(CLI::Range(-60.0, 60.0));
        line.add_flag("--json", json_, "Write an array with what came of each drag");
        pictures_.AddTo(line, false);
    }

    int Run() override {
        const std::optional<ViewSize> size = size_.empty() ? std::nullopt : std::optional(ParseSize(size_));
        std::vector<DragPath> paths;
        for (const std::string& drag : drags_) paths.push_back(ParseDrag(drag));
        CheckCanWrite(output_);
        Tool tool(FindTool(toolName_));
        tool.LinkAll(links_, Missing::Error, aspect_, pictures_.Reading());
        const int frame = SetFrame(tool);
        Console console(Console::Style::Quiet, 1, frame, frame);
        if (!settingsFile_.empty()) LoadSettingsFile(tool.Op(), settingsFile_);
        tool.ChooseDepth(pictures_.Working(), frame);
        ApplySettings(tool.Op(), settings_, console);
        const Listener listener(console);

        std::shared_ptr<host::Image> picture = tool.Render(frame);
        PreviewView view(tool.Op(), size ? *size : DefaultSize(*picture));
        view.Show(*Exposed(picture, exposure_));
        ordered_json drags = ordered_json::array();
        for (const DragPath& path : paths) drags.push_back(PerformDrag(tool, view, path));
        if (!paths.empty()) {
            picture = tool.Render(frame);
            view.Show(*Exposed(picture, exposure_));
        }
        Write(view, console);
        if (!saveFile_.empty()) SaveSettingsFile(tool.Op(), saveFile_);

        if (json_)
            std::cout << drags.dump(2) << '\n';
        else
            Print(drags);
        return 0;
    }

private:
    /// The frame to show: the first of a sequence unless another is asked for.
    int SetFrame(Tool& tool) const {
        const std::optional<FrameSpan> span = tool.MainClip().Span();
        const int frame = frame_.value_or(span ? span->first : 0);
        tool.SetExtent(span.value_or(FrameSpan{frame, frame}));
        tool.Document().CurrentTime = frame;
        return frame;
    }

    void Write(const PreviewView& view, Console& console) const {
        Picture like;
        like.image = view.Snapshot();
        like.channels = 3;
        like.depth = {like.image->PixelDepth};
        WritePicture(output_, *like.image, like, [&](const std::string& text) { console.Warn(text); });
    }

    std::string toolName_, output_, size_, aspect_, settingsFile_, saveFile_;
    std::vector<std::string> links_, settings_, drags_;
    PictureOptions pictures_;
    std::optional<int> frame_;
    double exposure_ = 0.0;
    bool json_ = false;
};

} // namespace

std::unique_ptr<Command> MakePreviewCommand(CLI::App& k7) {
    return std::make_unique<PreviewCommand>(k7);
}

} // namespace app
