#pragma once

namespace zqv {

/// Deletes the file of answers (SAVEINI) where it is the one that primary initialisation makes when nobody has asked
/// for any: "QVSeries.ini" in the temporary folder. What cannot be deleted is logged. False when a property cannot be
/// read.
[[nodiscard]] bool DeleteDefaultSaveFile();

}  // namespace zqv
