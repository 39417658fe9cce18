// A DLL that needs one that is not there.
extern "C" __declspec(dllimport) int Answer();
extern "C" __declspec(dllexport) int DllGetClassObject() { return Answer(); }
