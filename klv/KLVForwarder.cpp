#include "klv/KLVForwarder.h"

template class klvutil::detail::KLVForwarding<klvutil::detail::TargetPass>;

KLVForwarder::~KLVForwarder() = default;
