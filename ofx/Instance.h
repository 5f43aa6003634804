#pragma once

#include "host/Document.h"
#include "host/Operator.h"
#include "host/Registry.h"
#include "ofx/Abi.h"
#include "ofx/Clips.h"
#include "ofx/Exchange.h"
#include "ofx/ParameterStore.h"
#include "ofx/Plan.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ofx {

/// Passes undo steps on to the host.
class HostDocument : public host::FusionDoc {
public:
    explicit HostDocument(ParamSet parameters) : parameters_(parameters) {}
    void StartUndo(const std::string& title, host::Input* input) override;
    void EndUndo(bool keep) override;
    /// Closes a step if one is open.
    void CloseStep();

private:
    const ParamSet parameters_;
    int depth_ = 0;
    bool open_ = false; ///< the host keeps a step open
};

/// A tool in the host's project. Its values live in the host's parameters.
class Instance {
public:
    /// Throws Failure.
    Instance(const host::Registry& tool, Effect effect);
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    /// The instance of a host's handle. Throws Failure if there is none.
    static Instance& Of(Effect effect);

    // The actions. They throw Failure.
    Status Render(const Properties& arguments);
    Status Changed(const Properties& arguments);
    Status AnswerRegionsOfInterest(const Properties& arguments, const Properties& answers);
    Status AnswerFramesNeeded(const Properties& arguments, const Properties& answers);
    Status AnswerRegionOfDefinition(const Properties& arguments, const Properties& answers);
    Status AnswerClipPreferences(const Properties& answers);
    Status AnswerIsIdentity(const Properties& arguments, const Properties& answers);

    /// Shows the user what the tool has reported since the last call, and throws what the host has refused.
    void Settle();

    host::Operator& Op() { return *operator_; }
    HostDocument& Document() { return document_; }
    WriteQueue& Writes() { return exchange_.writes; }
    Clip MainClip() const { return links_.front().clip; }
    /// The position of the main picture, in the host's coordinates. False if there is none.
    bool RegionOfMain(double time, RectD* region) const;
    double AspectOfMain() const;

private:
    struct Link {
        std::string name;
        Clip clip;
        std::unique_ptr<ClipFrames> frames;
        host::Input* input;
    };

    void OpenParameters(ParamSet parameters);
    void OpenClips();
    void UserChanged(const ParameterPlan& plan, double time);
    void ConnectClips();
    void ReleaseClips();
    void RenderFrame(const Properties& arguments, const HostPicture& output);
    void RunTool(host::Request& request);
    void SetDepth(host::Depth depth, double time);
    double ScaleOf(const HostPicture& main, const Properties& arguments, double time) const;
    host::TimeExtent Extent() const;

    const Effect effect_;
    Exchange exchange_;
    HostDocument document_;
    host::Ref<host::Operator> operator_;
    ToolPlan plan_;
    Param words_ = nullptr; ///< turns floats off; null if there is no such parameter
    bool floats_ = false;   ///< the state of the tool's switch
    bool told_ = false;     ///< the last frame has shown a message to the user, or has failed
    std::vector<Link> links_;
    Clip output_ = nullptr;
    std::mutex rendering_;
};

/// Collects what tools report; Instance::DeliverMessages shows it.
void HearMessages();

} // namespace ofx
