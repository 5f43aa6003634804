// The suites of the strict host, their members in the order of the standard's binary interface.

#include "tests/ofx/SuiteCalls.h"

#include <cstdarg>
#include <cstring>

namespace k7::test::ofx {

namespace {

// Properties.

Status SetValue(PropertySet* set, const char* name, int index, const Value& value) {
    auto* live = Host().Live<PropertySet>(set, "properties");
    if (!live) return kBadHandle;
    const Habits& habits = Host().habits;
    const auto* text = std::get_if<std::string>(&value);
    if (!habits.half && text && *text == "OfxBitDepthHalf") return kValue;
    if (!habits.hostHandles && std::strcmp(name, "kOfxParamPropUseHostOverlayHandle") == 0) return kUnknown;
    std::string fault;
    const Status status = live->Set(name, index, value, &fault);
    if (!fault.empty()) Host().Fault("set " + std::string(name) + ", which " + fault);
    return status;
}

template <class T>
Status GetValue(PropertySet* set, const char* name, int index, T* to) {
    auto* live = Host().Live<PropertySet>(set, "properties");
    if (!live) return kBadHandle;
    Value value = T();
    std::string fault;
    const Status status = live->Get(name, index, value.index(), &value, &fault);
    if (!fault.empty()) Host().Fault("get " + std::string(name) + ", which " + fault);
    if (status == kOk) *to = std::get<T>(value);
    return status;
}

Status propSetPointer(PropertySet* set, const char* name, int index, void* value) {
    ENTER();
    return SetValue(set, name, index, value);
}
Status propSetString(PropertySet* set, const char* name, int index, const char* value) {
    ENTER();
    return value ? SetValue(set, name, index, std::string(value)) : kValue;
}
Status propSetDouble(PropertySet* set, const char* name, int index, double value) {
    ENTER();
    return SetValue(set, name, index, value);
}
Status propSetInt(PropertySet* set, const char* name, int index, int value) {
    ENTER();
    return SetValue(set, name, index, value);
}
Status propGetPointer(PropertySet* set, const char* name, int index, void** value) {
    ENTER();
    return GetValue(set, name, index, value);
}
Status propGetString(PropertySet* set, const char* name, int index, char** value) {
    ENTER();
    static thread_local std::string kept[8]; // a text lives until the plug-in has read several others
    static thread_local unsigned next = 0;
    std::string& text = kept[next++ % 8];
    const Status status = GetValue(set, name, index, &text);
    if (status == kOk) *value = text.data();
    return status;
}
Status propGetDouble(PropertySet* set, const char* name, int index, double* value) {
    ENTER();
    return GetValue(set, name, index, value);
}
Status propGetInt(PropertySet* set, const char* name, int index, int* value) {
    ENTER();
    return GetValue(set, name, index, value);
}
Status propGetDimension(PropertySet* set, const char* name, int* count) {
    ENTER();
    auto* live = Host().Live<PropertySet>(set, "properties");
    if (!live) return kBadHandle;
    *count = static_cast<int>(live->Count(name));
    return kOk;
}

// Effects and clips.

Status getPropertySet(Effect* effect, PropertySet** set) {
    ENTER();
    if (!Host().Live<Effect>(effect, "effect")) return kBadHandle;
    *set = &effect->properties;
    return kOk;
}
Status getParamSet(Effect* effect, Effect** set) {
    ENTER();
    if (!Host().Live<Effect>(effect, "effect")) return kBadHandle;
    *set = effect;
    return kOk;
}
Status clipDefine(Effect* effect, const char* name, PropertySet** set) {
    ENTER(kWhereDefined);
    if (!Host().Live<Effect>(effect, "effect")) return kBadHandle;
    if (effect->FindClip(name)) return Host().Fault("a second clip " + std::string(name)), kExists;
    effect->clips.push_back(std::make_unique<Clip>(kClipDescriptor, name));
    *set = &effect->clips.back()->properties;
    Host().Enter(*set, "properties");
    return kOk;
}
Status clipGetHandle(Effect* effect, const char* name, Clip** clip, PropertySet** set) {
    ENTER();
    if (!Host().Live<Effect>(effect, "effect")) return kBadHandle;
    Clip* found = effect->FindClip(name);
    if (!found || effect->what != kEffect) return Host().Fault("no clip " + std::string(name)), kUnknown;
    *clip = found;
    if (set) *set = &found->properties;
    return kOk;
}
Status clipGetPropertySet(Clip* clip, PropertySet** set) {
    ENTER();
    if (!Host().Live<Clip>(clip, "clip")) return kBadHandle;
    *set = &clip->properties;
    return kOk;
}
Status clipGetImage(Clip* clip, double time, const double*, PropertySet** set) {
    ENTER(kWherePictures);
    if (!Host().Live<Clip>(clip, "clip")) return kBadHandle;
    Pixels* pixels = clip->picture ? clip->picture(time) : nullptr;
    clip->asked.insert(time);
    if (!pixels) return kFailed;
    auto* image = new PropertySet(kImage);
    const std::size_t sides = 4;
    for (std::size_t i = 0; i < sides; ++i) image->Put("OfxImagePropBounds", pixels->bounds[i], i);
    if (Host().habits.imageRegion)
        for (std::size_t i = 0; i < sides; ++i)
            image->Put("OfxImagePropRegionOfDefinition", pixels->region[i], i);
    image->Put("OfxImagePropData", static_cast<void*>(pixels->bottom));
    image->Put("OfxImagePropRowBytes", pixels->rowBytes);
    image->Put("OfxImageEffectPropPixelDepth", pixels->depth);
    image->Put("OfxImageEffectPropComponents", pixels->components);
    image->Put("OfxImagePropPixelAspectRatio", clip->properties.Of("OfxImagePropPixelAspectRatio", 1.0));
    if (Host().habits.imageScale)
        for (std::size_t i = 0; i < 2; ++i) image->Put("OfxImageEffectPropRenderScale", 1.0, i);
    Host().Enter(image, "properties");
    ++ActionScope::PicturesOut();
    *set = image;
    return kOk;
}
Status clipReleaseImage(PropertySet* image) {
    const int answer = Host().Entered(__func__, kWherePictures); // it is released in any case
    if (!Host().Live<PropertySet>(image, "properties")) return kBadHandle;
    Host().Leave(image);
    delete image;
    --ActionScope::PicturesOut();
    return answer >= 0 ? answer : kOk;
}
Status clipGetRegionOfDefinition(Clip* clip, double, double* bounds) {
    ENTER();
    if (!Host().Live<Clip>(clip, "clip")) return kBadHandle;
    if (!clip->picture) return kFailed;
    std::copy(clip->region.begin(), clip->region.end(), bounds);
    return kOk;
}
int abortAsked(Effect* effect) {
    if (Host().Entered(__func__, kWhereAborted) >= 0) return 1;
    return Host().Live<Effect>(effect, "effect") && effect->aborted() ? 1 : 0;
}

// Threads, messages, on-screen controls.

thread_local bool spawned = false;

Status multiThread(void (*work)(unsigned, unsigned, void*), unsigned count, void* argument) {
    ENTER(nullptr, true);
    if (spawned) return kExists;
    ++Host().spread;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i)
        threads.emplace_back([=] {
            spawned = true;
            work(i, count, argument);
        });
    for (std::thread& thread : threads) thread.join();
    return kOk;
}
Status multiThreadNumCPUs(unsigned* count) {
    ENTER(nullptr, true);
    *count = 4;
    return kOk;
}
Status multiThreadIndex(unsigned* index) {
    *index = 0;
    return kOk;
}
int multiThreadIsSpawnedThread() {
    return spawned;
}

Status Say(void* handle, const char* format, va_list arguments) {
    auto* effect = Host().Live<Effect>(handle, "effect");
    if (!effect) return kBadHandle;
    char text[500];
    vsnprintf(text, sizeof text, format, arguments);
    const std::lock_guard lock(Host().mutex);
    effect->messages.emplace_back(text);
    return kOk;
}
Status message(void* handle, const char*, const char*, const char* format, ...) {
    ENTER();
    va_list arguments;
    va_start(arguments, format);
    const Status status = Say(handle, format, arguments);
    va_end(arguments);
    return status;
}
Status setPersistentMessage(void* handle, const char* type, const char*, const char* format, ...) {
    ENTER();
    static const std::set<std::string> types = {"OfxMessageError", "OfxMessageWarning", "OfxMessageMessage"};
    if (!types.count(type))
        return Host().Fault("a persistent message cannot be of type " + std::string(type)), kValue;
    va_list arguments;
    va_start(arguments, format);
    const Status status = Say(handle, format, arguments);
    va_end(arguments);
    return status;
}
Status clearPersistentMessage(void*) {
    ENTER();
    return kOk;
}

Status interactSwapBuffers(Interact* interact) {
    ENTER();
    return Host().Live<Interact>(interact, "interact") ? kOk : kBadHandle;
}
Status interactRedraw(Interact* interact) {
    ENTER();
    if (!Host().Live<Interact>(interact, "interact")) return kBadHandle;
    ++interact->redraws;
    return kOk;
}
Status interactGetPropertySet(Interact* interact, PropertySet** set) {
    ENTER();
    if (!Host().Live<Interact>(interact, "interact")) return kBadHandle;
    *set = &interact->properties;
    return kOk;
}

} // namespace

