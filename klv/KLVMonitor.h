#pragma once

#include <cstdint>
#include <vector>

#include "klv/InputLocator.h"
#include "klv/KLVFilter.h"

namespace bryx {

/// Counts the octets of the events that pass and offers a locator with the positions that follow from them, for
/// streams that cannot tell their position, such as pipes and the output of a writer.
///
/// Positions are as Locator says. They begin at 0, or where rebase() puts them.
class BRYX_API KLVMonitor : public DullKLVFilter {
public:
    /// The locator of a monitor.
    class BRYX_API MonitoredLocator : public InputLocator {
    public:
        using InputLocator::InputLocator;
        ~MonitoredLocator() override;
    };

    /// What becomes of an item whose length is klvutil::unknownLength, if the next handler wants its value.
    enum class UnknownLengths : std::uint8_t {
        Rejected, ///< the start event fails: a reader's events have lengths, and positions follow from them
        Counted   ///< the octets of its value are counted as they pass: the next handler is a writer
    };

    explicit KLVMonitor(UnknownLengths unknownLengths = UnknownLengths::Rejected);
    ~KLVMonitor() override;
    KLVMonitor(const KLVMonitor&) = delete;
    KLVMonitor& operator=(const KLVMonitor&) = delete;

    /// Valid as long as the monitor is.
    virtual const Locator& getLocator() const;

    /// Forgets what was counted: the octet that comes next has the position @p base.
    virtual void rebase(std::streampos base);

    /// Requires "accurate monitoring is possible": accurate lengths. What an aborted stream has left open is forgotten.
    void startStream(bool accurateLengths) override;
    void berLengthForm(std::uint8_t form) override;

    // Start events with a length require "has BER length form": that berLengthForm has come before. They fail with
    // "wants value for unknown length" when the next handler wants a value whose length is not known, unless such values
    // are counted. End events require "in KLV triplet": a start event before.
    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override;
    void endIndividualItem(const KLVKey& key) override;
    bool startLabel(const KLVKey& key) override;
    void endLabel(const KLVKey& key) override;
    bool startUniversalSet(const KLVKey& key, std::uint64_t length) override;
    void endUniversalSet(const KLVKey& key) override;
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm, KLVFieldForm lengthForm) override;
    void endLocalSet(const KLVKey& key) override;
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override;
    void endFixedLengthPack(const KLVKey& key) override;
    bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) override;
    void endVariableLengthPack(const KLVKey& key) override;
    bool startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) override;
    void endWrapper(const KLVKey& key) override;
    void value(const std::uint8_t* data, std::uint64_t size) override;

private:
    /// A triplet whose end event has not come yet.
    struct OpenTriplet {
        std::streamoff start;
        std::streamoff end; ///< so far, if the length is not known
        bool isKnown;
    };

    std::uint64_t headSize() const;
    template <class Start>
    bool start(std::uint64_t headSize, std::uint64_t length, Start forward);
    template <class End>
    void end(End forward);

    UnknownLengths unknownLengths_;
    std::vector<OpenTriplet> open_;
    std::streamoff next_ = 0;     ///< position of the octet that comes next
    std::streampos position_ = 0; ///< what the locator tells
    std::uint64_t headSize_ = 0;  ///< octets of key and length in the form in force; 0 for none
    MonitoredLocator locator_{position_};
};

} // namespace bryx
