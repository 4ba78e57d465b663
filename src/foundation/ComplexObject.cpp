#include <corvane/foundation/ComplexObject.h>

namespace Corvane
{

void ComplexObject::init() {}

ComplexObject::~ComplexObject() = default;

} // namespace Corvane