const void* FetchSuite(PropertySet*, const char* suite, int version) {
    const void* const none = F(notExpected);
    static const void* const property[] = {F(propSetPointer),
                                           F(propSetString),
                                           F(propSetDouble),
                                           F(propSetInt),
                                           none,
                                           none,
                                           none,
                                           none,
                                           F(propGetPointer),
                                           F(propGetString),
                                           F(propGetDouble),
                                           F(propGetInt),
                                           none,
                                           none,
                                           none,
                                           none,
                                           none,
                                           F(propGetDimension)};
    static const void* const effect[] = {F(getPropertySet),
                                         F(getParamSet),
                                         F(clipDefine),
                                         F(clipGetHandle),
                                         F(clipGetPropertySet),
                                         F(clipGetImage),
                                         F(clipReleaseImage),
                                         F(clipGetRegionOfDefinition),
                                         F(abortAsked),
                                         none,
                                         none,
                                         none,
                                         none};
    static const void* const threads[] = {F(multiThread),
                                          F(multiThreadNumCPUs),
                                          F(multiThreadIndex),
                                          F(multiThreadIsSpawnedThread),
                                          none,
                                          none,
                                          none,
                                          none,
                                          none};
    static const void* const messages[] = {F(message), F(setPersistentMessage), F(clearPersistentMessage)};
    static const void* const interacts[] = {F(interactSwapBuffers), F(interactRedraw),
                                            F(interactGetPropertySet)};

    const Habits& habits = Host().habits;
    const std::string name = suite;
    if (name == "OfxMessageSuite" && habits.messages && version <= (habits.messagesV2 ? 2 : 1))
        return messages;
    if (version != 1) return nullptr;
    if (name == "OfxPropertySuite") return property;
    if (name == "OfxImageEffectSuite") return effect;
    if (name == "OfxParameterSuite") return ParameterSuite();
    if (name == "OfxMultiThreadSuite" && habits.threads) return threads;
    if (name == "OfxInteractSuite" && habits.interacts) return interacts;
    return nullptr;
}

} // namespace k7::test::ofx
