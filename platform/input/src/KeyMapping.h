#pragma once

#include "EventTranslator.h"
#include "InputMap.h"

#include <map>
#include <memory>
#include <optional>
#include <set>

namespace Corvane
{

/// Gives the keys of one device the codes that the map wants, on their way to the translator. Not synchronised.
///
/// A key is released as what it was pressed as. A scan code counts before the key that the kernel makes of it; one that
/// the kernel makes no key of is pressed and released at once, each time that it comes.
class KeyMapping
{
public:
    /// @param rule  null when the map says nothing of the device
    void setRule(std::shared_ptr<const DeviceRule> rule);
    /// A key is down already. @return the code that it counts as
    unsigned int setDown(unsigned int code);
    /// Takes what the device reports, and passes on what the map makes of it.
    void handle(unsigned int type, unsigned int code, int value, EventTranslator& translator);

private:
    unsigned int findCode(unsigned int code) const;
    unsigned int takeKey(unsigned int code, int value);
    void endFrame(bool isWhole, EventTranslator& translator);

    std::shared_ptr<const DeviceRule> rule;
    std::map<unsigned int, unsigned int> held; ///< what keys that are down were pressed as, by their own codes
    std::optional<unsigned int> scan;          ///< the scan code of this frame
    std::set<unsigned int> scansOfKeys;        ///< those of the map that the kernel makes keys of
};

} // namespace Corvane
