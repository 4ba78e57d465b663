#pragma once

#include "InputMap.h"

#include <corvane/common/FileDescriptor.h>
#include <memory>
#include <string>

namespace Corvane
{

/// The map in the file that CORVANE_INPUT_MAP names, as it is now. Not synchronised.
///
/// Without the variable there is no map, and nothing is done. A file that cannot be used is one debug line, and the map
/// from before stays.
///
///     if (file.takeNews())
///         rule = file.find(device);
class InputMapFile
{
public:
    /// Reads the file, and begins to listen for its changes.
    InputMapFile();

    /// @return a descriptor that is readable when the file may have changed; -1 without one
    int getDescriptor() const { return changes.get(); }
    /// Reads the file again if it has changed; does not block.
    /// @return whether there may be another map now
    bool takeNews();

    /// @param folder  of the device's node for events, below /sys
    /// @return null when the map says nothing of the device
    std::shared_ptr<const DeviceRule> find(const std::string& folder) const;

private:
    void listen();
    bool load();

    std::string path; ///< empty without the variable
    FileDescriptor changes;
    InputMap map;
};

/// @param folder  of the device's node for events, below /sys
DeviceIdentity readIdentity(const std::string& folder);

} // namespace Corvane
