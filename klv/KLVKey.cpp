#include "klv/KLVKey.h"

#include "util/hex.h"

std::string toString(const KLVKey& key) {
    return "urn:smpte:ul:" + util::hexGroups(key.octets.data(), key.octets.size());
}
