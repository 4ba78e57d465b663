#include <corvane/foundation/Exception.h>

#include <algorithm>
#include <corvane/Foundation.h>
#include <cstddef>
#include <iterator>

namespace Corvane
{

Exception::Exception(ReturnCode const& code) : code(code) {}

Exception::Exception(Exception const& other) : code(other.code) {}

Exception::~Exception() = default;

ReturnCode Exception::getCode() const
{
    return code;
}

const char* Exception::what() const
{
    const std::size_t last = std::size(RETURN_CODE_TEXTS) - 1;
    return RETURN_CODE_TEXTS[std::min<std::size_t>(code, last)].c_str();
}

} // namespace Corvane
