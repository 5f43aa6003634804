#pragma once

#include "app/Console.h"
#include "host/Application.h"
#include "host/Operator.h"

namespace app {

/// Passes on what effects report as warnings, for as long as it lives.
class Listener {
public:
    explicit Listener(Console& console) {
        host::GetApp()->SetMessageListener(
            [&console](const host::Operator&, const std::string& text) { console.Warn(text); });
    }
    ~Listener() { host::GetApp()->SetMessageListener({}); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
};

} // namespace app
