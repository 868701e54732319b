#include "klv/KLVTeller.h"

namespace bryx {

KLVTeller::~KLVTeller() = default;

} // namespace bryx
