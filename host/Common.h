#pragma once

#include "host/Image.h"
#include "host/Object.h"

namespace host {

class Input;
class Operator;
class Request;

/// What a compositor adds to every tool: a blend with the source, a mask, check boxes for the channels, and
/// division by alpha before the tool with multiplication after it. Their inputs are on a page of their own
/// after the tool's; the tool knows nothing of them.
class CommonControls {
public:
    /// Adds the inputs, after all of the tool's own.
    explicit CommonControls(Operator& op);

    /// Renders a frame of the tool and mixes it with its main picture. At their defaults the output is the
    /// tool's own picture. If nothing of it would be visible the tool does not run, and the output is the
    /// main picture, unless the tool's class says that its frames write controls.
    void Render(Request& request);

private:
    struct Settings {
        double blend;
        bool process[4]; ///< red, green, blue, alpha
        bool divide;
        bool inverted;
        int channel; ///< entry of the list, from 0
    };

    Input* AddCheck(const char* label, const char* id, bool on);
    double Number(Request& request, Input* input) const;
    Settings Read(Request& request) const;
    Image* Divided(Image* picture, double time) const;

    Operator& operator_;
    Input* main_ = nullptr; ///< the tool's main picture; null if it has none
    Input* blend_;
    Input* mask_;
    Input* channel_;
    Input* inverted_;
    Input* process_[4];
    Input* divide_;
};

} // namespace host
