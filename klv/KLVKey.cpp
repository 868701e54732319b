#include "klv/KLVKey.h"

#include "util/hex.h"

std::string toString(const KLVKey& key) {
    std::string text = "urn:smpte:ul:";
    for (std::size_t group = 0; group < 4; ++group) {
        if (group != 0) {
            text += '.';
        }
        util::appendHex(text, key.octets.data() + 4 * group, 4);
    }
    return text;
}
