#include "host/Registry.h"

#include "host/Operator.h"

#include <algorithm>

namespace host {

namespace {

/// Tags hold addresses of functions like any other address.
template <class Function>
Function AsFunction(const void* address) {
    return reinterpret_cast<Function>(const_cast<void*>(address));
}

} // namespace

ScriptInfo::ScriptInfo(int number, const char* id, const char*, const char*) : number_(number), id_(id) {}

Registry::Registry(RegistryList* list, const FuID& id, const TagList& tags) : list_(list), id_(id) {
    SetAttrs(tags);
    list_->Add(this);
    using Hook = void (*)(Registry*);
    if (auto hook = AsFunction<Hook>(GetAttrP(kTagRegInit))) hook(this);
}

Registry::~Registry() {
    using Hook = void (*)(Registry*);
    if (auto hook = AsFunction<Hook>(GetAttrP(kTagRegCleanup))) hook(this);
    list_->Remove(this);
}

Object* Registry::New(FusionDoc* document) const {
    auto create = AsFunction<CreateFunction>(GetAttrP(kTagRegCreate));
    if (!create) return nullptr;
    ScriptVal value;
    TagList tags{{kTagDocument, document}};
    return create(const_cast<Registry*>(this), value, tags);
}

Operator* Registry::NewOperator(FusionDoc* document) const {
    Object* made = New(document);
    auto* tool = dynamic_cast<Operator*>(made);
    if (made && !tool) made->Recycle(); // it belongs to another class
    if (tool) tool->AddCommonControls();
    return tool;
}

void RegistryList::Add(Registry* entry) {
    const std::lock_guard lock(mutex_);
    entries_.push_back(entry);
}

void RegistryList::Remove(Registry* entry) {
    const std::lock_guard lock(mutex_);
    std::erase(entries_, entry);
}

std::vector<Registry*> RegistryList::Entries() const {
    const std::lock_guard lock(mutex_);
    std::vector<Registry*> entries = entries_;
    std::stable_sort(entries.begin(), entries.end(), [](const Registry* a, const Registry* b) {
        return a->GetAttrI(kTagRegNumber) < b->GetAttrI(kTagRegNumber);
    });
    return entries;
}

Registry* RegistryList::Find(const FuID& id) const {
    const std::lock_guard lock(mutex_);
    for (Registry* entry : entries_)
        if (entry->Id() == id) return entry;
    return nullptr;
}

Object* RegistryList::New(const FuID& id, long, void*) const {
    const Registry* entry = Find(id);
    return entry ? entry->New(nullptr) : nullptr;
}

RegistryList& ClassRegistry() {
    static RegistryList list;
    return list;
}

} // namespace host
