// A DLL that is not where it is needed.
extern "C" __declspec(dllexport) int Answer() { return 42; }
