#include "klv/Locator.h"

namespace bryx {

Locator::~Locator() = default;

} // namespace bryx
