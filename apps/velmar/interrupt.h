#pragma once
// Ctrl-C.

namespace host {
class Core;
}

namespace velmar {

/// What a run is doing, as far as an interruption cares.
enum class Phase {
    kLoading,   ///< nothing is open: the process ends at once
    kRendering, ///< the core is asked to stop; the process ends after a second in any case
    kWriting,   ///< the file is finished first
};

/// Lets Ctrl-C (and the termination signal) end the process with status 130. To be called before any thread is started.
void CatchInterrupts();
/// While it lives, an interruption stops the core's render. One at a time.
class CoreWatch {
public:
    explicit CoreWatch(host::Core* core);
    ~CoreWatch();
    CoreWatch(const CoreWatch&) = delete;
    CoreWatch& operator=(const CoreWatch&) = delete;
};
void SetPhase(Phase phase);
/// True when the user asked to stop.
bool Interrupted();

} // namespace velmar
