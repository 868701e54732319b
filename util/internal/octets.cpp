#include "util/internal/octets.h"

namespace bryx::util {

void append(std::vector<std::uint8_t>& octets, const std::uint8_t* data, std::size_t size) {
    octets.insert(octets.end(), data, data + size);
}

} // namespace bryx::util
