#pragma once

#include <directfb.h>
#include <map>
#include <string>
#include <vector>

namespace Corvane::Test
{

/// The session that a cursor is asked about. It has one picture for all of them, so any number will do.
constexpr unsigned int SESSION = 7;

/// What is common to the fakes of one test: the calls that were made, in order, and the results that were ordered.
///
/// DirectFB's interfaces are structures of function pointers. A fake derives from one and fills in the operations that
/// the adapters may use; any other is null, and calling it crashes the test.
struct FakeState {
    std::vector<std::string> calls;
    std::map<std::string, DFBResult> results; ///< by operation; DFB_OK where there is none

    /// Notes a call. @return the result ordered for the operation
    DFBResult call(const std::string& operation, const std::string& arguments = "")
    {
        calls.push_back(operation + "(" + arguments + ")");
        const auto result = results.find(operation);
        return result == results.end() ? DFB_OK : result->second;
    }
};

/// The pointer's picture, 24 pixels wide and 32 high.
struct FakeSurface : IDirectFBSurface {
    explicit FakeSurface(FakeState& state) : IDirectFBSurface(), state(state)
    {
        GetSize = [](IDirectFBSurface* self, int* width, int* height) {
            *width = 24;
            *height = 32;
            return of(self).call("GetSize");
        };
        ReleaseSource = [](IDirectFBSurface* self) { return of(self).call("ReleaseSource"); };
        Release = [](IDirectFBSurface* self) { return static_cast<DirectResult>(of(self).call("Surface::Release")); };
    }

    static FakeState& of(IDirectFBSurface* self) { return static_cast<FakeSurface*>(self)->state; }

    FakeState& state;
};

/// Reads a picture of 24 x 32 pixels with a pixel format of its own.
struct FakeImageProvider : IDirectFBImageProvider {
    explicit FakeImageProvider(FakeState& state) : IDirectFBImageProvider(), state(state)
    {
        GetSurfaceDescription = [](IDirectFBImageProvider* self, DFBSurfaceDescription* description) {
            *description = {};
            description->flags =
                static_cast<DFBSurfaceDescriptionFlags>(DSDESC_WIDTH | DSDESC_HEIGHT | DSDESC_PIXELFORMAT);
            description->width = 24;
            description->height = 32;
            description->pixelformat = DSPF_ARGB;
            return of(self).call("GetSurfaceDescription");
        };
        RenderTo = [](IDirectFBImageProvider* self, IDirectFBSurface* destination, const DFBRectangle_C* rectangle) {
            static_cast<FakeImageProvider*>(self)->destination = destination;
            return of(self).call("RenderTo", rectangle == nullptr ? "whole surface" : "rectangle");
        };
        Release = [](IDirectFBImageProvider* self) {
            return static_cast<DirectResult>(of(self).call("ImageProvider::Release"));
        };
    }

    static FakeState& of(IDirectFBImageProvider* self) { return static_cast<FakeImageProvider*>(self)->state; }

    FakeState& state;
    IDirectFBSurface* destination = nullptr;
};

/// A layer whose pointer is somewhere; it stays there, and as it is, when a call is refused.
struct FakeLayer : IDirectFBDisplayLayer {
    explicit FakeLayer(FakeState& state) : IDirectFBDisplayLayer(), state(state)
    {
        SetCursorShape = [](IDirectFBDisplayLayer* self, IDirectFBSurface* shape, int hotX, int hotY) {
            layer(self).shape = shape;
            return of(self).call("SetCursorShape", std::to_string(hotX) + "," + std::to_string(hotY));
        };
        SetCursorOpacity = [](IDirectFBDisplayLayer* self, u8 opacity) {
            return of(self).call("SetCursorOpacity", std::to_string(opacity));
        };
        GetCursorPosition = [](IDirectFBDisplayLayer* self, int* x, int* y) {
            *x = layer(self).x;
            *y = layer(self).y;
            return of(self).call("GetCursorPosition");
        };
        WarpCursor = [](IDirectFBDisplayLayer* self, int x, int y) {
            const DFBResult result = of(self).call("WarpCursor", std::to_string(x) + "," + std::to_string(y));
            if (result == DFB_OK) {
                layer(self).x = x;
                layer(self).y = y;
            }
            return result;
        };
    }

    static FakeLayer& layer(IDirectFBDisplayLayer* self) { return *static_cast<FakeLayer*>(self); }
    static FakeState& of(IDirectFBDisplayLayer* self) { return layer(self).state; }

    FakeState& state;
    IDirectFBSurface* shape = nullptr;
    int x = 5;
    int y = 6;
};

/// Keeps what is posted.
struct FakeEventBuffer : IDirectFBEventBuffer {
    explicit FakeEventBuffer(FakeState& state) : IDirectFBEventBuffer(), state(state)
    {
        PostEvent = [](IDirectFBEventBuffer* self, const DFBEvent* event) {
            static_cast<FakeEventBuffer*>(self)->posted.push_back(*event);
            return of(self).call("PostEvent");
        };
        Release = [](IDirectFBEventBuffer* self) {
            return static_cast<DirectResult>(of(self).call("EventBuffer::Release"));
        };
    }

    static FakeState& of(IDirectFBEventBuffer* self) { return static_cast<FakeEventBuffer*>(self)->state; }

    FakeState& state;
    std::vector<DFBEvent> posted;
};

/// The main interface. As DirectFB itself does, it leaves a pointer that is good for nothing where it does not create.
struct FakeDirectFB : FakeState, IDirectFB {
    FakeDirectFB() : IDirectFB()
    {
        CreateImageProvider = [](IDirectFB* self, const char* file, IDirectFBImageProvider** provider) {
            return dfb(self).create("CreateImageProvider", file, dfb(self).provider, provider);
        };
        CreateSurface = [](IDirectFB* self, const DFBSurfaceDescription* description, IDirectFBSurface** surface) {
            dfb(self).description = *description;
            return dfb(self).create("CreateSurface", "", dfb(self).surface, surface);
        };
        CreateInputEventBuffer = [](IDirectFB* self, DFBInputDeviceCapabilities capabilities, DFBBoolean global,
                                    IDirectFBEventBuffer** buffer) {
            const std::string arguments = std::to_string(capabilities) + "," + std::to_string(global);
            return dfb(self).create("CreateInputEventBuffer", arguments, dfb(self).buffer, buffer);
        };
    }

    static FakeDirectFB& dfb(IDirectFB* self) { return *static_cast<FakeDirectFB*>(self); }

    template <class Interface, class Fake>
    DFBResult create(const std::string& operation, const std::string& arguments, Fake& fake, Interface** created)
    {
        const DFBResult result = call(operation, arguments);
        *created = result == DFB_OK ? &fake : reinterpret_cast<Interface*>(0x10);
        return result;
    }

    FakeSurface surface{*this};
    FakeImageProvider provider{*this};
    FakeLayer layer{*this};
    FakeEventBuffer buffer{*this};
    DFBSurfaceDescription description{};
};

} // namespace Corvane::Test
