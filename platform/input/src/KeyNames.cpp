#include <corvane/input/KeyNames.h>

#include <algorithm>
#include <iterator>
#include <linux/input-event-codes.h>

namespace Corvane
{

namespace
{

/// The text itself and no pointer to it: pointers are relocated in each process at each start.
struct Row {
    char name[32];
    IWindowEvent::KeyEvent::Code code;
};

constexpr Row ROWS[] = {
#include "KeyNameRows.inc"
};

} // namespace

std::optional<IWindowEvent::KeyEvent::Code> findKeyCode(std::string_view name)
{
    const Row* const row = std::ranges::find(ROWS, name, [](const Row& entry) { return std::string_view(entry.name); });
    return row != std::end(ROWS) ? std::optional(row->code) : std::nullopt;
}

std::string findKeyName(IWindowEvent::KeyEvent::Code code)
{
    // From the end: there the proper names are.
    const auto row =
        std::find_if(std::rbegin(ROWS), std::rend(ROWS), [code](const Row& row) { return row.code == code; });
    return row != std::rend(ROWS) ? std::string(row->name) : std::string();
}

} // namespace Corvane
