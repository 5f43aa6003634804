#include "ofx/Load.h"

#include "host/Application.h"
#include "ofx/Instance.h"
#include "ofx/Suites.h"

#include <algorithm>
#include <atomic>
#include <exception>

#ifdef _WIN32
#include <windows.h>
#endif

namespace ofx {

namespace {

Host* theHost = nullptr;

/// Runs tasks on the host's threads, however many it provides.
bool RunOnHostThreads(long count, const std::function<void(long)>& task) {
    struct Job {
        const std::function<void(long)>& task;
        const long count;
        std::atomic<long> next = 0;
        std::atomic<bool> failed = false;
        std::exception_ptr error = {};

        void Work() {
            for (long i = next++; i < count; i = next++) {
                try {
                    task(i);
                } catch (...) {
                    if (!failed.exchange(true)) error = std::current_exception();
                }
            }
        }
    } job{task, count};
    const auto work = [](unsigned, unsigned, void* argument) { static_cast<Job*>(argument)->Work(); };
    const MultiThreadSuite* suite = TheHost().thread;
    if (!suite || count < 2 || suite->multiThreadIsSpawnedThread()) return false;
    const auto threads = static_cast<unsigned>(std::min<long>(count, host::GetApp()->ProcessorCount));
    if (suite->multiThread(work, threads, &job) != kOk && job.next == 0) return false;
    job.Work(); // whatever is left if the host failed halfway
    if (job.error) std::rethrow_exception(job.error);
    return true;
}

template <class Suite>
const Suite* Fetch(const char* name, int version) {
    return static_cast<const Suite*>(theHost->fetchSuite(theHost->host, name, version));
}

#ifdef _WIN32
/// Keeps the module loaded when the host unloads it: its threads live as long as the host. On other systems a
/// linker option does that.
void StayLoaded() {
    HMODULE module;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCSTR>(&StayLoaded), &module);
}
#else
void StayLoaded() {}
#endif

/// How many plug-ins are loaded. The suites are fetched for the first one, because others may be working
/// later.
int loaded = 0;

Status FetchSuites() {
    Suites suites;
    suites.hostProperties = theHost->host;
    suites.property = Fetch<PropertySuite>("OfxPropertySuite", 1);
    suites.effect = Fetch<ImageEffectSuite>("OfxImageEffectSuite", 1);
    suites.param = Fetch<ParameterSuite>("OfxParameterSuite", 1);
    if (!suites.property || !suites.effect || !suites.param) return kMissingHostFeature;
    suites.thread = Fetch<MultiThreadSuite>("OfxMultiThreadSuite", 1);
    suites.interact = Fetch<InteractSuite>("OfxInteractSuite", 1);
    suites.message = Fetch<MessageSuite>("OfxMessageSuite", 2);
    suites.persistentMessages = suites.message != nullptr;
    if (!suites.message) suites.message = Fetch<MessageSuite>("OfxMessageSuite", 1);
    TheHost() = suites;
    return kOk;
}

void SpreadWork() {
    const Suites& suites = TheHost();
    unsigned processors = 0;
    if (suites.thread && suites.thread->multiThreadNumCPUs(&processors) == kOk && processors > 0)
        host::GetApp()->ProcessorCount = static_cast<int>(std::min(processors, 1024u));
    host::GetApp()->Division = 1; // frames are the same on every machine
    host::GetApp()->SetTaskRunner(&RunOnHostThreads);
}

} // namespace

void SetHost(Host* host) {
    theHost = host;
}

Status Load() {
    if (!theHost || !theHost->fetchSuite) return kMissingHostFeature;
    if (loaded == 0) {
        if (const Status status = FetchSuites(); status != kOk) return status;
        StayLoaded();
        SpreadWork();
        HearMessages();
    }
    ++loaded;
    return kOk;
}

Status Unload() {
    if (loaded > 0) --loaded;
    return kOk;
}

} // namespace ofx
