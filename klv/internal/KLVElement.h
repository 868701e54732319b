#pragma once

#include <cstdint>

#include "klv/KLVKey.h"

namespace bryx {

class KLVWalk;

/// One triplet, from the end of its key on.
class KLVElement {
public:
    KLVElement(KLVWalk& walk, const KLVKey& key) : walk_(walk), key_(key) {}
    virtual ~KLVElement() = default;
    KLVElement(const KLVElement&) = delete;
    KLVElement& operator=(const KLVElement&) = delete;

    /// Walks the element, driving the handler.
    virtual void parse() = 0;

protected:
    /// Reads the length of the triplet, after which its start event comes.
    std::uint64_t readLength();

    KLVWalk& walk_;
    const KLVKey& key_;
};

class KLVIndividualItem final : public KLVElement {
public:
    using KLVElement::KLVElement;
    void parse() override;
};

class KLVLabel final : public KLVElement {
public:
    using KLVElement::KLVElement;
    void parse() override;
};

class KLVUniversalSet final : public KLVElement {
public:
    using KLVElement::KLVElement;
    void parse() override;
};

class KLVLocalSet final : public KLVElement {
public:
    using KLVElement::KLVElement;
    void parse() override;
};

class KLVFixedLengthPack final : public KLVElement {
public:
    using KLVElement::KLVElement;
    void parse() override;
};

class KLVVariableLengthPack final : public KLVElement {
public:
    using KLVElement::KLVElement;
    void parse() override;
};

class KLVWrapper final : public KLVElement {
public:
    using KLVElement::KLVElement;
    void parse() override;
};

} // namespace bryx
