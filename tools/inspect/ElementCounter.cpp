#include "inspect/ElementCounter.h"

namespace {

constexpr std::size_t maxKeys = 4096;

} // namespace

KLVKey prefixOf(const KLVKey& key) {
    KLVKey prefix = key;
    std::fill(prefix.octets.begin() + 12, prefix.octets.end(), std::uint8_t{0});
    return prefix;
}

MXFGCEssenceKind classifyEssence(const KLVKey& key) {
    const bool isPrivate = key[4] == 1 && key[5] == 2 && key[8] == 0x0E;
    return isPrivate ? MXFGCEssenceKind::Data : mxfutil::gcEssenceKind(key);
}

const char* essenceKind(const KLVKey& key) {
    switch (classifyEssence(key)) {
    case MXFGCEssenceKind::Picture:
        return "picture";
    case MXFGCEssenceKind::Sound:
        return "sound";
    case MXFGCEssenceKind::Data:
        return "data";
    case MXFGCEssenceKind::Compound:
        return "compound";
    case MXFGCEssenceKind::None:
        break;
    }
    return nullptr;
}

void ElementCounter::add(const KLVKey& key, std::uint64_t octets) {
    // Equality of KLVKey leaves octet 7 out, the version, which does not tell one element from another.
    auto place = places_.find(key);
    if (place == places_.end()) {
        if (entries_.size() == maxKeys) {
            ++omitted_;
            return;
        }
        place = places_.emplace(key, entries_.size()).first;
        entries_.push_back({key});
    }
    ElementCount& count = entries_[place->second];
    ++count.elements;
    count.octets += octets;
}
