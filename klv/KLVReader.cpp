#include "klv/KLVReader.h"

namespace bryx {

KLVReader::~KLVReader() = default;

} // namespace bryx
