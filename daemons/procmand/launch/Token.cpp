#include "launch/Token.h"

#include <array>
#include <cerrno>
#include <sys/random.h>
#include <system_error>

namespace Procmand
{

std::string makeToken()
{
    std::array<unsigned char, 16> bytes{};
    // So few bytes come whole, and the call waits for nothing once the machine has booted.
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw std::system_error(errno, std::generic_category(), "the system has no random numbers");
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string token;
    for (const unsigned char byte : bytes)
        token += {DIGITS[byte >> 4], DIGITS[byte & 15]};
    return token;
}

} // namespace Procmand
