#pragma once

#include <string>

namespace Corvane::Test
{

/// What the file of the pointer's picture, /usr/local/etc/cursor.png, holds for this process and as long as the object
/// lives. The program has an open() of its own, which DirectFB calls: opening that path opens the stand-in. So the
/// tests need no root and touch no file outside their own folder. Only one at a time.
class CursorFile
{
public:
    /// @param standIn  path of the file that is opened instead; it need not exist
    explicit CursorFile(const std::string& standIn);
    ~CursorFile();
    CursorFile(const CursorFile&) = delete;
    CursorFile& operator=(const CursorFile&) = delete;

    /// How often the fixed path was opened.
    int getOpened() const;
};

} // namespace Corvane::Test
