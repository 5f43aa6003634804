#pragma once

#include "app/Console.h"
#include "host/Application.h"
#include "host/Operator.h"

#include <string>
#include <vector>

namespace app {

/// For its lifetime, prints what effects report as warnings.
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

/// Carries out settings in their order, and warns of those that do not take effect as written; `named` is the
/// tool's name in the warnings.
void ApplySettings(host::Operator& op, const std::vector<std::string>& settings, Console& console,
                   bool named = false);

} // namespace app
