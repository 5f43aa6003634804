#include "ofx/Suites.h"

#include "ofx/Names.h"

namespace ofx {

Suites& TheHost() {
    static Suites suites;
    return suites;
}

void Check(Status status, const char* what) {
    if (status == kOk) return;
    // The statuses of suites that are also valid statuses of actions.
    const bool ofActions = status == kFatal || status == kErrMemory || status == kImageFormat;
    throw Failure(ofActions ? status : kFailed, std::string("the host refused: ") + what);
}

PropertySet PropertiesOf(Effect effect) {
    PropertySet set = nullptr;
    Check(TheHost().effect->getPropertySet(effect, &set), "the effect's properties");
    return set;
}

ParamSet ParametersOf(Effect effect) {
    ParamSet set = nullptr;
    Check(TheHost().effect->getParamSet(effect, &set), "the effect's parameters");
    return set;
}

bool IsConnected(Clip clip) {
    PropertySet set = nullptr;
    return TheHost().effect->clipGetPropertySet(clip, &set) == kOk &&
           Properties(set).Get(kClipConnected, 0) != 0;
}

void ShowMessage(Effect effect, const char* type, const std::string& text) {
    const Suites& suites = TheHost();
    if (!suites.message || text.empty()) return;
    const auto tell =
        suites.persistentMessages ? suites.message->setPersistentMessage : suites.message->message;
    static_cast<void>(tell(effect, type, "k7", "%s", text.c_str()));
}

void ClearMessage(Effect effect) {
    const Suites& suites = TheHost();
    if (suites.persistentMessages) static_cast<void>(suites.message->clearPersistentMessage(effect));
}

void Properties::Set(const char* name, const char* value, int index) const {
    Check(TheHost().property->setString(set_, name, index, value), name);
}
void Properties::Set(const char* name, double value, int index) const {
    Check(TheHost().property->setDouble(set_, name, index, value), name);
}
void Properties::Set(const char* name, int value, int index) const {
    Check(TheHost().property->setInt(set_, name, index, value), name);
}
void Properties::Set(const char* name, void* value, int index) const {
    Check(TheHost().property->setPointer(set_, name, index, value), name);
}
void Properties::Try(const char* name, const std::string& value, int index) const {
    static_cast<void>(TheHost().property->setString(set_, name, index, value.c_str()));
}
void Properties::Try(const char* name, int value, int index) const {
    static_cast<void>(TheHost().property->setInt(set_, name, index, value));
}
void Properties::Try(const char* name, void* value) const {
    static_cast<void>(TheHost().property->setPointer(set_, name, 0, value));
}

int Properties::Get(const char* name, int missing, int index) const {
    int value = missing;
    return TheHost().property->getInt(set_, name, index, &value) == kOk ? value : missing;
}
double Properties::Get(const char* name, double missing, int index) const {
    double value = missing;
    return TheHost().property->getDouble(set_, name, index, &value) == kOk ? value : missing;
}
Box Properties::Get(const char* name, const Box& missing) const {
    Box box;
    int* const sides[] = {&box.x1, &box.y1, &box.x2, &box.y2};
    for (int i = 0; i < 4; ++i)
        if (TheHost().property->getInt(set_, name, i, sides[i]) != kOk) return missing;
    return box;
}
std::string Properties::Get(const char* name, const char* missing, int index) const {
    char* value = nullptr;
    const bool got = TheHost().property->getString(set_, name, index, &value) == kOk && value;
    return got ? value : missing;
}
void* Properties::GetPointer(const char* name) const {
    void* value = nullptr;
    return TheHost().property->getPointer(set_, name, 0, &value) == kOk ? value : nullptr;
}

} // namespace ofx
