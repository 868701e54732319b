#include "sdk/BRYXVersion.h"

namespace bryx {

MXFProductVersion getBRYXToolkitVersion() {
    return {BRYX_VERSION, MXFProductVersion::Release::Released};
}

std::wstring getBRYXPlatform() {
    return L"Bryxsuite (Win32)";
}

} // namespace bryx
