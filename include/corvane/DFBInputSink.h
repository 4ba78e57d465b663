#pragma once

#include <corvane/foundation/Event.h>

struct _IDirectFB;
struct _IDirectFBEventBuffer;
typedef struct _IDirectFB IDirectFB;
typedef struct _IDirectFBEventBuffer IDirectFBEventBuffer;

namespace Corvane
{

/// Posts input events into a DirectFB event buffer of its own, where a user interface built on DirectFB reads them.
///
/// An application that draws with DirectFB creates it and dispatches the events that its Window receives. The sink
/// changes nothing of its own after construction, so dispatchEvent() is thread-safe as far as the buffer is: DirectFB's
/// own buffers are.
///
///     DFBInputSink sink(dfb);
///     sink.dispatchEvent(IWindowEvent::KeyEvent(KEY_OK, true));
///     DFBEvent event;
///     sink.getEventBuffer()->GetEvent(sink.getEventBuffer(), &event);
class CORVANE_EXPORT DFBInputSink
{
public:
    /// Creates the buffer: for keys, buttons and axes, whether or not a window of DirectFB has the focus.
    /// @param dfb  must outlive the sink, which does not own it
    /// @throws Exception  code 7 when DirectFB does not create the buffer
    explicit DFBInputSink(IDirectFB* dfb);
    DFBInputSink(const DFBInputSink&) = delete;
    DFBInputSink& operator=(const DFBInputSink&) = delete;
    /// Releases the buffer.
    virtual ~DFBInputSink();

    /// @return the sink's buffer, to read, to wait on or to attach; the caller does not release it
    virtual IDirectFBEventBuffer* getEventBuffer();

    /// Converts a key, character or mouse event and posts what results: one event for a key or a character, one for
    /// each button that changed and for each axis that is not 0. Ignores every other event, and a post that fails.
    /// @throws std::bad_cast  the event has the type name of another class
    virtual void dispatchEvent(const Event& event);

private:
    IDirectFB* dfb;                    ///< not owned
    IDirectFBEventBuffer* eventBuffer; ///< owned
};

} // namespace Corvane
