// The delay-load hook: "NODE.EXE" means the host program, whatever its file name is.
#include <windows.h>

#include <delayimp.h>

namespace {

FARPROC WINAPI MapNodeToHost(unsigned notification, PDelayLoadInfo info) {
    if (notification != dliNotePreLoadLibrary || lstrcmpiA(info->szDll, "NODE.EXE") != 0) return nullptr;
    // For this notification the hook returns the module to use, as a function pointer.
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(GetModuleHandleW(nullptr)));
}

}  // namespace

extern "C" {
PfnDliHook __pfnDliNotifyHook2 = MapNodeToHost;
}
