#include "app/Listener.h"

#include "media/Settings.h"

namespace app {

void ApplySettings(host::Operator& op, const std::vector<std::string>& settings, Console& console) {
    for (const std::string& setting : settings)
        if (const std::string note = media::ApplySetting(op, setting); !note.empty()) console.Warn(note);
    for (const std::string& note : media::WithoutEffect(op, settings)) console.Warn(note);
}

} // namespace app
