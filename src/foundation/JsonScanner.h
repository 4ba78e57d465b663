#pragma once

#include <string_view>

namespace Corvane
{

/// Walks over a JSON text without decoding it, to find where its values begin and end. It checks nothing, so the text
/// has to be valid for the answers to mean anything; on any other text it stays within the text all the same.
class JsonScanner
{
public:
    explicit JsonScanner(std::string_view text) : rest(text) {}

    /// Goes to the first member or element of the object or array that is next.
    void enter();
    /// Takes what is next: a value, or the name of a member. @return it as it stands in the text, without white space
    std::string_view next();
    /// @return what is behind the last value taken
    std::string_view getRest() const { return rest; }

private:
    void skipSeparators();

    std::string_view rest;
};

} // namespace Corvane
