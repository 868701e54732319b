#include "sdk/BRYXVersion.h"

MXFProductVersion getBRYXToolkitVersion() {
    return {4, 15, 0, 143, MXFProductVersion::Release::Released};
}

std::wstring getBRYXPlatform() {
    return L"Bryxsuite (Win32)";
}
