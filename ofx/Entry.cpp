// What the host finds in the bundle: one plug-in for each tool in the registry.

#include "ofx/Describe.h"
#include "ofx/Instance.h"
#include "ofx/Load.h"
#include "ofx/Names.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <utility>

#ifdef _WIN32
#define K7_EXPORT extern "C" __declspec(dllexport)
#else
#define K7_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace ofx {

namespace {

// Actions.

bool Is(const char* action, const char* name) {
    return std::strcmp(action, name) == 0;
}

using Answer = Status (*)(Instance&, const Properties& arguments, const Properties& answers);

/// The actions of an instance. In those with `writes` the standard allows a plug-in to change parameters.
struct InstanceAction {
    const char* name;
    bool writes;
    Answer answer;
};

constexpr InstanceAction kInstanceActions[] = {
    {kActionRender, false,
     [](Instance& i, const Properties& arguments, const Properties&) { return i.Render(arguments); }},
    {kActionIsIdentity, false,
     [](Instance& i, const Properties& arguments, const Properties& answers) {
         return i.AnswerIsIdentity(arguments, answers);
     }},
    {kActionGetRegionOfDefinition, false,
     [](Instance& i, const Properties& arguments, const Properties& answers) {
         return i.AnswerRegionOfDefinition(arguments, answers);
     }},
    {kActionGetRegionsOfInterest, false,
     [](Instance& i, const Properties& arguments, const Properties& answers) {
         return i.AnswerRegionsOfInterest(arguments, answers);
     }},
    {kActionGetFramesNeeded, false,
     [](Instance& i, const Properties& arguments, const Properties& answers) {
         return i.AnswerFramesNeeded(arguments, answers);
     }},
    {kActionGetClipPreferences, false,
     [](Instance& i, const Properties&, const Properties& answers) {
         return i.AnswerClipPreferences(answers);
     }},
    {kActionInstanceChanged, true,
     [](Instance& i, const Properties& arguments, const Properties&) { return i.Changed(arguments); }},
    {kActionBeginInstanceChanged, true, [](Instance&, const Properties&, const Properties&) { return kOk; }},
    {kActionEndInstanceChanged, true, [](Instance&, const Properties&, const Properties&) { return kOk; }},
    {kActionSyncPrivateData, true, [](Instance&, const Properties&, const Properties&) { return kOk; }},
};

Status RunInstance(const InstanceAction& action, Effect effect, PropertySet inArgs, PropertySet outArgs) {
    Instance& instance = Instance::Of(effect);
    std::optional<WriteQueue::Allowed> writing;
    if (action.writes) writing.emplace(instance.Writes());
    const Status status = action.answer(instance, Properties(inArgs), Properties(outArgs));
    instance.Settle();
    return status;
}

Status Run(const host::Registry& tool, const char* action, Effect effect, PropertySet inArgs,
           PropertySet outArgs) {
    if (Is(action, kActionLoad)) return Load();
    if (Is(action, kActionUnload)) return Unload();
    if (Is(action, kActionDescribe)) return Describe(tool, effect), kOk;
    if (Is(action, kActionDescribeInContext)) return DescribeInContext(tool, effect), kOk;
    if (Is(action, kActionCreateInstance)) {
        static_cast<void>(std::make_unique<Instance>(tool, effect).release()); // until it is destroyed
        return kOk;
    }
    if (Is(action, kActionDestroyInstance)) {
        delete &Instance::Of(effect);
        return kOk;
    }
    for (const InstanceAction& known : kInstanceActions)
        if (Is(action, known.name)) return RunInstance(known, effect, inArgs, outArgs);
    return kReplyDefault;
}

/// The boundary: no exception passes it.
Status RunGuarded(const host::Registry& tool, const char* action, const void* handle, PropertySet inArgs,
                  PropertySet outArgs) {
    auto effect = static_cast<Effect>(const_cast<void*>(handle));
    Status status = kFailed;
    std::string text;
    try {
        return Run(tool, action, effect, inArgs, outArgs);
    } catch (const Failure& failure) {
        status = failure.status;
        text = failure.what();
    } catch (const std::bad_alloc&) {
        status = kErrMemory;
        text = "out of memory";
    } catch (const std::exception& error) {
        text = error.what();
    } catch (...) {
        text = "the frame failed";
    }
    if (Is(action, kActionRender)) ShowMessage(effect, "OfxMessageError", text);
    return status;
}

// The standard does not pass the plug-in to its entry point, so each plug-in needs one of its own.

std::vector<host::Registry*> Tools() {
    std::vector<host::Registry*> tools = host::ClassRegistry().Entries();
    std::erase_if(tools, [](const host::Registry* entry) { return !entry->HasAttr(host::kTagRegNumber); });
    return tools;
}

constexpr std::size_t kMostTools = 64;

template <std::size_t Index>
Status EntryOf(const char* action, const void* handle, PropertySet inArgs, PropertySet outArgs) {
    static const host::Registry& tool = *Tools()[Index];
    return RunGuarded(tool, action, handle, inArgs, outArgs);
}

template <std::size_t... Index>
constexpr std::array<MainEntry, sizeof...(Index)> Entries(std::index_sequence<Index...>) {
    return {&EntryOf<Index>...};
}

struct Listing {
    std::string identifier;
    Plugin plugin;
};

std::vector<Listing> MakeListings() {
    static constexpr auto entries = Entries(std::make_index_sequence<kMostTools>());
    const std::vector<host::Registry*> tools = Tools();
    std::vector<Listing> listings(std::min(tools.size(), kMostTools));
    for (std::size_t i = 0; i < listings.size(); ++i) {
        listings[i].identifier = "k7.effects." + PlainName(*tools[i]);
        listings[i].plugin = {"OfxImageEffectPluginAPI",
                              1,
                              listings[i].identifier.c_str(),
                              K7_VERSION_MAJOR,
                              K7_VERSION_MINOR,
                              &SetHost,
                              entries[i]};
    }
    return listings;
}

std::vector<Listing>& Listings() {
    static std::vector<Listing> listings = MakeListings();
    return listings;
}

} // namespace

} // namespace ofx

K7_EXPORT int OfxGetNumberOfPlugins() {
    return static_cast<int>(ofx::Listings().size());
}

K7_EXPORT ofx::Plugin* OfxGetPlugin(int nth) {
    auto& listings = ofx::Listings();
    const bool there = nth >= 0 && nth < static_cast<int>(listings.size());
    return there ? &listings[static_cast<std::size_t>(nth)].plugin : nullptr;
}

K7_EXPORT ofx::Status OfxSetHost(const ofx::Host* host) {
    ofx::SetHost(const_cast<ofx::Host*>(host));
    return ofx::kOk;
}
