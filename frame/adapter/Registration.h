#pragma once

#include "frame/adapter/HostNames.h"
#include "frame/adapter/OperatorK7.h"

#include <new>

namespace k7 {

/// The names by which the host's menus and saved compositions know a tool. The class id ("K7.Clean"), the
/// name ("K7Clean") and the help key follow from the effect's name.
struct ToolRecord {
    int number;
    const char* effect;
    const char* shortName;
    const char* description;
    unsigned notes = 0; ///< of ToolNotes
};

enum ToolNotes : unsigned {
    kWritesControls = 1, ///< a frame may write controls
    kCarriesOver = 4,    ///< random numbers drawn at its first frame are kept for all frames
    kShowsDivision = 2,  ///< frames depend on the number of parts into which the host divides them
};

/// The registration of a class, from the record and what the class itself declares.
host::TagList RegistrationTags(const ToolRecord& record, const host::ScriptInfo* script,
                               host::CreateFunction create);

host::FuID ClassIdOf(const ToolRecord& record);

/// Script binding of an operator class: objects pass through unchanged.
template <class Tool>
class ScriptInfoT : public host::ScriptInfo {
public:
    explicit ScriptInfoT(const char* id) : ScriptInfo(1, id, "", "") {}
    host::Object* ToScript(host::Object* object) override { return object; }
    host::Object* FromScript(host::Object* object) override { return object; }
};

/// Enters an operator class into the host's registry for as long as it lives: one static object for each
/// effect.
template <class Tool>
class ToolRegistration {
public:
    explicit ToolRegistration(const ToolRecord& record)
        : script_(ClassIdOf(record).Text())
        , id_(ClassIdOf(record))
        , registry_(&host::ClassRegistry(), id_, RegistrationTags(record, &script_, &Create)) {}

private:
    static host::Object* Create(host::Registry* registry, host::ScriptVal& value, host::TagList& tags) {
        try {
            return new Tool(OperatorArguments{registry, value, tags});
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    }

    ScriptInfoT<Tool> script_;
    host::FuID id_;
    host::Registry registry_;
};

} // namespace k7
