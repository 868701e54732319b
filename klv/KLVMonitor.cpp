#include "klv/KLVMonitor.h"

namespace bryx {

namespace {

constexpr std::size_t usualDepth = 32;

} // namespace

KLVMonitor::MonitoredLocator::~MonitoredLocator() = default;

KLVMonitor::KLVMonitor(UnknownLengths unknownLengths) : unknownLengths_(unknownLengths) {
    open_.reserve(usualDepth);
}

KLVMonitor::~KLVMonitor() = default;

const Locator& KLVMonitor::getLocator() const {
    return locator_;
}

void KLVMonitor::rebase(std::streampos base) {
    open_.clear();
    next_ = base;
    position_ = base;
}

void KLVMonitor::startStream(bool accurateLengths) {
    util::require(accurateLengths, "accurate monitoring is possible");
    open_.clear();
    position_ = next_;
    next().startStream(accurateLengths);
}

void KLVMonitor::berLengthForm(std::uint8_t form) {
    headSize_ = klvutil::keySize + klvutil::berLengthFieldSize(form);
    next().berLengthForm(form);
}

std::uint64_t KLVMonitor::headSize() const {
    util::require(headSize_ != 0, "has BER length form");
    return headSize_;
}

template <class Start>
bool KLVMonitor::start(std::uint64_t headSize, std::uint64_t length, Start forward) {
    const bool known = length != klvutil::unknownLength;
    const std::uint64_t valueStart = static_cast<std::uint64_t>(next_) + headSize;
    open_.push_back({next_, static_cast<std::streamoff>(valueStart + (known ? length : 0)), known});
    position_ = next_;
    next_ = static_cast<std::streamoff>(valueStart);
    const bool wanted = forward(next());
    util::require(known || !wanted || unknownLengths_ == UnknownLengths::Counted, "wants value for unknown length");
    return wanted;
}

template <class End>
void KLVMonitor::end(End forward) {
    util::require(!open_.empty(), "in KLV triplet");
    position_ = open_.back().start;
    forward(next());
    next_ = open_.back().end;
    open_.pop_back();
    position_ = open_.empty() ? next_ : open_.back().start;
}

bool KLVMonitor::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    return start(headSize(), length, [&](KLVHandler& h) { return h.startIndividualItem(key, length); });
}
void KLVMonitor::endIndividualItem(const KLVKey& key) {
    end([&](KLVHandler& h) { h.endIndividualItem(key); });
}
bool KLVMonitor::startLabel(const KLVKey& key) {
    return start(klvutil::keySize, 0, [&](KLVHandler& h) { return h.startLabel(key); });
}
void KLVMonitor::endLabel(const KLVKey& key) {
    end([&](KLVHandler& h) { h.endLabel(key); });
}
bool KLVMonitor::startUniversalSet(const KLVKey& key, std::uint64_t length) {
    return start(headSize(), length, [&](KLVHandler& h) { return h.startUniversalSet(key, length); });
}
void KLVMonitor::endUniversalSet(const KLVKey& key) {
    end([&](KLVHandler& h) { h.endUniversalSet(key); });
}
bool KLVMonitor::startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm, KLVFieldForm lengthForm) {
    return start(headSize(), length, [&](KLVHandler& h) { return h.startLocalSet(key, length, tagForm, lengthForm); });
}
void KLVMonitor::endLocalSet(const KLVKey& key) {
    end([&](KLVHandler& h) { h.endLocalSet(key); });
}
bool KLVMonitor::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    return start(headSize(), length, [&](KLVHandler& h) { return h.startFixedLengthPack(key, length); });
}
void KLVMonitor::endFixedLengthPack(const KLVKey& key) {
    end([&](KLVHandler& h) { h.endFixedLengthPack(key); });
}
bool KLVMonitor::startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) {
    return start(headSize(), length,
                 [&](KLVHandler& h) { return h.startVariableLengthPack(key, length, itemLengthForm); });
}
void KLVMonitor::endVariableLengthPack(const KLVKey& key) {
    end([&](KLVHandler& h) { h.endVariableLengthPack(key); });
}
bool KLVMonitor::startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) {
    return start(headSize(), length, [&](KLVHandler& h) { return h.startWrapper(key, length, kind); });
}
void KLVMonitor::endWrapper(const KLVKey& key) {
    end([&](KLVHandler& h) { h.endWrapper(key); });
}

void KLVMonitor::value(const std::uint8_t* data, std::uint64_t size) {
    if (!open_.empty() && !open_.back().isKnown) {
        open_.back().end += static_cast<std::streamoff>(size);
    }
    next().value(data, size);
}

} // namespace bryx
