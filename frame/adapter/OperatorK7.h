#pragma once

#include "frame/Controls.h"
#include "frame/PluginK7.h"
#include "frame/adapter/HostInput.h"
#include "frame/adapter/HostNames.h"
#include "library/Chunks.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace k7 {

/// What the host hands to a new operator, to be passed to the base class.
struct OperatorArguments {
    const host::Registry* registry;
    const host::ScriptVal& value;
    const host::TagList& tags;
};

// A row of an effect's control table: the names of a control, what is special about it, and its kind.

enum ControlNotes : unsigned {
    kPlain = 0,
    kChange = 1,     ///< a change has a reaction
    kHidden = 2,     ///< it starts hidden
    kUnmirrored = 4, ///< its value is read for frames only, not when something changes
};

struct ControlName {
    const char* label;
    const char* id; ///< for a colour the stem, to which R, G, B and A are added
    unsigned notes = kPlain;
};

struct Slider {
    double standard;
    double shownLow, shownHigh; ///< the range that the slider shows; other values can be typed
};
struct Screw {
    double standard;
    std::optional<double> shownLow = {}, shownHigh = {};
    std::optional<double> lowest = {}, highest = {}; ///< limits of the value
};
struct Check {
    int standard;
};
struct Combo {
    std::vector<const char*> entries; ///< the first is the default
};
struct Offset {
    double x, y;
};
struct ColourSwatch {
    double red, green, blue, alpha;
    int group; ///< number of the colour on its page
};
struct FileName {
    const char* standard;
};

/// How an effect reads its second image.
enum class SecondImage {
    FitToMain,    ///< as a picture of the main one's size; the main picture itself if nothing is connected
    AtOtherTimes, ///< only through ReadInputAtTime; the main input if nothing is connected
};

/// The base of all operators, which binds a core to the compositor. An effect's operator makes its core in
/// the constructor, adds the rows of its tables, and then its reactions.
class OperatorK7 : public host::ThreadedOperator, protected ChunkOwner {
public:
    explicit OperatorK7(const OperatorArguments& arguments);
    ~OperatorK7() override;

    void Process(host::Request* request) override;
    void NotifyChanged(host::Input* in, host::Parameter* param, double time, host::TagList* tags) override;
    void ProcessChunk(host::Request* request, long index) override;

protected:
    /// Creates the effect's core, which this operator owns.
    template <class Core>
    Core& MakeCore() {
        auto made = std::make_unique<Core>();
        Core& core = *made;
        TakeCore(std::move(made));
        return core;
    }

    /// Opens a page for the controls that follow.
    void Page(const char* name);
    void Add(FloatControlK7& control, const ControlName& name, const Slider& slider);
    void Add(FloatControlK7& control, const ControlName& name, const Screw& screw);
    void Add(IntegerControlK7& control, const ControlName& name, const Slider& slider);
    void Add(IntegerControlK7& control, const ControlName& name, const Screw& screw);
    void Add(CheckboxControlK7& control, const ControlName& name, const Check& check);
    void Add(ListControlK7& control, const ControlName& name, const Combo& combo);
    void Add(PositionControlK7& control, const ControlName& name, const Offset& offset);
    void Add(ColourControlK7& control, const ControlName& name, const ColourSwatch& colour);
    void Add(FileControlK7& control, const ControlName& name, const FileName& file);

    /// Marks a length in pixels, which is scaled when a host renders a proxy.
    static void InPixels(const ControlK7& control);
    /// The effect passes its main picture through when all controls marked like this have their value.
    static void IdleAt(const ControlK7& control, double value);
    /// The effect shows an aid, such as its light map, in place of its result when the control has this
    /// value.
    static void AidAt(const ControlK7& control, double value);

    void AddMainImage(ImageInputK7& slot, const char* name);
    void AddSecondImage(ImageInputK7& slot, const char* name, SecondImage use);

    /// Closes the tables. After their rows comes the switch between words (the default) and floats.
    void AddImageOutput(ImageOutputK7& slot);

    /// What happens when the user, or a script, changes a control. The core's own writes (`Changing`) do not
    /// come here.
    using Reaction = std::function<void(double time)>;
    void OnChange(ControlK7& control, Reaction reaction);

    /// Reads the mirrored controls at a time. While a frame is in progress it keeps its values: only what
    /// widgets show is read, and the rest after the frame.
    void MirrorControls(double time);

    /// Runs an action under the lock of the controls' values: no frame can begin meanwhile. The action is
    /// told whether a frame is in progress, which must keep the values that it has read.
    void WithValues(const std::function<void(bool frameInWork)>& action);

    /// The first thing that happens on a change of an input, before any reaction.
    virtual void InputChanged(host::Input* in);

    PluginK7& Core() const { return *core_; }

    // The core's owner.
    int ProcessorCount() const override;
    int Division() const override;
    void DoMultiProcess(ChunkRecord& record, int chunks) override;
    bool AbortRaised() const override;
    void TakeMessage(const char* text) override;

private:
    struct Images;

    void TakeCore(std::unique_ptr<PluginK7> core);
    host::TagList TagsFor(const char* dataType, const char* kind, unsigned notes) const;
    ControlInput* NewInput(const char* label, const char* id, const host::TagList& tags);
    void Enter(ControlK7& control, const ControlName& name, const host::TagList& tags);
    void Note(ControlK7& control, unsigned notes);
    void AddDepthSwitch();
    host::Input* NewImageInput(const char* name, int number, bool optional);
    void ReadFrameValues(host::Request* request);
    void RunFrame(host::Request* request);
    /// Where a core that reads its second picture itself, at other times, finds it.
    void ChooseSecondFrames(host::Request* request);

    // One frame in its depth.
    template <class Sample>
    void RunFrameIn(host::Request* request);
    /// Null: there is none to fit, or its allocation fails.
    template <class Sample>
    std::unique_ptr<PictureK7<Sample>> ReadSecondImage(host::Request* request, const host::Image* main,
                                                       const PictureK7<Sample>& like);
    template <class Sample>
    void RunCore(PictureK7<Sample>* input, PictureK7<Sample>* second, PictureK7<Sample>* output);
    template <class Sample>
    void FillSlots(PictureK7<Sample>* input, PictureK7<Sample>* second, PictureK7<Sample>* output);

    void EndFrame();

    std::unique_ptr<PluginK7> core_;
    ChunkRecord chunks_;
    bool firstProcess_ = true;

    int page_ = 0;
    std::vector<std::unique_ptr<HostInput>> inputs_;
    std::vector<ControlK7*> controls_;
    std::vector<ControlK7*> mirrored_;
    std::vector<std::pair<ControlK7*, Reaction>> reactions_;

    ImageInputK7* mainSlot_ = nullptr;
    host::Input* mainInput_ = nullptr;
    std::unique_ptr<HostFrames> mainFrames_;
    ImageInputK7* secondSlot_ = nullptr;
    host::Input* secondInput_ = nullptr;
    std::unique_ptr<HostFrames> secondFrames_;
    SecondImage secondUse_ = SecondImage::FitToMain;
    ImageOutputK7* outputSlot_ = nullptr;
    host::Output* output_ = nullptr;
    host::Input* floatPictures_ = nullptr;

    std::recursive_mutex valuesMutex_; ///< guards the controls' values and the two fields below
    bool frameInWork_ = false;
    std::optional<double> mirrorAfterFrame_;
};

} // namespace k7
