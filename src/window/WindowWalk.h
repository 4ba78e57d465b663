#pragma once

#include <corvane/Window.h>

#include "../application/ListenerWalk.h"

namespace Corvane
{

template <class Call>
void Window::tellWindowListeners(Call call)
{
    walkListeners(windowMutex, windowListeners, listenersChanged, call);
}

} // namespace Corvane
