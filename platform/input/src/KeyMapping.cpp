#include "KeyMapping.h"

#include <linux/input-event-codes.h>
#include <utility>

namespace Corvane
{

void KeyMapping::setRule(std::shared_ptr<const DeviceRule> newRule)
{
    rule = std::move(newRule);
}

unsigned int KeyMapping::setDown(unsigned int code)
{
    return rule != nullptr ? held[code] = findCode(code) : code;
}

void KeyMapping::handle(unsigned int type, unsigned int code, int value, EventTranslator& translator)
{
    if (rule == nullptr)
        return translator.handle(type, code, value);
    if (type == EV_MSC && code == MSC_SCAN)
        scan = static_cast<unsigned int>(value);
    else if (type == EV_SYN)
        endFrame(code == SYN_REPORT, translator);
    translator.handle(type, type == EV_KEY ? takeKey(code, value) : code, value);
}

unsigned int KeyMapping::findCode(unsigned int code) const
{
    const auto mapped = rule->codes.find(code);
    return mapped != rule->codes.end() ? mapped->second : code;
}

unsigned int KeyMapping::takeKey(unsigned int code, int value)
{
    const auto mapped = scan ? rule->scans.find(*scan) : rule->scans.end();
    const bool isMapped = mapped != rule->scans.end();
    if (isMapped)
        scansOfKeys.insert(*scan);
    scan.reset();
    if (value == 0) {
        const auto pressed = held.extract(code);
        return pressed ? pressed.mapped() : findCode(code);
    }
    return held.try_emplace(code, isMapped ? mapped->second : findCode(code)).first->second;
}

void KeyMapping::endFrame(bool isWhole, EventTranslator& translator)
{
    const std::optional<unsigned int> alone = std::exchange(scan, {});
    if (!alone || !isWhole)
        return;
    const auto mapped = rule->scans.find(*alone);
    // A remote control repeats the scan code alone while its key is held, and sometimes after.
    if (mapped == rule->scans.end() || scansOfKeys.contains(*alone))
        return;
    translator.handle(EV_KEY, mapped->second, 1);
    translator.handle(EV_KEY, mapped->second, 0);
}

} // namespace Corvane
