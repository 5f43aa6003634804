#pragma once

#include "app/Console.h"
#include "host/Application.h"
#include "host/Operator.h"

#include <string>
#include <vector>

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

/// Carries out settings in their order, and warns of what they do not do as they are written; `named` says of
/// which tool.
void ApplySettings(host::Operator& op, const std::vector<std::string>& settings, Console& console,
                   bool named = false);

} // namespace app
