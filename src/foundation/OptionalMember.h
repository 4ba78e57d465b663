#pragma once

#include <corvane/foundation/Deserializer.h>
#include <string>

namespace Corvane
{

/// Reads the member `key` of the current object as a T, where there is one. @return it, else `fallback`
/// @throws SerialError  there is one, but it is no T
template <class T>
T deserializeOptional(const std::string& key, const T& fallback, Deserializer& deserializer)
{
    return deserializer.hasMember(key) ? deserialize<T>(key, deserializer) : fallback;
}

} // namespace Corvane
