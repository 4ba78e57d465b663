#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/interfaces/IApplication.h>
#include <corvane/interfaces/IWindowCompositing.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <string>

namespace Corvane
{

/// A window application as its managers see it.
///
/// The forms that take the uid of the caller are the ones for remote use; they ignore it and call the plain form. The
/// forms that take a surface index ignore the index, for a window is one surface, and call the form with an empty uid.
class CORVANE_EXPORT IWindow : public virtual IApplication,
                               public virtual IWindowCompositing,
                               public virtual IWindowEvent
{
public:
    virtual void handleFocus(const std::string& /*uid*/, bool focus) { handleFocus(focus); }
    virtual bool isFocused(const std::string& /*uid*/) { return isFocused(); }
    virtual bool handleEvent(const std::string& /*uid*/, const Event& event) { return handleEvent(event); }
    virtual void setVisibility(const std::string& /*uid*/, bool visibility) { setVisibility(visibility); }
    virtual bool getVisibility(const std::string& /*uid*/) { return getVisibility(); }
    virtual void setOpacity(const std::string& /*uid*/, unsigned int opacity) { setOpacity(opacity); }
    virtual unsigned int getOpacity(const std::string& /*uid*/) { return getOpacity(); }
    virtual void setZOrder(const std::string& /*uid*/, unsigned int zOrder) { setZOrder(zOrder); }
    virtual unsigned int getZOrder(const std::string& /*uid*/) { return getZOrder(); }
    virtual void setLocation(const std::string& /*uid*/, const Rect& location) { setLocation(location); }
    virtual Rect getLocation(const std::string& /*uid*/) { return getLocation(); }
    virtual void bringToFront(const std::string& /*uid*/) { bringToFront(); }
    virtual void sendToBack(const std::string& /*uid*/) { sendToBack(); }
    virtual void bringForward(const std::string& /*uid*/) { bringForward(); }
    virtual void sendBackward(const std::string& /*uid*/) { sendBackward(); }

    void setVisibility(const unsigned int& /*index*/, bool visibility) override
    {
        setVisibility(std::string(), visibility);
    }
    bool getVisibility(const unsigned int& /*index*/) override { return getVisibility(std::string()); }
    void setOpacity(const unsigned int& /*index*/, unsigned int opacity) override
    {
        setOpacity(std::string(), opacity);
    }
    unsigned int getOpacity(const unsigned int& /*index*/) override { return getOpacity(std::string()); }
    void setZOrder(const unsigned int& /*index*/, unsigned int zOrder) override { setZOrder(std::string(), zOrder); }
    unsigned int getZOrder(const unsigned int& /*index*/) override { return getZOrder(std::string()); }
    void setLocation(const unsigned int& /*index*/, const Rect& location) override
    {
        setLocation(std::string(), location);
    }
    Rect getLocation(const unsigned int& /*index*/) override { return getLocation(std::string()); }
    void bringToFront(const unsigned int& /*index*/) override { bringToFront(std::string()); }
    void sendToBack(const unsigned int& /*index*/) override { sendToBack(std::string()); }
    void bringForward(const unsigned int& /*index*/) override { bringForward(std::string()); }
    void sendBackward(const unsigned int& /*index*/) override { sendBackward(std::string()); }

    virtual void handleFocus(bool focus) = 0;
    virtual bool isFocused() = 0;
    /// @return whether the window used the event
    virtual bool handleEvent(const Event& event) = 0;
    virtual void setVisibility(bool visibility) = 0;
    virtual bool getVisibility() = 0;
    virtual void setOpacity(unsigned int opacity) = 0;
    virtual unsigned int getOpacity() = 0;
    virtual void setZOrder(unsigned int zOrder) = 0;
    virtual unsigned int getZOrder() = 0;
    virtual void setLocation(const Rect& location) = 0;
    virtual Rect getLocation() = 0;
    virtual void bringToFront() = 0;
    virtual void sendToBack() = 0;
    virtual void bringForward() = 0;
    virtual void sendBackward() = 0;

    /// Hears of everything that happens to one window. The forms with an index, which the compositor calls, drop it.
    class CORVANE_EXPORT IWindowListener : public virtual IApplicationListener,
                                           public virtual IWindowCompositingListener,
                                           public virtual IWindowEventListener
    {
    public:
        virtual void onVisibilityChange(const std::string& uid, const bool& oldVisibility,
                                        const bool& newVisibility) = 0;
        virtual void onOpacityChange(const std::string& uid, const unsigned int& oldOpacity,
                                     const unsigned int& newOpacity) = 0;
        virtual void onZOrderChange(const std::string& uid, const unsigned int& oldZOrder,
                                    const unsigned int& newZOrder) = 0;
        virtual void onLocationChange(const std::string& uid, const Rect& oldLocation, const Rect& newLocation) = 0;

        void onVisibilityChange(const std::string& uid, const unsigned int& /*index*/, const bool& oldVisibility,
                                const bool& newVisibility) override
        {
            onVisibilityChange(uid, oldVisibility, newVisibility);
        }
        void onOpacityChange(const std::string& uid, const unsigned int& /*index*/, const unsigned int& oldOpacity,
                             const unsigned int& newOpacity) override
        {
            onOpacityChange(uid, oldOpacity, newOpacity);
        }
        void onZOrderChange(const std::string& uid, const unsigned int& /*index*/, const unsigned int& oldZOrder,
                            const unsigned int& newZOrder) override
        {
            onZOrderChange(uid, oldZOrder, newZOrder);
        }
        void onLocationChange(const std::string& uid, const unsigned int& /*index*/, const Rect& oldLocation,
                              const Rect& newLocation) override
        {
            onLocationChange(uid, oldLocation, newLocation);
        }
    };

    class CORVANE_EXPORT IWindowNotifier : public virtual IObservable, public virtual IWindowListener
    {
    };
};

} // namespace Corvane
