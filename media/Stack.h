#pragma once

#include "host/Document.h"
#include "host/Operator.h"
#include "host/Registry.h"
#include "media/Clip.h"
#include "media/Feeds.h"

#include <nlohmann/json_fwd.hpp>

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace media {

/// The depth in which tools work.
enum class WorkingDepth {
    OfPicture, ///< in floats if the main picture is half or float, otherwise as the settings say
    Words,
    Floats,
};

/// What is at the image inputs of one tool: `[INPUT=]FILE`; without INPUT, the main input of the stack.
using Links = std::vector<std::string>;

/// `INPUT=FILE` in its two parts; the first is empty if no input is named. An equals sign may also belong to
/// the name of a file or its folder.
std::pair<std::string, std::string> SplitLink(const std::string& link);

/// Tools linked as in a composition, the output of each at the main input of the next, with clips at the
/// other image inputs. A single tool is a stack too.
class Stack {
public:
    /// Takes at least one tool, the first of which gets the main picture. Throws std::runtime_error if a tool
    /// cannot be made.
    explicit Stack(const std::vector<host::Registry*>& tools);
    /// The same tools with the same controls, fed by the same clips; both may render at the same time.
    Stack(const Stack& other);
    Stack& operator=(const Stack&) = delete;

    std::size_t Size() const { return stages_.size(); }
    host::Operator& Op(std::size_t i = 0) const { return *stages_[i].op; }
    host::Operator& Last() const { return Op(Size() - 1); }
    host::FusionDoc& Document() { return document_; }
    /// Flags that stop a frame in progress, one for each tool.
    std::vector<std::atomic<bool>*> AbortFlags() const;

    /// Links clips to inputs, an element for each tool. `aspect` is X:Y, or empty for the files' own. Throws
    /// UsageError, also if a required input has no clip.
    void LinkAll(const std::vector<Links>& links, Missing missing, const std::string& aspect,
                 const ReadOptions& options = {});

    /// The clip at the main input; LinkAll has checked that there is one.
    Clip& MainClip() const { return *Feeding(MainInput(0))->Source(); }
    /// What a clip feeds an input with; null if none does.
    ClipFeed* Feeding(host::Input* input) const;
    /// Whether a name is that of a frame of one of the sequences at the inputs, whether the file exists or
    /// not.
    bool ReadsSequence(const std::string& path, int frame) const;
    /// The files at the inputs: all of them, or those of single pictures only.
    std::vector<std::string> FilesRead() const;
    std::vector<std::string> SingleFiles() const;
    /// Sets the depth in which all tools work; the main picture at `frame` may decide.
    void ChooseDepth(WorkingDepth depth, int frame);
    /// The tools have pictures from `first` to `last`.
    void SetExtent(const FrameSpan& span);

    /// Reports a change that affects the frames of this tool, and so of those after it. Not to be called
    /// while a frame is in progress.
    void Forget(std::size_t from);

    /// The last tool's picture at a frame. Throws FrameError; null after an abort.
    std::shared_ptr<host::Image> Render(int frame);

private:
    struct Stage {
        std::map<host::Input*, std::unique_ptr<ClipFeed>> clips;
        std::unique_ptr<ToolFeed> before; ///< the tool whose output is the main picture; null for the first
        host::Ref<host::Operator> op;     ///< destroyed before its feeds, to which its inputs link
    };

    void MakeTools(const std::vector<const host::Registry*>& tools);
    void Link(std::size_t stage, const std::string& link, Missing missing, std::optional<Aspect> aspect,
              const ReadOptions& options);
    void CheckLinks() const;
    host::Input* MainInput(std::size_t stage) const;
    host::Input& FindImageInput(std::size_t stage, const std::string& name) const;
    std::vector<Clip*> Clips() const;
    std::string TakeErrors() const;

    host::FusionDoc document_;
    std::vector<Stage> stages_;
};

/// All controls with their keys: of one tool {"tool": id, "controls": {key: value}}, of several {"tools":
/// [...]} with an element like that for each.
nlohmann::ordered_json SaveStack(const Stack& stack);
/// The element of each tool in what was saved, be it of one or of several. Throws UsageError.
std::vector<nlohmann::json> SavedTools(const nlohmann::json& saved);
/// The tool that such an element is of. Throws UsageError.
host::Registry& ToolOf(const nlohmann::json& element);
/// False if an element has "on": false, with which a tool is kept but not rendered.
bool IsOn(const nlohmann::json& element);
/// The tools that are rendered. Throws UsageError, also if there are none.
std::vector<host::Registry*> ToolsOf(const nlohmann::json& saved);
/// Restores what SaveStack returned, except for tools that are off. Throws UsageError, which names the tool.
void RestoreStack(Stack& stack, const nlohmann::json& saved);

} // namespace media
