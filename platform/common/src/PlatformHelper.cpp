#include <corvane/common/PlatformHelper.h>

namespace Corvane
{

template class Singleton<PlatformHelper>;

namespace
{

/// The helpers that were made while there was an instance. Nobody frees them: the Singleton's rule leaves them alone.
PlatformHelper* firstFurther = nullptr;

} // namespace

PlatformHelper::PlatformHelper(const std::string& token) : token(token)
{
    const std::lock_guard<Mutex> guard(singletonMutex);
    if (instance != nullptr) {
        nextFurther = firstFurther;
        firstFurther = this;
        return;
    }
    references = 1;
    instance = this;
}

PlatformHelper::~PlatformHelper() = default;

void PlatformHelper::startHelper() noexcept {}

} // namespace Corvane
