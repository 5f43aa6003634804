#include "host/Preview.h"

#include "host/Registry.h"

namespace host {

void OperatorControl::InputChanged(Input*) {
    ++RedrawsWanted;
}

namespace {

Object* CreateOperatorControl(Registry*, ScriptVal&, TagList&) {
    return new OperatorControl;
}

Ref<Registry> operatorControlClass(new Registry(&ClassRegistry(), FuID("OperatorControl", true),
                                                {{kTagRegCreate,
                                                  reinterpret_cast<const void*>(&CreateOperatorControl)}}));

} // namespace
} // namespace host
