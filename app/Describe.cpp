#include "app/Describe.h"

#include "host/Tags.h"
#include "media/Settings.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace app {

using namespace media;
namespace {

using host::Input;
using nlohmann::ordered_json;

/// [low, high], or null if the input has no such range.
ordered_json Range(const Input& input, host::Tag low, host::Tag high) {
    if (!input.HasAttr(low) && !input.HasAttr(high)) return nullptr;
    const auto end = [&](host::Tag tag) {
        return input.HasAttr(tag) ? ordered_json(input.GetAttrD(tag)) : ordered_json();
    };
    return {end(low), end(high)};
}

ordered_json Default(const Input& input) {
    switch (input.DataType()) {
    case Input::Type::Point:
        return {input.GetAttrD(host::kTagDefaultX), input.GetAttrD(host::kTagDefaultY)};
    case Input::Type::Text:
        return input.GetAttrS(host::kTagDefaultText);
    default:
        return input.GetAttrD(host::kTagDefault);
    }
}

ordered_json DescribeImage(const Input& input) {
    return {{"id", input.Id()},
            {"label", input.Name()},
            {"kind", "Image"},
            {"link", input.GetAttrI(host::kTagMainLink)},
            {"optional", input.HasAttr(host::kTagOptional)}};
}

/// The tool's own pages, without the one of the common controls.
std::vector<std::string> PagesOf(const host::Operator& op) {
    std::vector<std::string> pages = op.Pages();
    for (const Input* input : op.Inputs())
        if (input->HasAttr(host::kTagCommon) && input->HasAttr(host::kTagPage))
            pages.resize(static_cast<std::size_t>(input->GetAttrI(host::kTagPage)));
    return pages;
}

ordered_json DescribeControl(const host::Operator& op, const Input& input) {
    ordered_json control = {{"id", input.Id()},
                            {"label", input.Name()},
                            {"type", input.GetAttrS(host::kTagDataType)},
                            {"kind", input.GetAttrS(host::kTagControlKind)},
                            {"default", Default(input)},
                            {"value", SavedValue(input)},
                            {"shown", Range(input, host::kTagShownLow, host::kTagShownHigh)},
                            {"limits", Range(input, host::kTagLowest, host::kTagHighest)},
                            {"integer", input.GetAttrI(host::kTagInteger) != 0},
                            {"page", op.Pages().at(static_cast<std::size_t>(input.GetAttrI(host::kTagPage)))},
                            {"hidden", input.GetAttrI(host::kTagShown, 1) == 0},
                            {"disabled", input.GetAttrI(host::kTagDisabled) != 0}};
    if (input.HasAttr(host::kTagEntry)) control["entries"] = input.GetAttrList(host::kTagEntry);
    if (input.HasAttr(host::kTagColourLabel)) control["colour"] = input.GetAttrS(host::kTagColourLabel);
    return control;
}

} // namespace

ordered_json DescribeTool(const host::Registry& tool) {
    return {{"id", tool.Id().Text()},
            {"number", tool.GetAttrI(host::kTagRegNumber)},
            {"name", tool.GetAttrS(host::kTagRegName)},
            {"short_name", tool.GetAttrS(host::kTagRegShortName)},
            {"category", tool.GetAttrS(host::kTagRegCategory)},
            {"description", tool.GetAttrS(host::kTagRegDescription)},
            {"help", tool.GetAttrS(host::kTagRegHelp)},
            {"maker", tool.GetAttrS(host::kTagRegMaker)},
            {"web", tool.GetAttrS(host::kTagRegWeb)},
            {"version", tool.GetAttrS(host::kTagRegVersion)}};
}

ordered_json DescribeInputs(const host::Operator& op) {
    ordered_json tool = DescribeTool(*op.Class());
    tool["pages"] = PagesOf(op);
    tool["inputs"] = ordered_json::array();
    tool["controls"] = ordered_json::array();
    tool["common"] = ordered_json::array();
    for (const Input* input : op.Inputs()) {
        const bool common = input->HasAttr(host::kTagCommon);
        if (IsControl(*input))
            tool[common ? "common" : "controls"].push_back(DescribeControl(op, *input));
        else
            tool[common ? "common" : "inputs"].push_back(DescribeImage(*input));
    }
    return tool;
}

std::string Plain(const ordered_json& value) {
    if (value.is_string()) return value;
    if (value.is_array()) {
        std::string text;
        for (const ordered_json& item : value) {
            if (!text.empty()) text += ',';
            text += Plain(item);
        }
        return text;
    }
    if (!value.is_number()) return value.dump();
    char number[32];
    std::snprintf(number, sizeof number, "%g", value.get<double>());
    return number;
}

} // namespace app
