#pragma once

#include "host/Object.h"

#include <mutex>
#include <vector>

namespace host {

class FusionDoc;
class Operator;
class Registry;

/// A value of the script language. Tools pass it on without looking into it.
struct ScriptVal {};

/// A tool's side of the script language.
class K7HOST_API ScriptInfo {
public:
    ScriptInfo(int number, const char* id, const char* first, const char* second);
    virtual ~ScriptInfo() = default;
    ScriptInfo(const ScriptInfo&) = delete;
    ScriptInfo& operator=(const ScriptInfo&) = delete;

    virtual Object* ToScript(Object* object) = 0;
    virtual Object* FromScript(Object* object) = 0;

private:
    int number_;
    std::string id_;
};

/// Makes an instance of a class; null if that fails.
using CreateFunction = Object* (*)(Registry*, ScriptVal&, TagList&);

class RegistryList;

/// The entry of a class, in its list for as long as it lives.
class K7HOST_API Registry : public Object {
public:
    Registry(RegistryList* list, const FuID& id, const TagList& tags);
    ~Registry() override;

    const FuID& Id() const { return id_; }

    /// A new instance in a document, or null. The caller owns it.
    [[nodiscard]] Object* New(FusionDoc* document) const;
    /// The same for the class of a tool.
    [[nodiscard]] Operator* NewOperator(FusionDoc* document) const;

private:
    RegistryList* const list_;
    const FuID id_;
};

/// The classes that the host knows. Thread-safe.
class K7HOST_API RegistryList {
public:
    void Add(Registry* entry);
    void Remove(Registry* entry);
    std::vector<Registry*> Entries() const; ///< in the order of their tool numbers
    Registry* Find(const FuID& id) const;   ///< null if there is none

    /// A new object of a class; `mask` and `argument` have no meaning for the classes of this host. Null if
    /// there is no such class. The caller owns it.
    [[nodiscard]] Object* New(const FuID& id, long mask, void* argument) const;

private:
    mutable std::mutex mutex_;
    std::vector<Registry*> entries_;
};

/// The one list of all classes.
K7HOST_API RegistryList& ClassRegistry();

} // namespace host
