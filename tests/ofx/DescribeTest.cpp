#include "tests/ofx/Bundle.h"

#include "host/Operator.h"
#include "tests/tools/Stage.h"

#include <chrono>
#include <fstream>
#include <set>

namespace k7::test::ofx {
namespace {

using Texts = std::vector<std::string>;

Texts All(const PropertySet& set, const std::string& name) {
    Texts texts;
    for (std::size_t i = 0; i < set.Count(name); ++i) texts.push_back(set.Of(name, std::string(), i));
    return texts;
}

TEST(OfxDescribe, HasEachToolOfTheRegistryInItsOrder) {
    const auto tools = Tools();
    ASSERT_EQ(tools.size(), Plugins().size());
    for (std::size_t i = 0; i < tools.size(); ++i) {
        const PluginStruct& plugin = *Plugins()[i];
        EXPECT_EQ("k7.effects." + std::string(tools[i]->Id().Text()).substr(3), plugin.identifier);
        EXPECT_STREQ("OfxImageEffectPluginAPI", plugin.api);
        EXPECT_EQ(1, plugin.apiVersion);
        EXPECT_EQ(5u, plugin.major);
    }
}

TEST(OfxDescribe, DescribesWhatTheStandardRequires) {
    Opened opened;
    for (PluginStruct* plugin : Plugins()) {
        SCOPED_TRACE(plugin->identifier);
        const auto effect = opened.Describe(plugin, "OfxImageEffectContextFilter");
        const PropertySet& told = effect->properties;
        EXPECT_EQ("K7 " + std::string(plugin->identifier).substr(11), told.Of("OfxPropLabel", std::string()));
        EXPECT_EQ("K7", told.Of("OfxImageEffectPluginPropGrouping", std::string()));
        EXPECT_EQ((Texts{"OfxImageEffectContextFilter", "OfxImageEffectContextGeneral"}),
                  All(told, "OfxImageEffectPropSupportedContexts"));
        EXPECT_EQ((Texts{"OfxBitDepthByte", "OfxBitDepthShort", "OfxBitDepthFloat", "OfxBitDepthHalf"}),
                  All(told, "OfxImageEffectPropSupportedPixelDepths"));
        EXPECT_EQ("OfxImageEffectRenderInstanceSafe",
                  told.Of("OfxImageEffectPluginRenderThreadSafety", std::string()));
        EXPECT_EQ(0, told.Of("OfxImageEffectPropSupportsTiles", 1));
        EXPECT_EQ(1, told.Of("OfxImageEffectPropSupportsMultiResolution", 0));
        ASSERT_TRUE(effect->FindClip("Source") && effect->FindClip("Output"));
        for (const auto& clip : effect->clips) {
            EXPECT_EQ((Texts{"OfxImageComponentRGBA", "OfxImageComponentRGB"}),
                      All(clip->properties, "OfxImageEffectPropSupportedComponents"));
            EXPECT_EQ(clip->name != "Source" && clip->name != "Output",
                      clip->properties.Of("OfxImageClipPropOptional", 0) == 1)
                << clip->name;
            EXPECT_EQ(clip->name == "EffectMask", clip->properties.Of("OfxImageClipPropIsMask", 0) == 1);
        }
    }
}

/// The full range contains the shown one, and both the default.
void ExpectRanges(const Param& param) {
    const PropertySet& p = param.properties;
    const std::size_t axes = param.kind == "Double2D" ? 2 : 1;
    for (std::size_t i = 0; i < axes; ++i) {
        const auto get = [&](const char* name) {
            EXPECT_LT(i, p.Count(name)) << name;
            return param.kind == "Integer" ? p.Of(name, 0, i) : p.Of(name, 0.0, i);
        };
        const double standard = get("OfxParamPropDefault");
        EXPECT_LE(get("OfxParamPropMin"), get("OfxParamPropDisplayMin"));
        EXPECT_LT(get("OfxParamPropDisplayMin"), get("OfxParamPropDisplayMax"));
        EXPECT_LE(get("OfxParamPropDisplayMax"), get("OfxParamPropMax"));
        EXPECT_TRUE(get("OfxParamPropMin") <= standard && standard <= get("OfxParamPropMax"));
    }
}

TEST(OfxDescribe, ParametersAreThoseOfTheTool) {
    Opened opened;
    for (host::Registry* tool : Tools()) {
        const std::string name = std::string(tool->Id().Text()).substr(3);
        SCOPED_TRACE(name);
        const auto effect = opened.Describe(FindPlugin(name), "OfxImageEffectContextGeneral");
        std::size_t values = 0, hints = 0;
        for (const auto& param : effect->params) {
            SCOPED_TRACE(param->name);
            EXPECT_EQ(std::string::npos,
                      param->name.find_first_not_of("abcdefghijklmnopqrstuvwxyz"
                                                    "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"));
            const PropertySet& p = param->properties;
            EXPECT_FALSE(p.Of("OfxPropLabel", std::string()).empty());
            hints += p.Count("OfxParamPropHint");
            const std::string parent = p.Of("OfxParamPropParent", std::string());
            EXPECT_TRUE(parent.empty() || effect->FindParam(parent)->kind == "Group");
            for (const std::string& child : All(p, "OfxParamPropPageChild"))
                EXPECT_TRUE(effect->FindParam(child));
            if (param->kind == "Integer" || param->kind == "Double" || param->kind == "Double2D")
                ExpectRanges(*param);
            EXPECT_EQ(param->kind == "Choice", p.Count("OfxParamPropChoiceOption") > 1);
            if (param->kind != "Group" && param->kind != "Page") values += param->kind == "RGB" ? 3 : 1;
        }
        // Each number, point and text of the tool; its depth switch appears inverted.
        const host::Ref<host::Operator> op(tool->NewOperator(nullptr));
        std::size_t settings = 0;
        for (const host::Input* input : op->Inputs())
            settings += input->DataType() != host::Input::Type::Image;
        EXPECT_EQ(settings, values);
        EXPECT_GE(hints, 3u);
        EXPECT_TRUE(effect->FindParam("Words15"));
    }
}

TEST(OfxDescribe, OpensTwelveWithinATenthOfASecond) {
    const auto start = std::chrono::steady_clock::now();
    Opened opened;
    for (PluginStruct* plugin : Plugins()) opened.Describe(plugin, "OfxImageEffectContextGeneral");
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    RecordProperty("milliseconds", static_cast<int>(1000 * took.count()));
#if defined(NDEBUG) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(took.count(), 0.1);
#endif
}

} // namespace
} // namespace k7::test::ofx
