#pragma once

#include <string>
#include <string_view>

#include "base/load_state.h"
#include "platform/win32.h"

namespace zqv {

/// Messages to the user. Their texts are in the message library, a resource-only library with a string table that lies
/// in the temporary folder, so that they can be translated; the lines of the log are English and built in.

namespace message {

// String-table identifiers.
constexpr UINT kStartFolder = 406;  ///< names that the installation publishes
constexpr UINT kSnapInExplorer = 613;
constexpr UINT kSnapInServices = 695;
constexpr UINT kServiceWait = 1016;  ///< templates of action data: what is waited for
constexpr UINT kQueueManagerWait = 1017;
constexpr UINT kShortPause = 1018;
constexpr UINT kListenerWait = 1019;
constexpr UINT kFilesWait = 1020;
constexpr UINT kStopDescription = 1114;
constexpr UINT kStoppingService = 1121;  ///< one insert: the service's name
constexpr UINT kSetupTitle = 2001;       ///< titles of the setup; one insert, %s: version and release, as in 6.0
constexpr UINT kTrialTitle = 2002;
constexpr UINT kBetaTitle = 2003;
constexpr UINT kClientTitle = 2004;
constexpr UINT kPatchTitle = 2005;
constexpr UINT kCaption = 2027;
constexpr UINT kNoLanguage = 2031;
constexpr UINT kResponseFileUnreadable = 2034;  ///< one insert: the file's path
constexpr UINT kSaveFileFailed = 2035;          ///< one insert, %d: the system's error
constexpr UINT kActionFailed = 2041;
constexpr UINT kClusterSupportPac = 2053;
constexpr UINT kPubSubSupportPac = 2054;
constexpr UINT kServiceLevel = 2092;
constexpr UINT kInvalidFolder = 2100;   ///< two inserts: the folder, and what it came from
constexpr UINT kLosingFeatures = 2110;  ///< one insert: the features
constexpr UINT kNeedsSystem = 2120;     ///< rows of the dialogs' lists, up to the last: what an installation needs
constexpr UINT kNeedsAdministrator = 2121;
constexpr UINT kNeedsStop = 2122;
constexpr UINT kNeedsRestart = 2123;
constexpr UINT kFeatureNeed = 2124;    ///< two inserts: a feature, and the one that it needs
constexpr UINT kProgramFolder = 2125;  ///< what an installation is about to do; one insert, but for the restart
constexpr UINT kDataFolder = 2126;
constexpr UINT kLogFolder = 2127;
constexpr UINT kInstalledFeature = 2128;
constexpr UINT kRemovedFeature = 2129;
constexpr UINT kMayRestart = 2130;
constexpr UINT kTraceLog = 2131;
constexpr UINT kNoAgreement = 2140;

}  // namespace message

extern LoadStateEntry &messageState;

/// Loads a text of the message library, at most 515 characters of it; the library itself is loaded at the first use.
/// False, with `text` untouched, when it cannot be loaded.
[[nodiscard]] bool iwiLoadNlsString(std::string &text, UINT id);

/// The same as a value: `fallback` when the text cannot be loaded.
std::string NlsText(UINT id, const char *fallback = "");

/// Makes `path` the message library of this load, in place of the name in the temporary folder.
void UseMessageLibrary(const std::string &path);

/// Frees the message library with every reference that the process holds on it, if it is loaded.
void FreeMessageLibrary();

/// Closes the splash window, writes the text to the logs and, unless the installation is silent (UILevel 2), shows it
/// in a box with buttons in the installation's language. `type` is MessageBox's. Returns the box's answer, 0 without a
/// box.
int iiiDisplayMsgBox(const std::string &text, UINT type);

/// Closes the product's splash window and waits, without a limit, until it is gone.
void CloseSplash();

/// True while the product's splash window is there.
bool IsSplashShown();

/// Fills the inserts %1 to %4 of a message text, as FormatMessage does; the result has at most 515 characters. False
/// with the format itself in `text`.
bool FormatInserts(std::string &text, const std::string &format, const char *a1 = "", const char *a2 = "",
                   const char *a3 = "", const char *a4 = "");

/// A text with its one insert filled: its first `insert`, which is %1, %s or %d, or, where it has none, the first of
/// the others that it has. With %1 the text is FormatInserts' own.
std::string FillInsert(const std::string &format, const char *insert, const std::string &value);

}  // namespace zqv
