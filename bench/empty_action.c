/* The floor of a custom action: a DLL in C that does nothing. */
__declspec(dllexport) unsigned __stdcall empty(unsigned long session) {
  (void)session;
  return 0;
}
