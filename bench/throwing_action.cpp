/// The floor of the library's size: a DLL in C++ that throws and catches an exception.
extern "C" __declspec(dllexport) unsigned __stdcall throwing(unsigned long session) {
  try {
    if (session == 0) {
      throw 1603U;
    }
    return 0;
  } catch (unsigned code) {
    return code;
  }
}
