#include "klv/InputLocator.h"

namespace bryx {

InputLocator::~InputLocator() = default;

} // namespace bryx
