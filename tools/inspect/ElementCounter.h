#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "klv/KLVKey.h"
#include "mxf/essence/MXFGCKeys.h"

/// The octets of @p key before octet 12, the others 0: what keys of one family have in common.
KLVKey prefixOf(const KLVKey& key);

/// What the essence element with @p key holds: one of the Generic Container, or of a private kind (octets 4 and 5 of its key
/// say essence, octet 8 a registration of an organisation's own, ST 336), which is taken for data.
MXFGCEssenceKind classifyEssence(const KLVKey& key);

/// The same as a word; null if the key is that of something else.
const char* essenceKind(const KLVKey& key);

struct ElementCount {
    KLVKey key;
    std::uint64_t elements = 0;
    std::uint64_t octets = 0; ///< of the values
};

/// Counts triplets by their keys, which it lists in the order in which they occur first. Triplets with a further key,
/// when there are very many, are omitted.
class ElementCounter {
public:
    void add(const KLVKey& key, std::uint64_t octets);

    template <class Visit>
    void forEach(Visit visit) const {
        std::for_each(entries_.begin(), entries_.end(), visit);
    }
    std::uint64_t omitted() const { return omitted_; }

private:
    std::map<KLVKey, std::size_t> places_; ///< in entries_
    std::vector<ElementCount> entries_;
    std::uint64_t omitted_ = 0;
};
