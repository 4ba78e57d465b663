#pragma once

#include <corvane/Window.h>

namespace Corvane::Test
{

/// The least that makes a Window a class of objects.
class PlainWindow : public Window
{
public:
    using Window::Window;
    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}
    std::string getTitle() const override { return "plain"; }
};

} // namespace Corvane::Test
