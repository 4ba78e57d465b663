#pragma once

#include "Commands.h"

#include <optional>
#include <string>
#include <vector>

/// What an application can be called on the command line: by its uid, by its name, or by the beginning of either.
namespace Corvanectl
{

/// How an application is known. What the words of people are compared with.
struct Identity {
    std::string uid;
    std::string name; ///< empty for none
};

/// @param word  a uid, which goes first; else a name; else the beginning of one application's uid or name
/// @return the uid of the application that is meant; none where nobody is called like that
/// @throws UsageError  several begin like that; the text lists them
std::optional<std::string> choose(const std::string& word, const std::vector<Identity>& applications);

/// Looks among the applications of the process manager, where one runs, and among the servers that live.
/// @param word  as above, or the whole name of a server
/// @return the uid of the application that is meant; the word itself where nobody is called like that
/// @throws UsageError  the word is empty, or several begin like that. @throws RPCError  the process manager is silent
std::string findUid(const std::string& word, const Options& options);

/// @return the name of the server of what `findUid` finds
std::string findServerName(const std::string& word, const Options& options);

/// @return the uid of the application that has this control server, or the name of a server that has none
std::string uidOf(const std::string& serverName);

} // namespace Corvanectl
