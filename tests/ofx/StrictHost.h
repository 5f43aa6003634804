#pragma once

#include "tests/ofx/PropertySet.h"

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace k7::test::ofx {

struct Effect;

/// A value of any parameter.
struct ParamValue {
    std::array<double, 3> real{};
    int whole = 0;
    std::string text;
    bool operator==(const ParamValue&) const = default;
};

struct Param {
    Param(What what, const std::string& type, std::string paramName);

    const std::string kind; ///< "Integer", "Double2D", ...
    const std::string name;
    PropertySet properties;
    ParamValue value;
    std::map<double, ParamValue> keys; ///< held from each key to the next
    Effect* effect = nullptr;
    int writes = 0; ///< by the plug-in

    ParamValue& At(double time);
};

/// The pixels of a frame and their position, as a clip provides them.
struct Pixels {
    std::vector<std::byte> bytes;
    std::byte* bottom = nullptr; ///< of the first row
    std::array<int, 4> bounds{}; ///< x1, y1, x2, y2
    std::array<int, 4> region{};
    int rowBytes = 0;
    std::string depth, components;
};

struct Clip {
    Clip(What what, std::string clipName) : name(std::move(clipName)), properties(what) {}

    const std::string name;
    PropertySet properties;
    Effect* effect = nullptr;
    std::function<Pixels*(double time)> picture; ///< null if nothing is connected; may return null
    std::array<double, 4> region{};              ///< in canonical coordinates
    std::set<double> asked;                      ///< the times at which pictures were read
};

/// A plug-in in a context, or an instance of it.
struct Effect {
    explicit Effect(What w) : what(w), properties(w), paramSet(kHost) {}

    const What what;
    PropertySet properties;
    PropertySet paramSet;
    std::vector<std::unique_ptr<Param>> params; ///< in the order of their definition
    std::vector<std::unique_ptr<Clip>> clips;
    std::function<bool()> aborted = [] { return false; };
    std::vector<std::string> undoSteps, messages;
    int editDepth = 0;

    Param* FindParam(const std::string& name) const;
    Clip* FindClip(const std::string& name) const;
};

struct Interact {
    Effect* effect = nullptr;
    PropertySet properties{kInteract};
    int redraws = 0;
};

/// What other hosts lack, or do differently from the standard.
struct Habits {
    bool threads = true, messages = true, messagesV2 = true, interacts = true;
    int pages = 100;
    bool half = true;            ///< the property takes "half" among the depths
    bool imageScale = true;      ///< images report their scale
    bool imageRegion = true;     ///< images report their region of definition
    bool hostHandles = true;     ///< knows the switch of its own handles
    bool clampsUnranged = false; ///< numbers are clamped to -1 to 1 unless all ranges are set
};

/// A host that checks a plug-in against the standard and records violations. One at a time.
class StrictHost {
public:
    explicit StrictHost(Habits habits = {});
    ~StrictHost();

    static StrictHost& Now();

    void* Struct() { return &host_; } ///< what a plug-in's setHost takes

    // Objects whose handles the plug-in may use.
    void Enter(void* object, const char* kind);
    void Leave(void* object);
    template <class T>
    T* Live(void* handle, const char* kind) {
        return IsLive(handle, kind) ? static_cast<T*>(handle) : nullptr;
    }

    void Fault(const std::string& text);
    std::vector<std::string> TakeFaults();

    /// The n-th call of a suite function from now on answers with a status.
    void FailOn(const std::string& function, int nth, int status);
    bool HasFailed() const { return failed_; }
    /// Functions called so far, with their counts.
    std::map<std::string, int> Calls();

    /// A call of a suite's function: checks that it comes from within an action that allows it. Returns the
    /// status to answer with, or a negative number.
    int Entered(const std::string& function, const char* allowedActions = nullptr, bool anyThread = false);

    std::mutex mutex;            ///< guards what suites change
    std::atomic<int> spread = 0; ///< runs of the thread suite
    const Habits habits;

private:
    bool IsLive(void* handle, const char* kind);

    struct {
        PropertySet* properties;
        const void* (*fetchSuite)(PropertySet*, const char*, int);
    } host_;
    PropertySet properties_{kHost};
    std::map<void*, std::string> live_;
    std::vector<std::string> faults_;
    std::map<std::string, int> calls_;
    std::string failing_;
    int failIn_ = 0, failStatus_ = 0;
    bool failed_ = false;
};

/// Marks this thread as being within an action.
class ActionScope {
public:
    static int& PicturesOut(); ///< not yet released by this thread

    explicit ActionScope(std::string action);
    ~ActionScope();
    static const std::string* Current();

private:
    const std::string action_;
    const std::string* const outer_;
};

const void* FetchSuite(PropertySet* host, const char* name, int version);

} // namespace k7::test::ofx
