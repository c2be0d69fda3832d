// The delay-load hook: "NODE.EXE" is whatever program has loaded this file, whatever its name is.
#include <windows.h>

#include <delayimp.h>

namespace {

FARPROC WINAPI MapNodeToHost(unsigned notification, PDelayLoadInfo info) {
    if (notification != dliNotePreLoadLibrary || lstrcmpiA(info->szDll, "NODE.EXE") != 0) return nullptr;
    // The hook's result for this notification is the module to use, passed as a function pointer.
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(GetModuleHandleW(nullptr)));
}

}  // namespace

extern "C" {
PfnDliHook __pfnDliNotifyHook2 = MapNodeToHost;
}
