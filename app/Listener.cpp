#include "app/Listener.h"

#include "media/Settings.h"

namespace app {

void ApplySettings(host::Operator& op, const std::vector<std::string>& settings, Console& console,
                   bool named) {
    const std::string tool = named ? op.Name + ": " : "";
    for (const std::string& setting : settings)
        if (const std::string note = media::ApplySetting(op, setting); !note.empty())
            console.Warn(tool + note);
    for (const std::string& note : media::WithoutEffect(op, settings)) console.Warn(tool + note);
}

} // namespace app
