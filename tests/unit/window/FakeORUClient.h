#pragma once

#include <corvane/procman/ORUClient.h>
#include <map>
#include <optional>
#include <string>

namespace Corvane::Test
{

/// The client library of this program: what a window asks of the process manager is in the journal, and the compositor
/// keeps one surface.
///
/// `ORUClient::create` of this program comes before the one of the library.
struct FakeManager {
    /// What the next calls throw: at creation, at the start, at the request, at any operation on the surface, at the
    /// release.
    std::string failingCall;
    /// Whether the deadline of every setter passes. Nothing is changed then: a late change is the test's.
    bool answersNoSetters = false;
    unsigned int tokenState = IResourceAcquisition::ResourceToken::STATE_GRANTED;
    unsigned int resourceIndex = 4;

    bool visibility = true;
    unsigned int opacity = 255;
    unsigned int zOrder = 0;
    ISurfaceCompositing::Rect location{0, 0, 1280, 720};
    /// What the compositor makes of a z-order, where it does not take it as it is.
    std::optional<unsigned int> forcedZOrder;

    unsigned int createdType = 0;
    int clients = 0; ///< that live
};

inline FakeManager manager;

} // namespace Corvane::Test
