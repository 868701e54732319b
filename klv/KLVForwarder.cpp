#include "klv/KLVForwarder.h"

namespace bryx {

template class klvutil::detail::KLVForwarding<klvutil::detail::TargetPass>;

KLVForwarder::~KLVForwarder() = default;

} // namespace bryx
