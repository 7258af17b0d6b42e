#include "platform/win32.h"
#include "zqviwicn/load.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD reason, void * /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) {
    zqv::Load();
  } else if (reason == DLL_PROCESS_DETACH) {
    zqv::Unload();
  }
  return TRUE;
}
