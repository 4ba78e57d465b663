#pragma once

#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/Serializer.h>
#include <corvane/interfaces/ISurfaceCompositing.h>
#include <corvane/interfaces/ISurfaceManagement.h>
#include <functional>
#include <string>
#include <vector>

namespace Procmand
{

/// One window of the box.
struct WindowState {
    unsigned int index = 0; ///< never 0 for a window
    std::string uid;        ///< of its application
    bool visibility = true;
    unsigned int opacity = 255; ///< 0 to 255
    unsigned int zOrder = 0;
    Corvane::ISurfaceCompositing::Rect location{0, 0, 0, 0};
    std::string label{}; ///< which application that is, for people; in what a compositor gets only

    void serialize(Corvane::Serializer& serializer) const;
    static WindowState read(Corvane::Deserializer& deserializer);
};

/// The windows of the box, from the back to the front.
///
/// The stack is ordered by z-order; of windows with the same one, the one that got it last is in front. The stacking
/// operations give a window a z-order beyond the others', as far as numbers go; at the end of the numbers windows share
/// one and their order alone differs. An index is not used again for another window. Not synchronised.
class WindowStack
{
public:
    using Rect = Corvane::ISurfaceCompositing::Rect;

    explicit WindowStack(std::size_t limit);

    bool isFull() const { return windows.size() >= limit; }
    /// Adds a window in front of those with the same z-order. The stack must not be full.
    const WindowState& add(const std::string& uid, const Corvane::ISurfaceManagement::CreationSettings& settings);
    /// Adds a window as it was, on top of the others that are as they were.
    void restore(WindowState window);
    void remove(unsigned int index);
    /// @return null for an index that is not used
    const WindowState* find(unsigned int index) const;
    /// From the back to the front.
    const std::vector<WindowState>& getWindows() const { return windows; }
    std::vector<unsigned int> findIndices(const std::string& uid) const;

    /// The operations on one window throw std::out_of_range for an index that is not used.
    void setVisibility(unsigned int index, bool visibility);
    /// @param opacity  what is above 255 counts as 255
    void setOpacity(unsigned int index, unsigned int opacity);
    void setLocation(unsigned int index, const Rect& location);
    /// A window that has the z-order already keeps its place.
    void setZOrder(unsigned int index, unsigned int zOrder);
    void bringToFront(unsigned int index);
    void sendToBack(unsigned int index);
    /// Puts a window behind those of these applications that have the same z-order.
    void putBehind(unsigned int index, const std::vector<std::string>& uids);
    /// The window changes places, and z-orders, with the one in front of it.
    void bringForward(unsigned int index);
    void sendBackward(unsigned int index);

private:
    using Position = std::vector<WindowState>::iterator;

    Position require(unsigned int index);
    void insert(WindowState window);

    const std::size_t limit;
    unsigned int lastIndex = 0;
    std::vector<WindowState> windows;
};

} // namespace Procmand
