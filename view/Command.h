#pragma once

#include "view/Layer.h"

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

namespace view {

/// The value, or the keys, of a number or point as the command line takes them.
std::string CurveText(const host::Input& input, const host::Curve& curve);

/// `CONTROL=VALUE` words that bring a new instance of the tool to the values of this one, carried out in
/// their order with its reactions.
std::vector<std::string> SettingsFor(const host::Operator& op);

/// Shows, hides and greys controls as the tool's reactions would have it: after values came without them.
void ShowAsValuesSay(host::Operator& op);

/// The words behind `k7` that render the tools that are on as they are set. An empty `frames` stands for all.
/// Throws media::UsageError where no tool is on.
QStringList RenderWords(const std::string& clip, const std::vector<Layer>& layers, const QString& output,
                        const QString& frames);

/// A line for a shell; words are quoted where they have to be.
QString ShellLine(const QStringList& words);

} // namespace view
