#pragma once

#include "tests/ofx/StrictHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace k7::test::ofx {

// The standard's structures and statuses, from the host's side.
constexpr int kOk = 0, kFailed = 1, kMemory = 8, kReplyDefault = 14, kImageFormat = 1000;

using MainEntry = int (*)(const char* action, const void* handle, PropertySet* inArgs, PropertySet* outArgs);
struct PluginStruct {
    const char* api;
    int apiVersion;
    const char* identifier;
    unsigned major, minor;
    void (*setHost)(void*);
    MainEntry mainEntry;
};

/// The built bundle's plug-ins; loaded once in a process.
const std::vector<PluginStruct*>& Plugins();
PluginStruct* FindPlugin(const std::string& effect); ///< "Clean"

/// What an action returned, and what it has set.
struct Answer {
    int status;
    PropertySet out{kAnswers};
};

/// A bundle that a host has opened: all plug-ins are loaded, and unloaded at the end. Violations of the
/// standard by the plug-ins fail the test.
class Opened {
public:
    explicit Opened(Habits habits = {});
    ~Opened();

    /// Calls an action on a handle; the two sets may be null.
    int Call(PluginStruct* plugin, const char* action, void* handle = nullptr, PropertySet* in = nullptr,
             PropertySet* out = nullptr);

    /// The plug-in's description of itself in a context.
    std::unique_ptr<Effect> Describe(PluginStruct* plugin, const std::string& context, int* status = nullptr);

    StrictHost host;

private:
    void Gone(Effect* effect);
};

} // namespace k7::test::ofx
