#pragma once

#include <corvane/interfaces/ISurfaceCompositing.h>
#include <string>

namespace Corvane
{

/// Compositing of windows, and who hears of its changes.
class CORVANE_EXPORT IWindowCompositing : public virtual ISurfaceCompositing
{
public:
    /// Hears of changes of any window; the index tells which one.
    class CORVANE_EXPORT IWindowCompositingListener : public virtual ISurfaceCompositingListener
    {
    public:
        virtual void onVisibilityChange(const std::string& uid, const unsigned int& index, const bool& oldVisibility,
                                        const bool& newVisibility) = 0;
        virtual void onOpacityChange(const std::string& uid, const unsigned int& index, const unsigned int& oldOpacity,
                                     const unsigned int& newOpacity) = 0;
        virtual void onZOrderChange(const std::string& uid, const unsigned int& index, const unsigned int& oldZOrder,
                                    const unsigned int& newZOrder) = 0;
        virtual void onLocationChange(const std::string& uid, const unsigned int& index, const Rect& oldLocation,
                                      const Rect& newLocation) = 0;
    };
};

} // namespace Corvane
