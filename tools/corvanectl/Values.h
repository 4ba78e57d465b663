#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Words of the command line as JSON texts, and the other way round. What cannot be read is a UsageError.
namespace Corvanectl
{

std::string writeString(std::string_view text);

/// `{"KEY":VALUE}`
/// @param value  JSON text
std::string writeObject(const std::string& key, const std::string& value);

/// @param text  "on", "off", "true" or "false"
std::string readSwitch(const std::string& text);

/// @param text  a decimal number from 0 to `highest`
std::string readNumber(const std::string& text, unsigned int highest);

/// @param text  "X,Y,W,H", in pixels
std::string readLocation(const std::string& text);

/// @param text  a lifecycle state, in capital letters or not
std::string readState(const std::string& text);

/// The parameters of any call, from words of the form KEY=VALUE. A value that is no JSON text is a string.
std::string readParameters(const std::vector<std::string>& words);

/// The parameters of any call from one text, which must be a JSON object.
std::string readParameterObject(const std::string& text);

/// A value of one of the kinds that the functions above read, as they read it: "on", "128", "0,0,1280,720", "RUNNING".
/// @param value  JSON text
std::string showSwitch(const std::string& value);
std::string showPlain(const std::string& value);
std::string showLocation(const std::string& value);

} // namespace Corvanectl
