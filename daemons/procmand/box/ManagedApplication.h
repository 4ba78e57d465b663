#pragma once

#include "box/EventLoop.h"
#include "launch/LaunchRequest.h"
#include "launch/Process.h"
#include "screen/Placement.h"

#include <chrono>
#include <corvane/interfaces/ILifecycleManagement.h>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Procmand
{

/// Why an application is being stopped; what comes after its end depends on it.
enum class StopPurpose { NONE, STOP, RESTART, RUNAWAY };

/// How the state of an application became known on the present link.
enum class Hearing { NOTHING, ASKED, ANNOUNCED };

/// One application of the box, as the process manager knows it. Guarded by the lock of the box.
struct ManagedApplication {
    enum class Phase {
        STARTING, ///< its program is being started
        RUNNING,  ///< there is a process
        WAITING,  ///< for its restart
        GIVEN_UP  ///< until somebody restarts or stops it
    };
    using Clock = std::chrono::steady_clock;

    std::string uid;
    std::optional<LaunchRequest> request; ///< none for an application that was started by hand
    std::string program;
    std::string type; ///< its application type, empty where it has none or it is not known
    Phase phase = Phase::STARTING;
    std::optional<Process> process;     ///< while RUNNING, and a little before
    std::string mark;                   ///< of its present or last run, empty where it was started by hand
    std::optional<ProcessEnd> end;      ///< the process has ended, its last words may still come
    unsigned int restarts = 0;          ///< all of them
    unsigned int restartsInRow = 0;     ///< those without a long run in between
    EventLoop::Timer restartTimer = 0;  ///< while WAITING
    std::optional<Placement> placement; ///< of the window that it had last
    bool takesPlaceBack = false;        ///< with the window that it is granted next
    EventLoop::Timer lastWordsTimer = 0;

    /// What the control server told.
    bool isConnected = false; ///< it has answered the subscription
    std::string socketFile;   ///< of the control server, once it was needed
    std::string state;        ///< empty until the application tells it
    std::string previousState;
    Hearing hearing = Hearing::NOTHING;
    std::string announcedState = Corvane::ILifecycleManagement::STATE_UNINITIALIZED; ///< by it or in its name
    std::string lateState; ///< what it told when it was asked, until that is announced in its name
    EventLoop::Timer lateStateTimer = 0;
    EventLoop::Timer keepAliveTimer = 0;
    Clock::time_point lastSign;      ///< of life; since then its silence is counted
    bool wasAlive = false;           ///< a keep-alive of this process has been announced
    EventLoop::Timer abortTimer = 0; ///< since it said that it aborts
    bool ranAway = false;

    /// The stop that is under way.
    StopPurpose stopPurpose = StopPurpose::NONE;
    unsigned int stopStage = 0;
    EventLoop::Timer stopTimer = 0;

    /// Changes with each process: what was begun for an earlier one finds that it is late.
    unsigned long generation = 0;

    /// @return whether there is a process that has not ended
    bool isAlive() const { return phase == Phase::RUNNING && process && !end; }
    /// @return what people call it, empty for none
    std::string getName() const { return request ? request->name : std::string(); }
    /// Writes the members that tell people which application this is.
    void writeIdentity(Corvane::Serializer& serializer) const;
    /// The same as one short line: "kitchen, player, box-window", as far as it is known.
    std::string describe() const;
    /// @return whether nothing goes on with it now
    bool isAtRest() const { return phase == Phase::WAITING || phase == Phase::GIVEN_UP; }
    /// @return whether it has ended in another way than it should
    bool isFailure() const;
};

/// The applications by uid. Guarded by the lock of the box.
class Registry
{
public:
    using Applications = std::map<std::string, ManagedApplication>;

    /// Adds an application; there must be none with that uid.
    ManagedApplication& add(const std::string& uid);
    void remove(const std::string& uid);
    /// @return null where there is none
    ManagedApplication* find(const std::string& uid);
    /// @return null when the application is gone or has another process now
    ManagedApplication* find(const std::string& uid, unsigned long generation);
    /// @throws std::out_of_range  with a text for people
    ManagedApplication& require(const std::string& uid);
    /// @return the application that has this word as its uid or as its name; null for none
    ManagedApplication* findHolder(const std::string& word);
    /// Gives the application a new generation.
    void renew(ManagedApplication& application);
    Applications& getAll() { return applications; }
    const Applications& getAll() const { return applications; }

private:
    Applications applications;
    unsigned long lastGeneration = 0;
};

} // namespace Procmand
