#include "host/Object.h"

namespace host {

void Object::SetAttrs(const TagList& tags) {
    const std::lock_guard lock(mutex_);
    for (const TaggedValue& tagged : tags) attributes_[tagged.tag].clear();
    for (const TaggedValue& tagged : tags) attributes_[tagged.tag].push_back(tagged.value);
}

namespace {

/// The last value of a tag if it is a V, otherwise `missing`.
template <class V>
V LastOr(const std::map<Tag, std::vector<TagValue>>& attributes, Tag tag, V missing) {
    const auto found = attributes.find(tag);
    if (found == attributes.end() || found->second.empty()) return missing;
    const V* value = std::get_if<V>(&found->second.back());
    return value ? *value : missing;
}

} // namespace

std::int64_t Object::GetAttrI(Tag tag, std::int64_t missing) const {
    const std::lock_guard lock(mutex_);
    return LastOr(attributes_, tag, missing);
}

double Object::GetAttrD(Tag tag, double missing) const {
    const std::lock_guard lock(mutex_);
    return LastOr(attributes_, tag, missing);
}

std::string Object::GetAttrS(Tag tag) const {
    const std::lock_guard lock(mutex_);
    const FuID id = LastOr(attributes_, tag, FuID());
    return LastOr(attributes_, tag, std::string(id.Text()));
}

const void* Object::GetAttrP(Tag tag) const {
    const std::lock_guard lock(mutex_);
    return LastOr<const void*>(attributes_, tag, nullptr);
}

std::vector<std::string> Object::GetAttrList(Tag tag) const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> texts;
    const auto found = attributes_.find(tag);
    if (found == attributes_.end()) return texts;
    for (const TagValue& value : found->second)
        if (const auto* text = std::get_if<std::string>(&value)) texts.push_back(*text);
    return texts;
}

bool Object::HasAttr(Tag tag) const {
    const std::lock_guard lock(mutex_);
    return attributes_.count(tag) != 0;
}

void Object::StartUndo(const char*, const TagList*) {}
void Object::EndUndo(bool, const TagList*) {}

} // namespace host
