#pragma once

// The part of the OpenFX binary interface that the bundle uses, declared from the standard's public
// documentation. The members of a suite stand in the order of the interface; those that are never called are
// plain addresses.

namespace ofx {

extern "C" {

using Status = int;
inline constexpr Status kOk = 0;
inline constexpr Status kFailed = 1;
inline constexpr Status kFatal = 2;
inline constexpr Status kMissingHostFeature = 4;
inline constexpr Status kErrMemory = 8;
inline constexpr Status kReplyDefault = 14;
inline constexpr Status kImageFormat = 1000;

// Opaque handles of the host.
using PropertySet = struct PropertySetTag*;
using Effect = struct EffectTag*;
using ParamSet = struct ParamSetTag*;
using Param = struct ParamTag*;
using Clip = struct ClipTag*;
using Interact = struct InteractTag*;
using Unused = void (*)();

struct RectD {
    double x1, y1, x2, y2;
};

struct Host {
    PropertySet host;
    const void* (*fetchSuite)(PropertySet host, const char* name, int version);
};

using MainEntry = Status (*)(const char* action, const void* handle, PropertySet inArgs, PropertySet outArgs);

struct Plugin {
    const char* pluginApi;
    int apiVersion;
    const char* pluginIdentifier;
    unsigned versionMajor;
    unsigned versionMinor;
    void (*setHost)(Host* host);
    MainEntry mainEntry;
};

struct PropertySuite {
    Status (*setPointer)(PropertySet, const char* name, int index, void* value);
    Status (*setString)(PropertySet, const char* name, int index, const char* value);
    Status (*setDouble)(PropertySet, const char* name, int index, double value);
    Status (*setInt)(PropertySet, const char* name, int index, int value);
    Status (*setPointerN)(PropertySet, const char* name, int count, void* const* values);
    Status (*setStringN)(PropertySet, const char* name, int count, const char* const* values);
    Status (*setDoubleN)(PropertySet, const char* name, int count, const double* values);
    Status (*setIntN)(PropertySet, const char* name, int count, const int* values);
    Status (*getPointer)(PropertySet, const char* name, int index, void** value);
    Status (*getString)(PropertySet, const char* name, int index, char** value);
    Status (*getDouble)(PropertySet, const char* name, int index, double* value);
    Status (*getInt)(PropertySet, const char* name, int index, int* value);
    Status (*getPointerN)(PropertySet, const char* name, int count, void** values);
    Status (*getStringN)(PropertySet, const char* name, int count, char** values);
    Status (*getDoubleN)(PropertySet, const char* name, int count, double* values);
    Status (*getIntN)(PropertySet, const char* name, int count, int* values);
    Status (*reset)(PropertySet, const char* name);
    Status (*getDimension)(PropertySet, const char* name, int* count);
};

struct ImageEffectSuite {
    Status (*getPropertySet)(Effect, PropertySet*);
    Status (*getParamSet)(Effect, ParamSet*);
    Status (*clipDefine)(Effect, const char* name, PropertySet*);
    Status (*clipGetHandle)(Effect, const char* name, Clip*, PropertySet*);
    Status (*clipGetPropertySet)(Clip, PropertySet*);
    Status (*clipGetImage)(Clip, double time, const RectD* region, PropertySet* image);
    Status (*clipReleaseImage)(PropertySet image);
    Status (*clipGetRegionOfDefinition)(Clip, double time, RectD* bounds);
    int (*abort)(Effect);
    Unused imageMemoryAlloc;
    Unused imageMemoryFree;
    Unused imageMemoryLock;
    Unused imageMemoryUnlock;
};

struct ParameterSuite {
    Status (*paramDefine)(ParamSet, const char* type, const char* name, PropertySet*);
    Status (*paramGetHandle)(ParamSet, const char* name, Param*, PropertySet*);
    Status (*paramSetGetPropertySet)(ParamSet, PropertySet*);
    Status (*paramGetPropertySet)(Param, PropertySet*);
    Status (*paramGetValue)(Param, ...);
    Status (*paramGetValueAtTime)(Param, double time, ...);
    Status (*paramGetDerivative)(Param, double time, ...);
    Status (*paramGetIntegral)(Param, double from, double to, ...);
    Status (*paramSetValue)(Param, ...);
    Status (*paramSetValueAtTime)(Param, double time, ...);
    Status (*paramGetNumKeys)(Param, unsigned* count);
    Status (*paramGetKeyTime)(Param, unsigned nth, double* time);
    Status (*paramGetKeyIndex)(Param, double time, int direction, int* index);
    Status (*paramDeleteKey)(Param, double time);
    Status (*paramDeleteAllKeys)(Param);
    Status (*paramCopy)(Param to, Param from, double offset, const void* range);
    Status (*paramEditBegin)(ParamSet, const char* name);
    Status (*paramEditEnd)(ParamSet);
};

using ThreadFunction = void (*)(unsigned index, unsigned count, void* argument);
struct MultiThreadSuite {
    Status (*multiThread)(ThreadFunction, unsigned threads, void* argument);
    Status (*multiThreadNumCPUs)(unsigned* count);
    Status (*multiThreadIndex)(unsigned* index);
    int (*multiThreadIsSpawnedThread)();
    Unused mutexCreate;
    Unused mutexDestroy;
    Unused mutexLock;
    Unused mutexUnLock;
    Unused mutexTryLock;
};

/// Version 2 begins with the member of version 1.
struct MessageSuite {
    Status (*message)(void* handle, const char* type, const char* id, const char* format, ...);
    Status (*setPersistentMessage)(void* handle, const char* type, const char* id, const char* format, ...);
    Status (*clearPersistentMessage)(void* handle);
};

struct InteractSuite {
    Status (*interactSwapBuffers)(Interact);
    Status (*interactRedraw)(Interact);
    Status (*interactGetPropertySet)(Interact, PropertySet*);
};

} // extern "C"

} // namespace ofx
