#pragma once

#include <string>

namespace zqv {

/// What the user has said of the licence, and its kind.

/// Settles the kind of licence: "production", "trial" or "beta", by ZQVLICENSETYPE, which is "production" when it is
/// empty; a trial whose TRIALTOPROD is a yes is production. False, with a line, when a property cannot be read or names
/// no such kind. In a deferred action both come from the value list.
[[nodiscard]] bool AskLicenceType(std::string &type);

/// Reads the answer to the licence, AGREETOLICENSE, also from the response file. A yes is published as AgreeToLicense
/// "Yes". False, with a line, when a property cannot be read or set.
[[nodiscard]] bool TakeAgreement(std::string &answer, bool &agreed);

/// Tells that an answer to the licence cannot be accepted.
void TellUnacceptable(const std::string &answer);

}  // namespace zqv
