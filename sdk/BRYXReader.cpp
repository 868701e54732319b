#include "sdk/BRYXReader.h"

#include <utility>

#include "sdk/internal/BRYXReaderImpl.h"

namespace bryx {

BRYXReader::~BRYXReader() = default;

std::shared_ptr<BRYXReader> createBRYXReader(std::shared_ptr<std::istream> stream, BRYXValidationMode::Enum mode) {
    return std::make_shared<BRYXReaderImpl>(std::move(stream), mode);
}

} // namespace bryx
