#pragma once

#include "platform/msi.h"

/// The exported actions, as the installer engine calls them: by name, with the handle of the running session.

#define ACTION(entry, name, initialResult, guard, body) UINT __stdcall entry(MSIHANDLE hInstall);
extern "C" {
#include "zqviwicn/actions.inc"
}
#undef ACTION
