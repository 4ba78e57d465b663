#include "TaskState.h"

#include <fstream>
#include <string>

namespace Corvane::Test
{

char readTaskState(const std::filesystem::path& folder)
{
    std::ifstream file(folder / "stat");
    std::string text;
    std::getline(file, text);
    // The name before it stands in parentheses, and may contain anything.
    const std::size_t end = text.rfind(") ");
    return end == text.npos ? '\0' : text[end + 2];
}

} // namespace Corvane::Test
