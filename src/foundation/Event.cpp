#include <corvane/foundation/Event.h>

namespace Corvane
{

std::string Event::getObjectType() const
{
    return getTypeName();
}

Event::~Event() = default;

} // namespace Corvane
