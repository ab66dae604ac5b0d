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

/// Lets Ctrl-C (and the termination signal) end the process with status 130.
void CatchInterrupts();
/// The core whose render an interruption stops.
void WatchCore(host::Core* core);
void SetPhase(Phase phase);
/// True when the user asked to stop.
bool Interrupted();

} // namespace velmar
