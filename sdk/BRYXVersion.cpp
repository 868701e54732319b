#include "sdk/BRYXVersion.h"

MXFProductVersion getBRYXToolkitVersion() {
    return {BRYX_VERSION, MXFProductVersion::Release::Released};
}

std::wstring getBRYXPlatform() {
    return L"Bryxsuite (Win32)";
}
