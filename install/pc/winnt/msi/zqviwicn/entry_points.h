#pragma once

#include "platform/msi.h"

/// The exported actions, as the installer engine calls them: by name, with the handle of the running session.
extern "C" {
#define ACTION_AS(entry, name, initialResult, guard, body) UINT __stdcall entry(MSIHANDLE hInstall);
#include "zqviwicn/actions.inc"
}
