#include "media/Tool.h"

#include "host/Tags.h"
#include "media/Errors.h"
#include "media/PlugIns.h"
#include "media/Settings.h"
#include "media/Words.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace media {

Tool::Tool(host::Registry& entry) : operator_(entry.NewOperator(&document_)) {
    if (!operator_) throw std::runtime_error("the tool " + PlainName(entry) + " could not be made");
}

host::Input* Tool::MainInput() const {
    for (host::Input* input : operator_->Inputs())
        if (!IsControl(*input) && input->GetAttrI(host::kTagMainLink) == 1) return input;
    throw std::runtime_error(operator_->Name + " has no image input");
}

host::Input& Tool::FindImageInput(const std::string& name) const {
    std::vector<std::string> names;
    for (host::Input* input : operator_->Inputs()) {
        if (IsControl(*input)) continue;
        if (input->Id() == name || input->Name() == name) return *input;
        names.push_back(input->Id());
    }
    throw UsageError(operator_->Name + " has no image input '" + name + "'" + DidYouMean(name, names));
}

void Tool::LinkAll(const std::vector<std::string>& links, Missing missing, const std::string& aspect,
                   const ReadOptions& options) {
    const std::optional<Aspect> pixel = aspect.empty() ? std::nullopt : std::optional(ParseAspect(aspect));
    for (const std::string& link : links) Link(link, missing, pixel, options);
    CheckLinks();
}

void Tool::Link(const std::string& link, Missing missing, std::optional<Aspect> aspect,
                const ReadOptions& options) {
    // An equals sign may also belong to the name of a file or its folder.
    std::error_code ignored;
    const std::size_t equals = std::filesystem::exists(link, ignored) ? std::string::npos : link.find('=');
    const bool named = equals < link.find('/');
    host::Input* input = named ? &FindImageInput(link.substr(0, equals)) : MainInput();
    const std::string file = named ? link.substr(equals + 1) : link;
    if (file.empty()) throw UsageError("'" + link + "' names no file");
    if (clips_.count(input))
        throw UsageError("'" + link + "': the input " + input->Id() + " has a file already");
    clips_[input] = std::make_unique<Clip>(file, missing, aspect, options);
    input->Connect(clips_[input].get());
}

void Tool::CheckLinks() const {
    for (host::Input* input : operator_->Inputs())
        if (!IsControl(*input) && !input->HasAttr(host::kTagOptional) && !input->Connected())
            throw UsageError(operator_->Name + " needs a picture at its input '" + input->Id() +
                             "': name a file with -i");
}

bool Tool::ReadsSequence(const std::string& path, int frame) const {
    const auto place = [](const std::string& name) {
        std::error_code ignored;
        return std::filesystem::weakly_canonical(std::filesystem::absolute(name, ignored), ignored);
    };
    return std::any_of(clips_.begin(), clips_.end(), [&](const auto& link) {
        return link.second->IsSequence() && place(link.second->NameOf(frame)) == place(path);
    });
}

std::vector<std::string> Tool::FilesRead() const {
    std::vector<std::string> all;
    for (const auto& [input, clip] : clips_)
        for (std::string& file : clip->Files()) all.push_back(std::move(file));
    return all;
}

std::vector<std::string> Tool::SingleFiles() const {
    std::vector<std::string> all;
    for (const auto& [input, clip] : clips_)
        if (!clip->IsSequence())
            for (std::string& file : clip->Files()) all.push_back(std::move(file));
    return all;
}

void Tool::ChooseDepth(WorkingDepth depth, int frame) {
    if (depth == WorkingDepth::OfPicture) {
        try {
            if (MainClip().At(frame).image->PixelDepth < host::Depth::Half) return;
        } catch (const FrameError&) {
            return; // is told when the frame is rendered
        }
    }
    host::Input& floats = FindControl(*operator_, "FloatPictures");
    floats.SetSource(host::AutoNumber(depth != WorkingDepth::Words).get(), host::kTimeNow, 1, nullptr);
}

void Tool::SetExtent(const FrameSpan& span) {
    operator_->SetExtent({static_cast<double>(span.first), static_cast<double>(span.last) + 1, 1});
}

std::string Tool::TakeErrors() const {
    std::string first;
    for (const auto& [input, clip] : clips_)
        if (const std::string error = clip->TakeError(); first.empty()) first = error;
    return first;
}

std::shared_ptr<host::Image> Tool::Render(int frame) {
    MainClip().At(frame); // a tool runs only where its main picture is there
    document_.CurrentTime = frame;
    host::Request request(frame);
    operator_->Render(&request);
    if (operator_->AbortFlag) return nullptr;
    if (const std::string error = TakeErrors(); !error.empty()) throw FrameError(error);
    for (const host::Output* output : operator_->Outputs())
        if (auto* image = dynamic_cast<host::Image*>(request.OutputData(output))) {
            image->Retain();
            return Share(image);
        }
    throw FrameError("the tool gave no picture, perhaps for want of memory");
}

} // namespace media
