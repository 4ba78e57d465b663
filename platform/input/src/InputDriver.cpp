#include <corvane/input/InputDriver.h>

namespace Corvane
{

template class Singleton<InputDriver>;

InputDriver::~InputDriver() = default;

} // namespace Corvane
