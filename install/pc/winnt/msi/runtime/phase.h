#pragma once

namespace zqv {

/// Which pass over the installation an action is in, for those that have work in more than one.
enum class Phase { scriptGeneration, deferred, rollback, commit };

/// Tells the phase by the run mode and writes its line. Whatever is neither rollback nor scheduled, the commit mode
/// too, counts as script generation.
Phase AnnouncePhase();

/// The same for actions that have a commit pass of their own: that mode, too, is asked for,
/// behind rollback, and counts as itself.
Phase AnnouncePhaseOrCommit();

}  // namespace zqv
