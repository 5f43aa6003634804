#include "frame/PluginK7.h"

namespace k7 {

void PluginK7::RunExternalChunks(ExternalWorker worker, int rows, void* context) {
    ExternalFunction = worker;
    ExternalContext = context;
    RunChunks([](PluginK7* core, int first, int last,
                 int threads) { core->ExternalFunction(core->ExternalContext, first, last, threads); },
              rows);
}

} // namespace k7
