#include "klv/KLVFilter.h"

namespace bryx {

void KLVFilter::setHandler(KLVHandler* handler) {
    handler_ = handler;
}

KLVHandler* KLVFilter::getHandler() const {
    return &next();
}

template class klvutil::detail::KLVForwarding<klvutil::detail::PlainPass>;
template class klvutil::detail::KLVForwarding<klvutil::detail::ActionPass>;

DullKLVFilter::~DullKLVFilter() = default;

ActionKLVFilter::~ActionKLVFilter() = default;

void ActionKLVFilter::setLocator(const Locator& locator) {
    next().setLocator(locator);
}

void KLVStreamFilter::startStream(bool) {}

void KLVStreamFilter::endStream(bool) {}

} // namespace bryx
