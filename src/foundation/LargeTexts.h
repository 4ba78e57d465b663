#pragma once

namespace Corvane
{

/// While one of these lives, the memory that large JSON texts are parsed in is kept for the next one; the last one
/// gives it back. Otherwise each text gives back what it took, and the next one pays for it again, more than for being
/// parsed.
///
/// Thread-safe.
class LargeTexts
{
public:
    LargeTexts();
    ~LargeTexts();
    LargeTexts(const LargeTexts&) = delete;
    LargeTexts& operator=(const LargeTexts&) = delete;
};

} // namespace Corvane
