#pragma once

#include <map>
#include <string>
#include <variant>
#include <vector>

namespace k7::test::ofx {

using Value = std::variant<int, double, std::string, void*>;

/// What a property set belongs to.
enum What : unsigned {
    kHost = 1,
    kEffectDescriptor = 2,
    kEffect = 4,
    kClipDescriptor = 8,
    kClip = 16,
    kParamDescriptor = 32,
    kParam = 64,
    kImage = 128,
    kInteract = 256,
    kArguments = 512, ///< what an action passes: nothing else may be read
    kAnswers = 1024,  ///< what an action accepts: nothing else may be set
};

/// A property set of the strict host. Each access is checked against the standard; `fault` is told what is
/// wrong with it.
class PropertySet {
public:
    PropertySet(What what, std::string paramType = {}) : what_(what), paramType_(std::move(paramType)) {}

    /// The host's own access: nothing is checked.
    void Put(const std::string& name, Value value, std::size_t index = 0);
    template <class T>
    T Of(const std::string& name, T missing, std::size_t index = 0) const {
        const auto found = values.find(name);
        if (found == values.end() || found->second.size() <= index) return missing;
        const T* value = std::get_if<T>(&found->second[index]);
        return value ? *value : missing;
    }
    std::size_t Count(const std::string& name) const;

    // The plug-in's access; a status of the standard.
    int Set(const std::string& name, int index, const Value& value, std::string* fault);
    int Get(const std::string& name, int index, std::size_t type, Value* value, std::string* fault) const;

    std::map<std::string, std::vector<Value>> values;

private:
    std::string Misuse(const std::string& name, int index, std::size_t type, bool writes) const;

    const What what_;
    const std::string paramType_;
};

} // namespace k7::test::ofx
