#pragma once

namespace zqv {

/// Which pass over the installation an action is in, for those that have work in more than one.
enum class Phase { scriptGeneration, deferred, rollback };

/// Tells the phase by the run mode and writes its line. Whatever is neither rollback nor scheduled, the commit mode
/// too, counts as script generation.
Phase AnnouncePhase();

}  // namespace zqv
