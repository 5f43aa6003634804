#pragma once

#include "host/Input.h"
#include "host/Operator.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace media {

/// True for an input that is a setting, not an image.
bool IsControl(const host::Input& input);

/// The name of a control in commands: its id, or its label if it has none.
const std::string& KeyOf(const host::Input& control);

/// A control by its id or, failing that, its label, in any case. Throws UsageError with the nearest name.
host::Input& FindControl(const host::Operator& op, const std::string& name);

/// The value, or keys, that a text stands for: a number; `x,y` for a point; the number or the text of a
/// list's entry; `on`, `off` or a number for a check box; `@frame:value,frame:value` or
/// `@frame:x,y;frame:x,y` for keys. Throws UsageError. Not for text controls.
host::Curve ParseCurve(const host::Input& control, const std::string& text);

/// Carries out `CONTROL=VALUE` as a change by the user, so that the tool reacts. Throws UsageError. Returns
/// what the control makes of the value if it does not take it unchanged; otherwise empty.
std::string ApplySetting(host::Operator& op, const std::string& setting);

/// Those controls of a list of `CONTROL=VALUE` that currently have no effect, being hidden or greyed.
std::vector<std::string> WithoutEffect(const host::Operator& op, const std::vector<std::string>& settings);

/// All controls with their keys: {"tool": id, "controls": {key: value}}, where a value is a number, a text,
/// [x, y], or {"keys": [[frame, number or x and y], ...]}.
nlohmann::ordered_json SaveSettings(const host::Operator& op);

/// The value of one control, or its keys, as SaveSettings writes it.
nlohmann::ordered_json SavedValue(const host::Input& control);

/// Gives a tool the values and keys of another of its class. The tool does not react.
void CopySettings(const host::Operator& from, host::Operator& to);

/// Multiplies a tool's lengths in pixels, as for pictures of another size. The tool does not react.
void ScaleLengths(host::Operator& op, double factor);

/// Restores what SaveSettings returned. The tool does not react, so every value ends as it was saved. Throws
/// UsageError.
void RestoreSettings(host::Operator& op, const nlohmann::json& saved);

} // namespace media
