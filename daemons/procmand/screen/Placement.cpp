#include "screen/Placement.h"

namespace Procmand
{

using CreationSettings = Corvane::ISurfaceManagement::CreationSettings;

std::optional<Placement> Placement::find(const std::vector<WindowState>& windows, const std::string& uid)
{
    auto found = windows.end();
    for (auto window = windows.begin(); window != windows.end(); ++window)
        if (window->uid == uid && (found == windows.end() || window->index < found->index))
            found = window;
    if (found == windows.end())
        return std::nullopt;
    Placement placement(*found);
    while (++found != windows.end() && found->zOrder == placement.window.zOrder)
        placement.front.push_back(found->uid);
    return placement;
}

CreationSettings Placement::apply(const CreationSettings& settings) const
{
    return {settings.getSessionIndex(), window.location, window.zOrder, window.opacity, settings.getVisibility()};
}

void Placement::serialize(const std::string& key, Corvane::Serializer& serializer) const
{
    serializer.beginObject(key);
    window.serialize(serializer);
    // As the members "0", "1" and so on, for the deserializer knows no arrays.
    serializer.beginObject("front");
    for (std::size_t i = 0; i < front.size(); ++i)
        serializer.writeString(std::to_string(i), front[i]);
    serializer.endObject("front");
    serializer.endObject(key);
}

Placement::Placement(Corvane::Deserializer& deserializer) : window(WindowState::read(deserializer))
{
    deserializer.enterMember("front");
    for (std::size_t i = 0; i < deserializer.getMemberCount(); ++i)
        front.push_back(deserializer.readString(std::to_string(i)));
    deserializer.leaveMember("front");
}

} // namespace Procmand
