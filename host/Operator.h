#pragma once

#include "host/Input.h"
#include "host/Preview.h"
#include "host/Registry.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace host {

class CommonControls;
class FusionDoc;
class Request;

/// The host's mark for a missing time.
inline constexpr double kTimeUndefined = -1e9;

/// A range of times in frames; the end lies one past the last frame.
struct TimeExtent {
    TimeExtent(double start, double end, double step) : Start(start), End(end), Step(step) {}
    double Start, End, Step;
};

/// A tool in a composition.
class K7HOST_API Operator : public Object {
public:
    /// `tags` may hold the document under kTagDocument.
    Operator(const Registry* registry, const ScriptVal& value, const TagList& tags);
    ~Operator() override;

    // What a tool is built from. Inputs and outputs belong to the operator.
    int AddControlPage(const char* name, const TagList& tags = {});
    Input* AddInput(const FuID& name, const FuID& id, const TagList& tags);
    Output* AddOutput(const FuID& name, const FuID& id, const TagList& tags);

    /// Renders a frame with the common controls, as the host does. The output goes to the request.
    void Render(Request* request);
    /// Adds the common controls; the registry calls it when the tool's own inputs are complete.
    void AddCommonControls();

    // What a tool does.
    virtual void Process(Request* request);
    /// A value of `in` has changed; `param` is the new one. The base counts the changes.
    virtual void NotifyChanged(Input* in, Parameter* param, double time, TagList* tags);
    /// The range of times at which the operator has pictures, as given to SetExtent.
    virtual void GetExtent(TimeExtent& extent, TagList* tags);

    // On-screen controls of a preview.
    virtual void AddControls(PreviewInfo* preview, TagList* tags);
    virtual void GLDrawControls(OperatorControl* control, PreviewInfo* preview, TagList* tags);
    virtual int ControlDown(OperatorControl* control, PreviewInfo* preview, const Point* point,
                            TagList* tags);
    virtual int ControlMove(OperatorControl* control, PreviewInfo* preview, const Point* point,
                            TagList* tags);
    virtual int ControlUp(OperatorControl* control, PreviewInfo* preview, const Point* point, TagList* tags);
    /// "CCMD_GetInputAt" asks for the input under the pointer. Null: no answer.
    virtual Input* ControlCommand(OperatorControl* control, PreviewInfo* preview, const FuID& command,
                                  void* argument, TagList* tags);

    /// Class hooks that the registry runs when a tool is created and destroyed.
    static void RegInit(Registry* registry);
    static void RegCleanup(Registry* registry);

    void SetExtent(const TimeExtent& extent) { extent_ = extent; }
    const std::vector<std::string>& Pages() const { return pages_; }
    std::vector<Input*> Inputs() const;
    std::vector<Output*> Outputs() const;
    Input* FindInput(const std::string& id) const; ///< by id; null if there is none
    int ChangeCount() const { return changes_; }
    const Registry* Class() const { return registry_; }
    double FrameTime() const { return frameTime_; } ///< of the frame that Render was last called for

    FusionDoc* const Document;           ///< may be null
    std::string Name;                    ///< of the tool in its composition
    std::atomic<bool> AbortFlag = false; ///< raised to stop a render at once
    OperatorControlList Controls;

private:
    const Registry* const registry_;
    std::vector<std::string> pages_;
    std::unique_ptr<CommonControls> common_;
    std::vector<Ref<Input>> inputs_;
    std::vector<Ref<Output>> outputs_;
    TimeExtent extent_{0.0, 1.0, 1.0};
    std::atomic<int> changes_ = 0;
    std::atomic<double> frameTime_ = kTimeUndefined;
};

/// A tool that distributes its work over the threads of the host.
class K7HOST_API ThreadedOperator : public Operator {
public:
    using Operator::Operator;

    static const FuID ClassID;

    virtual void ProcessChunk(Request* request, long index);

    /// Calls ProcessChunk once for each index from 0 to chunks - 1 on the host's threads and this one;
    /// returns when all calls have returned.
    void DoMultiProcess(Request* request, long chunks);
};

/// One frame to be rendered by one operator.
class K7HOST_API Request {
public:
    explicit Request(double time) : Time(time) {}

    /// The value of an input at the request's time; it belongs to the request. Null if there is none.
    Parameter* GetInputData(Input* input, int flags);

    /// Takes over the caller's reference.
    void SetOutputData(Output* output, Parameter* value);

    /// What SetOutputData was given; it belongs to the request. Null if nothing was.
    Parameter* OutputData(const Output* output) const;

    const double Time;

private:
    std::map<const Input*, Ref<Parameter>> inputs_;
    std::map<const Output*, Ref<Parameter>> outputs_;
};

} // namespace host
