#include "PaintWindow.h"

#include <corvane/foundation/Exception.h>
#include <iostream>

PaintWindow::PaintWindow(int argc, char** argv, Screen& screen, std::string picture)
    : Window(argc, argv),
      screen(screen),
      picture(std::move(picture)),
      sink(screen.getDirectFB()),
      pointer(screen.getDirectFB(), screen.getLayer(), true)
{
    createWindow();
    createPointer();
}

PaintWindow::~PaintWindow()
{
    cursor = nullptr;
}

void PaintWindow::createWindow()
{
    const auto location = getLocation();
    DFBWindowDescription description{};
    description.flags =
        static_cast<DFBWindowDescriptionFlags>(DWDESC_WIDTH | DWDESC_HEIGHT | DWDESC_POSX | DWDESC_POSY);
    description.posx = location.getX();
    description.posy = location.getY();
    description.width = location.getWidth();
    description.height = location.getHeight();
    IDirectFBDisplayLayer* layer = screen.getLayer();
    IDirectFBWindow* createdWindow = nullptr;
    require(layer->CreateWindow(layer, &description, &createdWindow), "CreateWindow");
    window.reset(createdWindow);
    IDirectFBSurface* windowSurface = nullptr;
    require(window->GetSurface(window.get(), &windowSurface), "GetSurface");
    surface.reset(windowSurface);
    clear();
    require(window->SetOpacity(window.get(), 0xFF), "SetOpacity");
}

void PaintWindow::createPointer()
{
    try {
        pointer.init();
        require(screen.getLayer()->EnableCursor(screen.getLayer(), 1), "EnableCursor");
        cursor = &pointer; // from now on the window moves and shows it
    } catch (const Corvane::Exception&) {
        std::cout << "no mouse pointer: its picture /usr/local/etc/cursor.png is not there or is bad" << std::endl;
    }
}

void PaintWindow::init()
{
    Window::init();
    setState(STATE_RUNNING);
    const std::lock_guard guard(mutex);
    show();
}

void PaintWindow::run()
{
    IDirectFBEventBuffer* buffer = sink.getEventBuffer();
    while (!isTerminated()) {
        require(buffer->WaitForEvent(buffer), "WaitForEvent");
        const std::lock_guard guard(mutex);
        for (DFBEvent event; buffer->GetEvent(buffer, &event) == DFB_OK;)
            if (event.clazz == DFEC_INPUT)
                take(event.input);
        // A press is in the buffer before the place where it happened, so it is painted when both are read.
        if (pressed)
            paintDot();
        pressed = false;
        show();
    }
}

bool PaintWindow::isTerminated()
{
    const std::string state = getState();
    return state == STATE_TERMINATED || state == STATE_RUNAWAY;
}

bool PaintWindow::handleEvent(const Corvane::Event& event)
{
    // The main thread shows the events only when the pointer has moved, too.
    const std::lock_guard guard(mutex);
    sink.dispatchEvent(event);
    return Window::handleEvent(event);
}

void PaintWindow::handleFocus(bool focus)
{
    const std::lock_guard guard(mutex);
    Window::handleFocus(focus);
}

void PaintWindow::onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState)
{
    Window::onStateChange(uid, oldState, newState);
    // Wakes the main thread: an event stays in the buffer until it is read.
    DFBEvent event{};
    event.clazz = DFEC_USER;
    sink.getEventBuffer()->PostEvent(sink.getEventBuffer(), &event);
}

void PaintWindow::take(const DFBInputEvent& event)
{
    // The sink writes places into axisrel, too; the flags tell them from movements.
    const bool isPlace = (event.flags & DIEF_AXISABS) != 0;
    if (event.type == DIET_AXISMOTION && event.axis == DIAI_X)
        x = isPlace ? event.axisrel : x + event.axisrel;
    if (event.type == DIET_AXISMOTION && event.axis == DIAI_Y)
        y = isPlace ? event.axisrel : y + event.axisrel;
    if (event.type == DIET_BUTTONPRESS)
        pressed = true;
    if (event.type != DIET_KEYPRESS)
        return;
    std::cout << "key " << event.key_symbol << std::endl;
    if (event.key_symbol == DIKS_RED)
        colour = {0xFF, 0xE0, 0x30, 0x30};
    if (event.key_symbol == DIKS_GREEN)
        colour = {0xFF, 0x30, 0xC0, 0x40};
    if (event.key_symbol == DIKS_YELLOW)
        colour = {0xFF, 0xF0, 0xD0, 0x30};
    if (event.key_symbol == DIKS_BLUE)
        colour = {0xFF, 0x30, 0x60, 0xE0};
}

void PaintWindow::clear()
{
    int width = 0;
    int height = 0;
    require(surface->GetSize(surface.get(), &width, &height), "GetSize");
    for (int row = 0; row < height; ++row) {
        const auto shade = static_cast<u8>(0x30 + 0x60 * row / height);
        surface->SetColor(surface.get(), shade / 2, shade, shade, 0xFF);
        surface->FillRectangle(surface.get(), 0, row, width, 1);
    }
    surface->SetColor(surface.get(), 0xF0, 0xF0, 0xF0, 0xFF);
    surface->DrawRectangle(surface.get(), 10, 10, width - 20, height - 20);
}

void PaintWindow::paintDot()
{
    constexpr int RADIUS = 12;
    surface->SetColor(surface.get(), colour.r, colour.g, colour.b, 0xFF);
    for (int row = -RADIUS; row <= RADIUS; ++row) {
        int half = RADIUS;
        while (half * half + row * row > RADIUS * RADIUS)
            --half;
        surface->FillRectangle(surface.get(), x - half, y + row, 2 * half + 1, 1);
    }
}

void PaintWindow::show()
{
    require(surface->Flip(surface.get(), nullptr, DSFLIP_NONE), "Flip");
    if (picture.empty())
        return;
    screen.save(picture);
    std::cout << "saved with the mouse at " << x << "," << y << std::endl;
}
