#include "util/uuid.h"

#include "util/hex.h"

namespace bryx::util {

std::string toString(const uuid& id) {
    std::string text = "urn:uuid:";
    std::size_t at = 0;
    for (const std::size_t size : {4U, 2U, 2U, 2U, 6U}) {
        if (at != 0) {
            text += '-';
        }
        appendHex(text, id.octets.data() + at, size);
        at += size;
    }
    return text;
}

} // namespace bryx::util
