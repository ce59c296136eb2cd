// Settings of the recogniser given as text, NAME=VALUE.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "tessera/recognition/SketchRecognizerPreferences.h"

namespace Tessera::Tool {

/// An unknown name, a text that is not a value of the setting's kind, or a value that the setter refuses
/// (then the text is the setter's message).
class PreferenceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Sets one field of the preferences. NAME is the field's getter, with or without its "Ask" or "Get"; arrays
/// are lists of numbers separated by commas, switches are true or false.
void SetPreference(Geometry::SketchRecognizerPreferences& preferences, const std::string& assignment);

/// "AskTangentAngleThreshold=50" for every field, in the order of the record: names and default values.
std::vector<std::string> ListPreferences();

} // namespace Tessera::Tool
