#pragma once

#include "host/Document.h"
#include "host/Operator.h"
#include "host/Registry.h"
#include "media/Clip.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace media {

/// In which depth a tool works.
enum class WorkingDepth {
    OfPicture, ///< in floats where the main picture is half or float, otherwise as its settings say
    Words,
    Floats,
};

/// One tool in a composition of its own, with clips at its image inputs.
class Tool {
public:
    /// Throws std::runtime_error where the tool cannot be made.
    explicit Tool(host::Registry& entry);

    host::Operator& Op() const { return *operator_; }
    host::FusionDoc& Document() { return document_; }

    /// Links each `[INPUT=]FILE`; without INPUT, the main input. `aspect` is X:Y, or empty for the files'
    /// own. Throws UsageError, also where an input that the tool cannot do without has no clip.
    void LinkAll(const std::vector<std::string>& links, Missing missing, const std::string& aspect,
                 const ReadOptions& options = {});

    /// The clip at the main input; LinkAll has made sure of it.
    Clip& MainClip() const { return *clips_.at(MainInput()); }
    /// Whether a name is that of a frame of one of the sequences at the inputs, be there a file or not.
    bool ReadsSequence(const std::string& path, int frame) const;
    /// The files at the inputs: all of them, or those of single pictures only.
    std::vector<std::string> FilesRead() const;
    std::vector<std::string> SingleFiles() const;
    /// Sets the depth in which the tool works; `frame` is one whose main picture tells.
    void ChooseDepth(WorkingDepth depth, int frame);
    /// The tool has pictures from `first` to `last`.
    void SetExtent(const FrameSpan& span);

    /// The tool's picture at a frame. Throws FrameError; null after an abort.
    std::shared_ptr<host::Image> Render(int frame);

private:
    void Link(const std::string& link, Missing missing, std::optional<Aspect> aspect,
              const ReadOptions& options);
    void CheckLinks() const;
    host::Input* MainInput() const;
    host::Input& FindImageInput(const std::string& name) const;
    std::string TakeErrors() const;

    host::FusionDoc document_;
    std::map<host::Input*, std::unique_ptr<Clip>> clips_; ///< outlive the operator, whose inputs link to them
    host::Ref<host::Operator> operator_;
};

} // namespace media
