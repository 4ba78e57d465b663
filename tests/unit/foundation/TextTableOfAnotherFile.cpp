#include "TextTableOfAnotherFile.h"

#include <corvane/Foundation.h>

namespace Corvane::Test
{

const std::string* textTableOfAnotherFile()
{
    return RETURN_CODE_TEXTS;
}

} // namespace Corvane::Test
