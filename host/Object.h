#pragma once

#include "host/Export.h"
#include "host/Tags.h"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <mutex>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace host {

/// A string identifier.
class FuID {
public:
    FuID() = default;
    /// `keep` says that the identifier outlives its text; in this host it makes no difference.
    explicit FuID(const char* text, bool keep = false) : text_(text) { static_cast<void>(keep); }
    const char* Text() const { return text_.c_str(); }
    bool operator==(const FuID&) const = default;
    auto operator<=>(const FuID&) const = default;

private:
    std::string text_;
};

/// A value under a tag: integer, double, text, pointer or FuID, by the tag's type.
using TagValue = std::variant<std::int64_t, double, std::string, const void*, FuID>;

struct TaggedValue {
    template <class Int>
    requires std::is_integral_v<Int> TaggedValue(Tag t, Int v)
        : tag(t)
        , value(static_cast<std::int64_t>(v)) {}
    TaggedValue(Tag t, double v) : tag(t), value(v) {}
    TaggedValue(Tag t, const char* v) : tag(t), value(std::string(v)) {}
    TaggedValue(Tag t, std::string v) : tag(t), value(std::move(v)) {}
    TaggedValue(Tag t, const void* v) : tag(t), value(v) {}
    TaggedValue(Tag t, FuID v) : tag(t), value(std::move(v)) {}

    Tag tag;
    TagValue value;
};

/// An ordered list of tags and values; a tag may occur more than once.
class TagList {
public:
    TagList() = default;
    TagList(std::initializer_list<TaggedValue> values) : values_(values) {}
    void Add(TaggedValue value) { values_.push_back(std::move(value)); }
    auto begin() const { return values_.begin(); }
    auto end() const { return values_.end(); }

    /// The last value of a tag, or null. If a tag occurs more than once the last one counts.
    const TagValue* Find(Tag tag) const {
        for (auto it = values_.rbegin(); it != values_.rend(); ++it)
            if (it->tag == tag) return &it->value;
        return nullptr;
    }

private:
    std::vector<TaggedValue> values_;
};

/// Base of what the host hands out. Created with one reference, which belongs to the creator; Recycle
/// releases a reference, and the last one deletes the object. Attributes may be used from any thread.
class K7HOST_API Object {
public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    void Retain() { ++references_; }
    void Recycle() {
        if (--references_ == 0) delete this;
    }

    /// Takes over the values; if a tag occurs more than once in the list all of its values are kept.
    virtual void SetAttrs(const TagList& tags);

    // The value of an attribute; `missing` if it was never set or has another type.
    std::int64_t GetAttrI(Tag tag, std::int64_t missing = 0) const;
    double GetAttrD(Tag tag, double missing = 0.0) const;
    std::string GetAttrS(Tag tag) const; ///< text or identifier; empty if missing
    const void* GetAttrP(Tag tag) const;
    std::vector<std::string> GetAttrList(Tag tag) const; ///< all texts of a repeated tag
    bool HasAttr(Tag tag) const;

    /// Groups changes into one step that the user can undo. Only inputs keep such steps.
    virtual void StartUndo(const char* title, const TagList* tags);
    virtual void EndUndo(bool keep, const TagList* tags);

protected:
    virtual ~Object() = default;

private:
    std::atomic<int> references_ = 1;
    mutable std::mutex mutex_;
    std::map<Tag, std::vector<TagValue>> attributes_;
};

/// Holds one reference to an object.
template <class T>
class Ref {
public:
    Ref() = default;
    /// Takes over a reference that the caller owns.
    explicit Ref(T* object) : object_(object) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() {
        if (object_) object_->Recycle();
    }

    T* get() const { return object_; }
    T* operator->() const { return object_; }
    T& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }
    /// Hands the reference to the caller.
    [[nodiscard]] T* release() { return std::exchange(object_, nullptr); }

private:
    T* object_ = nullptr;
};

} // namespace host
