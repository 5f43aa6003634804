#pragma once

#include "view/Look.h"

#include <nlohmann/json_fwd.hpp>

namespace view {

/// The tools with their controls as `k7 render --save-settings` writes them; one that is switched off has
/// "on": false besides.
nlohmann::ordered_json SavedLook(const Look& look);

/// Takes the tools and controls that SavedLook or k7 gave, as one step with a title. Where tools stay, so do
/// their files. Throws media::UsageError, and leaves the look as it was.
void TakeSavedLook(Look& look, const nlohmann::json& saved, const QString& title);

/// Gives the chosen tool the controls of a saved one of its class, as one step. Throws media::UsageError.
void TakeStyle(Look& look, const nlohmann::json& saved, const QString& title);

/// As SavedLook, with the clip and the files of all inputs: what is kept for the case that the program is
/// killed.
nlohmann::ordered_json SavedWork(const Look& look, const std::string& clip);
/// Takes what SavedWork gave, but for the clip, which is returned.
std::string TakeSavedWork(Look& look, const nlohmann::json& saved, const QString& title);

} // namespace view
