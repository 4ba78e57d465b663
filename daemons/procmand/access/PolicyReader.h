#pragma once

#include "access/Policy.h"

#include <simdjson.h>

namespace Procmand
{

/// Reads the text of a policy file. What it does not know is an error: a word that is misspelt must not change who may
/// do what.
class PolicyReader
{
public:
    /// @throws std::runtime_error  tells what is wrong
    Policy read(const std::string& text);

private:
    using Element = simdjson::dom::element;

    void readRule(const Element& element);
    bool readSubject(std::string_view key, const Element& value, Policy::Subject& subject) const;
    static std::map<std::string, bool, std::less<>> readMethods(const Element& value);

    Policy policy;
};

} // namespace Procmand
