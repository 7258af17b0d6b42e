#include "platform/win32.h"
#include "zqviwicn/load.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD reason, void *processEnds) {
  switch (reason) {
    case DLL_PROCESS_ATTACH:
      return zqv::Load() ? TRUE : FALSE;
    case DLL_PROCESS_DETACH:  // also after an attachment that has failed
      if (processEnds != nullptr) {
        zqv::UnloadAtProcessEnd();
      } else {
        zqv::Unload();
      }
      return TRUE;
    default:
      return TRUE;
  }
}
