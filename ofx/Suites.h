#pragma once

#include "ofx/Abi.h"

#include <stdexcept>
#include <string>

namespace ofx {

/// The host's suites. The optional ones may be null.
struct Suites {
    PropertySet hostProperties = nullptr;
    const PropertySuite* property = nullptr;
    const ImageEffectSuite* effect = nullptr;
    const ParameterSuite* param = nullptr;
    const MultiThreadSuite* thread = nullptr;
    const InteractSuite* interact = nullptr;
    const MessageSuite* message = nullptr;
    bool persistentMessages = false; ///< the message suite is of version 2
};

/// One for all plug-ins of the bundle; filled in the load action.
Suites& TheHost();

/// A failing status, the host's or ours, on its way to the boundary, where it becomes the action's status
/// and, unless the text is empty, one message to the user.
struct Failure : std::runtime_error {
    Failure(Status s, const std::string& text) : std::runtime_error(text), status(s) {}
    Status status;
};

/// Throws if the host returns anything but OK. `what` is what it was asked for.
void Check(Status status, const char* what);

/// The properties and parameters of an effect, or of an instance. They throw Failure.
PropertySet PropertiesOf(Effect effect);
ParamSet ParametersOf(Effect effect);
/// Whether a clip of an instance has pictures.
bool IsConnected(Clip clip);

/// Shows a text to the user if the host can. `type` is the standard's kind of message.
void ShowMessage(Effect effect, const char* type, const std::string& text);
/// Removes a message that the host keeps showing.
void ClearMessage(Effect effect);

/// Pixels of a picture in the host's coordinates: x1 and y1 are inclusive, x2 and y2 exclusive; y points up.
struct Box {
    int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    int Width() const { return x2 - x1; }
    int Height() const { return y2 - y1; }
    bool operator==(const Box&) const = default;
};

/// A host's property set. Set throws if it fails; Try may fail, as with properties that older hosts do not
/// know. Get returns `missing` if there is none.
class Properties {
public:
    explicit Properties(PropertySet set) : set_(set) {}

    void Set(const char* name, const char* value, int index = 0) const;
    void Set(const char* name, const std::string& value, int index = 0) const {
        Set(name, value.c_str(), index);
    }
    void Set(const char* name, double value, int index = 0) const;
    void Set(const char* name, int value, int index = 0) const;
    void Set(const char* name, void* value, int index = 0) const;
    void Try(const char* name, const std::string& value, int index = 0) const;
    void Try(const char* name, int value, int index = 0) const;
    void Try(const char* name, void* value) const;

    int Get(const char* name, int missing, int index = 0) const;
    double Get(const char* name, double missing, int index = 0) const;
    std::string Get(const char* name, const char* missing, int index = 0) const;
    Box Get(const char* name, const Box& missing) const;
    void* GetPointer(const char* name) const; ///< null if there is none

private:
    PropertySet set_;
};

} // namespace ofx
