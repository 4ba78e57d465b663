#include <corvane/foundation/ValueObjects.h>

#include <type_traits>

namespace Corvane
{

template <class T>
std::string ValueObject<T>::getObjectType() const
{
    if constexpr (std::is_same_v<T, std::string>)
        return "StringObject";
    else if constexpr (std::is_same_v<T, unsigned int>)
        return "UInt32Object";
    else
        return "BooleanObject";
}

template class ValueObject<std::string>;
template class ValueObject<unsigned int>;
template class ValueObject<bool>;

} // namespace Corvane
