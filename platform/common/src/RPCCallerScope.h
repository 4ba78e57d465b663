#pragma once

#include <corvane/common/RPCCaller.h>

namespace Corvane
{

/// Makes a client the current caller of this thread for as long as it lives.
class RPCCallerScope
{
public:
    explicit RPCCallerScope(RPCCaller& caller) : outer(RPCCaller::setCurrent(&caller)) {}
    ~RPCCallerScope() { RPCCaller::setCurrent(outer); }
    RPCCallerScope(const RPCCallerScope&) = delete;
    RPCCallerScope& operator=(const RPCCallerScope&) = delete;

private:
    RPCCaller* const outer;
};

} // namespace Corvane
