#include "zqviwicn/entry_points.h"

#include <type_traits>

#include "completion/clean_up.h"
#include "completion/launching/launch.h"
#include "completion/leftovers.h"
#include "completion/readme.h"
#include "completion/registry_records.h"
#include "completion/service_message.h"
#include "completion/splash.h"
#include "completion/tidy_up.h"
#include "features/answers/response_writer.h"
#include "features/lists/list_box.h"
#include "features/lists/prerequisites.h"
#include "features/lists/summary.h"
#include "features/presets.h"
#include "init/folders/folders.h"
#include "init/folders/volume_label.h"
#include "init/primary/primary.h"
#include "init/secondary/secondary.h"
#include "licence/agreement.h"
#include "licence/licence_files.h"
#include "licence/licence_text.h"
#include "previous/data/migrate_registry.h"
#include "previous/data/migrate_settings.h"
#include "previous/data/queue_manager_data.h"
#include "previous/delete_previous.h"
#include "previous/losing_features.h"
#include "previous/old_component.h"
#include "previous/old_documentation.h"
#include "running/actions.h"
#include "running/stop_all.h"
#include "runtime/actions/deferred_data.h"
#include "runtime/actions/log_actions.h"
#include "runtime/actions/trial_actions.h"
#include "runtime/frame.h"
#include "side/conversion_tables.h"
#include "side/eclipse_links.h"
#include "side/registration.h"
#include "side/source.h"
#include "side/zekit.h"

// The signature is asserted because a linker exports a wrong calling convention without a word.
extern "C" {
using namespace zqv;
#define ACTION_AS(entry, name, initialResult, guard, body)                       \
  static_assert(std::is_same_v<decltype(&entry), UINT(__stdcall *)(MSIHANDLE)>); \
  UINT __stdcall entry(MSIHANDLE hInstall) { return RunAction({name, initialResult, guard, body}, hInstall); }
#include "zqviwicn/actions.inc"
}
