#pragma once

#include "host/Image.h"
#include "host/Parameter.h"
#include "host/ValueStore.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace host {

class Operator;

/// What an image input can be linked to: a clip, or another tool.
class K7HOST_API ImageProvider {
public:
    virtual ~ImageProvider() = default;
    /// The picture at a time, with a reference for the caller; null if there is none. Any thread may ask.
    virtual Image* ImageAt(double time) = 0;
};

/// One setting or image link of an operator. Values may be read and written from any thread.
class K7HOST_API Input : public Object {
public:
    /// The kinds of value by the link's data type.
    enum class Type { Number, Point, Text, Image };

    Input(Operator* owner, const FuID& name, const FuID& id, const TagList& tags);
    ~Input() override;

    const std::string& Name() const { return name_; } ///< the label
    const std::string& Id() const { return id_; }
    Type DataType() const { return type_; }
    Operator* Owner() const { return owner_; }

    /// The value at a time, with a reference for the caller. Null for an image input without a picture at
    /// that time.
    Parameter* GetSource(double time);

    /// Writes a value: into the constant, or as a key at `time` if the input is animated. A number is clamped
    /// to the input's limits; NaN is kept. Then the operator is notified on this thread. A value of a type
    /// other than the input's is ignored.
    virtual void SetSource(Parameter* value, double time, int mode, TagList* tags);

    /// From now on the value lives in `store` instead of in memory. To be called before the input is used.
    void KeepValueIn(std::unique_ptr<ValueStore> store);

    /// Sets attributes; the store is told if the input is shown or enabled.
    void SetAttrs(const TagList& tags) override;

    /// The whole curve of a number or point in memory. Setting it notifies the operator at the time of the
    /// first key, or at the document's current time.
    Curve GetCurve() const;
    void SetCurve(Curve curve);
    std::string GetText() const;

    /// Links an image input; null removes the link. The provider must outlive the link.
    void Connect(ImageProvider* provider);
    bool Connected() const;

    /// A filter between the link and those who ask for a picture: it takes over the picture at a time and
    /// returns what is seen of it, or null. To be set before the input is used.
    using Filter = std::function<Image*(Image* picture, double time)>;
    void SetFilter(Filter filter) { filter_ = std::move(filter); }
    /// The picture as the link provides it, with a reference for the caller.
    Image* Unfiltered(double time);

    void StartUndo(const char* title, const TagList* tags) override;
    void EndUndo(bool keep, const TagList* tags) override;

private:
    ValueStore& Store() const { return elsewhere_ ? *elsewhere_ : *memory_; }
    double Held(double value) const;
    double TimeOf(double time) const;

    Operator* const owner_;
    const std::string name_;
    const std::string id_;
    const Type type_;
    std::unique_ptr<CurveStore> memory_;
    std::unique_ptr<ValueStore> elsewhere_; ///< null: in memory
    mutable std::mutex mutex_;              ///< guards the link
    ImageProvider* provider_ = nullptr;
    Filter filter_;
};

class K7HOST_API Output : public Object {
public:
    Output(const FuID& name, const FuID& id, const TagList& tags) : name_(name.Text()), id_(id.Text()) {
        SetAttrs(tags);
    }
    const std::string& Name() const { return name_; }
    const std::string& Id() const { return id_; }

private:
    std::string name_;
    std::string id_;
};

} // namespace host
