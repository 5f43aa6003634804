#include "app/Commands.h"
#include "app/Describe.h"
#include "app/Listener.h"
#include "media/PlugIns.h"
#include "media/Settings.h"
#include "media/Stack.h"
#include "media/Words.h"

#include <nlohmann/json.hpp>

#include <iomanip>
#include <iostream>

namespace app {

using namespace media;
namespace {

using nlohmann::ordered_json;

/// [low, high] in words; either end may be open.
std::string RangeInWords(const ordered_json& range) {
    if (range[0].is_null()) return "up to " + Plain(range[1]);
    if (range[1].is_null()) return "from " + Plain(range[0]);
    return Plain(range[0]) + " to " + Plain(range[1]);
}

/// The values that a control takes, in words.
std::string ValuesOf(const ordered_json& control) {
    if (control["kind"] == "CheckboxControl") return "off, on";
    std::string text;
    if (control.contains("entries")) {
        int number = 0;
        for (const std::string entry : control["entries"])
            text += (text.empty() ? "" : ", ") + std::to_string(number++) + " " + Trimmed(entry);
        return text;
    }
    const ordered_json& range = control[control["shown"].is_null() ? "limits" : "shown"];
    if (!range.is_null()) text = RangeInWords(range);
    if (control["integer"] == true) text += text.empty() ? "whole" : ", whole";
    return text;
}

/// The current value, if it is not the default.
std::string Now(const ordered_json& control) {
    return control["value"] == control["default"] ? "" : " (now " + Plain(control["value"]) + ")";
}

class InfoCommand : public Command {
public:
    explicit InfoCommand(CLI::App& k7)
        : Command(k7.add_subcommand("info", "Describes a tool and its controls")) {
        AddToolName(tool_);
        AddEach("-s,--set", settings_, "CONTROL=VALUE to set first, in the order given");
        Line()->add_flag("--json", json_, "Write one object with arrays of inputs and controls");
    }

    int Run() override {
        const Stack tool({&FindTool(tool_)});
        Console console(Console::Style::Quiet, 1, 0, 0);
        ApplySettings(tool.Op(), settings_, console);
        const ordered_json info = DescribeInputs(tool.Op());
        if (json_)
            std::cout << info.dump(2) << '\n';
        else
            Print(info);
        return 0;
    }

private:
    static void Print(const ordered_json& info) {
        std::cout << std::string(info["id"]) << "  " << Trimmed(info["description"]) << "\n\nImages\n";
        for (const ordered_json& input : info["inputs"])
            std::cout << "  " << std::string(input["id"]) << (input["optional"] == true ? " (optional)" : "")
                      << '\n';
        std::string page;
        for (const ordered_json& control : info["controls"]) {
            if (control["page"] != page) std::cout << '\n' << (page = control["page"]) << '\n';
            PrintControl(control);
        }
        std::cout << "\nCommon to all tools\n";
        for (const ordered_json& control : info["common"]) PrintControl(control);
    }

    static void PrintControl(const ordered_json& control) {
        std::cout << "  " << std::left << std::setw(22) << std::string(control["id"]) << ' ' << std::setw(22)
                  << std::string(control["label"]) << ' ' << std::setw(12);
        if (control["kind"] == "Image") {
            std::cout << "none"
                      << " picture\n";
            return;
        }
        std::cout << Plain(control["default"]) << ' ' << ValuesOf(control) << Now(control)
                  << (control["hidden"] == true ? " (hidden)" : "")
                  << (control["disabled"] == true ? " (greyed)" : "") << '\n';
    }

    std::string tool_;
    std::vector<std::string> settings_;
    bool json_ = false;
};

} // namespace

std::unique_ptr<Command> MakeInfoCommand(CLI::App& k7) {
    return std::make_unique<InfoCommand>(k7);
}

} // namespace app
