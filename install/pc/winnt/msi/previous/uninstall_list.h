#pragma once

#include <string>

#include "services/removal/deletion_guard.h"

namespace zqv {

/// Stacks the removal of what an earlier version's uninstall list names: the stream of the Binary table that is called
/// `name` and ".u00". The list is a text of one entry a line. Blanks and tabs around an entry count for nothing; empty
/// lines and those that begin with ";" or "#" are passed over. An entry is a path below the earlier version's program
/// folder (ZQVPREVPGM, else what the registry has); one that begins with "PGM,", "DAT," or "TMP," is below that folder,
/// ZQVPREVDAT or ZQVTEMP. One that ends in a backslash is a folder, which goes if it is empty; any other is a file, or
/// a pattern of files if its last element has "*" or "?".
///
/// Entries that are no path (they hold a control character, "/", or a wildcard before their last element), are longer
/// than 260 characters or lead out of their folder are reported and passed over; so are those whose folder is not
/// known, or refused by the guard. ZQVTEMP may be the system's temporary folder.
void ProcessUninstallList(const std::string &name, DeletionGuard &guard);

}  // namespace zqv
