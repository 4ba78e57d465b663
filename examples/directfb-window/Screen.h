#pragma once

#include <cstdint>
#include <directfb.h>
#include <memory>
#include <string>
#include <vector>

/// Throws std::runtime_error with the name of the call and DirectFB's reason, unless the result is DFB_OK.
void require(DFBResult result, const char* call);

/// DirectFB's interfaces are released, not deleted.
struct Release {
    template <class Interface>
    void operator()(Interface* released) const
    {
        released->Release(released);
    }
};
template <class Interface>
using Owned = std::unique_ptr<Interface, Release>;

/// DirectFB and its primary layer, at the cooperative level that a mouse pointer needs.
class Screen
{
public:
    /// Takes DirectFB's own arguments (--dfb:...) from the command line.
    Screen(int* argc, char*** argv);

    IDirectFB* getDirectFB() const { return dfb.get(); }
    IDirectFBDisplayLayer* getLayer() const { return layer.get(); }

    /// Writes what the layer shows as PNG. Whoever opens the file finds a whole picture, the old one or the new one.
    void save(const std::string& path) const;

private:
    struct Pixels {
        int width;
        int height;
        std::vector<std::uint32_t> values; ///< 0xAARRGGBB
    };
    Pixels read() const;

    Owned<IDirectFB> dfb;
    Owned<IDirectFBDisplayLayer> layer;
};
