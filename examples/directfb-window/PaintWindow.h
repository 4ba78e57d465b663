#pragma once

#include "Screen.h"
#include <corvane/DFBCursor.h>
#include <corvane/DFBInputSink.h>
#include <corvane/Window.h>
#include <mutex>
#include <string>

/// A window to paint in: a mouse button leaves a dot, the coloured keys of a remote control choose its colour.
///
/// Input events arrive on the input driver's thread and on that of the control server. They go into the event buffer,
/// and the main thread reads them from there, as any user interface on DirectFB does. One mutex is for all that the
/// threads share: the surface, the mouse pointer and the files.
class PaintWindow : public Corvane::Window
{
public:
    /// @param picture  file that gets what the screen shows, after every change; "" for none
    PaintWindow(int argc, char** argv, Screen& screen, std::string picture);
    ~PaintWindow() override;

    std::string getTitle() const override { return "Paint"; }
    void init() override;
    /// Reads the event buffer until the state is a terminated one. Keep-alives have a thread of their own then.
    void run() override;
    bool runsInMain() override { return true; }
    void terminate() override { setState(STATE_TERMINATED); }

    bool handleEvent(const Corvane::Event& event) override;
    void handleFocus(bool focus) override;
    void onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState) override;

    void bringToFront() override { window->RaiseToTop(window.get()); }
    void sendToBack() override { window->LowerToBottom(window.get()); }
    void bringForward() override { window->Raise(window.get()); }
    void sendBackward() override { window->Lower(window.get()); }

private:
    void createWindow();
    void createPointer();
    bool isTerminated();
    void take(const DFBInputEvent& event);
    void clear();
    void paintDot();
    void show();

    Screen& screen;
    const std::string picture;
    Owned<IDirectFBWindow> window;
    Owned<IDirectFBSurface> surface;
    Corvane::DFBInputSink sink;
    Corvane::DFBCursor pointer;
    std::mutex mutex;
    int x = 0; ///< where the mouse is, in the window
    int y = 0;
    bool pressed = false;
    DFBColor colour{0xFF, 0xE0, 0xE0, 0xE0};
};
