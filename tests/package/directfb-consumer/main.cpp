#include <corvane/DFBCursor.h>
#include <corvane/DFBInputSink.h>
#include <corvane/input/DFBInputEvents.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <cstdio>
#include <directfb.h>

/// Prints the event that a key becomes in the buffer of the real DirectFB: "symbol 61451, pointer shown".
int main(int argc, char** argv)
{
    IDirectFB* dfb = nullptr;
    if (DirectFBInit(&argc, &argv) != DFB_OK || DirectFBCreate(&dfb) != DFB_OK)
        return 1;
    {
        Corvane::DFBCursor pointer(dfb, nullptr, true);
        Corvane::DFBInputSink sink(dfb);
        const Corvane::IWindowEvent::KeyEvent::Code KEY_OF_OK = 0x160;
        sink.dispatchEvent(Corvane::IWindowEvent::KeyEvent(KEY_OF_OK, true));
        DFBEvent event;
        if (sink.getEventBuffer()->GetEvent(sink.getEventBuffer(), &event) != DFB_OK ||
            event.input.key_symbol != Corvane::DFBInputEvents::getDirectFBKeySymbol(KEY_OF_OK))
            return 1;
        std::printf("symbol %d, pointer %s\n", event.input.key_symbol, pointer.getVisibility(0) ? "shown" : "hidden");
    }
    dfb->Release(dfb);
}
