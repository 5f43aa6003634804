#include "app/Commands.h"
#include "app/Describe.h"
#include "host/Tags.h"
#include "media/PlugIns.h"
#include "media/Words.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <iostream>

namespace app {

using namespace media;
namespace {

class ListCommand : public Command {
public:
    explicit ListCommand(CLI::App& k7) : Command(k7.add_subcommand("list", "Lists all tools")) {
        Line()->add_flag("--json", json_, "Write an array with an object for each tool");
    }

    int Run() override {
        nlohmann::ordered_json tools = nlohmann::ordered_json::array();
        for (const host::Registry* tool : Tools()) {
            if (json_)
                tools.push_back(DescribeTool(*tool));
            else
                std::printf("%-10s %s\n", PlainName(*tool).c_str(),
                            Trimmed(tool->GetAttrS(host::kTagRegDescription)).c_str());
        }
        if (json_) std::cout << tools.dump(2) << '\n';
        return 0;
    }

private:
    bool json_ = false;
};

} // namespace

std::unique_ptr<Command> MakeListCommand(CLI::App& k7) {
    return std::make_unique<ListCommand>(k7);
}

} // namespace app
