#include "tests/ofx/Bundle.h"

#include <cstring>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace k7::test::ofx {

namespace {

template <class Function>
Function Symbol(const char* name) {
#ifdef _WIN32
    static const HMODULE module = LoadLibraryA(K7_BUNDLE_FILE);
    return module ? reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)))
                  : nullptr;
#else
    static void* const module = dlopen(K7_BUNDLE_FILE, RTLD_NOW | RTLD_LOCAL);
    return module ? reinterpret_cast<Function>(dlsym(module, name)) : nullptr;
#endif
}

std::vector<PluginStruct*> Load() {
    const auto count = Symbol<int (*)()>("OfxGetNumberOfPlugins");
    const auto get = Symbol<PluginStruct* (*)(int)>("OfxGetPlugin");
    std::vector<PluginStruct*> plugins;
    if (count && get)
        for (int i = 0; i < count(); ++i) plugins.push_back(get(i));
    return plugins;
}

} // namespace

const std::vector<PluginStruct*>& Plugins() {
    static const std::vector<PluginStruct*> plugins = Load();
    return plugins;
}

PluginStruct* FindPlugin(const std::string& effect) {
    for (PluginStruct* plugin : Plugins())
        if (plugin->identifier == "k7.effects." + effect) return plugin;
    return nullptr;
}

Opened::Opened(Habits habits) : host(habits) {
    const auto setHost = Symbol<int (*)(const void*)>("OfxSetHost");
    EXPECT_TRUE(setHost && setHost(host.Struct()) == kOk);
    for (PluginStruct* plugin : Plugins()) {
        plugin->setHost(host.Struct());
        EXPECT_EQ(kOk, Call(plugin, "OfxActionLoad"));
    }
}

Opened::~Opened() {
    for (PluginStruct* plugin : Plugins()) EXPECT_EQ(kOk, Call(plugin, "OfxActionUnload"));
    for (const std::string& fault : host.TakeFaults()) ADD_FAILURE() << fault;
}

int Opened::Call(PluginStruct* plugin, const char* action, void* handle, PropertySet* in, PropertySet* out) {
    const ActionScope scope(action);
    if (in) host.Enter(in, "properties");
    if (out) host.Enter(out, "properties");
    const int status = plugin->mainEntry(action, handle, in, out);
    if (in) host.Leave(in);
    if (out) host.Leave(out);
    static const std::set<int> answers = {kOk, kFailed, 2, 4, kMemory, kReplyDefault, kImageFormat};
    if (!answers.count(status) ||
        (status == kReplyDefault && !std::strcmp(action, "OfxImageEffectActionRender")))
        host.Fault("an action cannot answer " + std::to_string(status));
    if (std::exchange(ActionScope::PicturesOut(), 0) != 0) host.Fault("a picture was not given back");
    return status;
}

std::unique_ptr<Effect> Opened::Describe(PluginStruct* plugin, const std::string& context, int* status) {
    auto effect = std::make_unique<Effect>(kEffectDescriptor);
    host.Enter(effect.get(), "effect");
    host.Enter(&effect->properties, "properties");
    int answer = Call(plugin, "OfxActionDescribe", effect.get());
    PropertySet in(kArguments);
    in.Put("OfxImageEffectPropContext", context);
    if (answer == kOk) answer = Call(plugin, "OfxImageEffectActionDescribeInContext", effect.get(), &in);
    Gone(effect.get());
    if (status) *status = answer;
    return effect;
}

void Opened::Gone(Effect* effect) {
    host.Leave(effect);
    host.Leave(&effect->properties);
    for (const auto& param : effect->params) host.Leave(&param->properties);
    for (const auto& clip : effect->clips) host.Leave(&clip->properties);
}

} // namespace k7::test::ofx
