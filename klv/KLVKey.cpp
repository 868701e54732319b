#include "klv/KLVKey.h"

#include <algorithm>

#include "klv/KLVValueTypes.h"
#include "util/hex.h"

namespace bryx {

std::string toString(const KLVKey& key) {
    if ((key[0] & 0x80U) != 0) {
        MXFUID uuid;
        std::rotate_copy(key.octets.begin(), key.octets.begin() + 8, key.octets.end(), uuid.octets.begin());
        return toString(uuid);
    }
    return "urn:smpte:ul:" + util::hexGroups(key.octets.data(), key.octets.size());
}

} // namespace bryx
