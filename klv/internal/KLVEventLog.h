#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <boost/crc.hpp>

#include "klv/KLVHandler.h"

namespace bryx::klvutil {

/// Keeps the events of an outermost triplet for comparison: of values, their sizes and a check sum.
class KLVEventLog : public KLVHandler {
public:
    /// Whether the end of an outermost triplet was the last event.
    bool isComplete() const { return depth_ == 0 && !events_.empty(); }

    /// The key of the triplet; one of zeros if there is none.
    KLVKey key() const { return events_.empty() ? KLVKey() : events_.front().key; }

    void clear() {
        events_.clear();
        depth_ = 0;
    }

    /// How the events differ from those of @p read; empty if they do not. A form of lengths that was not told here does not
    /// count.
    std::string difference(const KLVEventLog& read) const;

    void setLocator(const Locator& locator) override;
    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;
    void berLengthForm(std::uint8_t form) override;
    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override;
    void endIndividualItem(const KLVKey& key) override;
    bool startLabel(const KLVKey& key) override;
    void endLabel(const KLVKey& key) override;
    bool startUniversalSet(const KLVKey& key, std::uint64_t length) override;
    void endUniversalSet(const KLVKey& key) override;
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm, KLVFieldForm lengthForm) override;
    void endLocalSet(const KLVKey& key) override;
    bool startLocalItem(std::uint32_t tag, std::uint64_t length) override;
    void endLocalItem(std::uint32_t tag) override;
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override;
    void endFixedLengthPack(const KLVKey& key) override;
    bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) override;
    void endVariableLengthPack(const KLVKey& key) override;
    bool startVariableLengthPackItem(std::uint64_t length) override;
    void endVariableLengthPackItem() override;
    bool startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) override;
    void endWrapper(const KLVKey& key) override;
    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& buffer) override;
    void value(const std::uint8_t* data, std::uint64_t size) override;

private:
    using CheckSum = boost::crc_optimal<64, 0x42F0E1EBA9EA3693, ~std::uint64_t{0}, ~std::uint64_t{0}, false, false>;

    /// A start or an end.
    struct Event {
        const char* name;
        KLVKey key;
        std::uint64_t length;    ///< or the tag of an end
        std::uint8_t lengthForm; ///< 0 if none has been told, or there is no length
        std::uint32_t detail;    ///< tag, or the forms of items, or the kind of wrapper
        std::uint64_t valueSize = 0;
        CheckSum::value_type checkSum = 0;
    };

    bool start(const char* name, const KLVKey& key, std::uint64_t length, std::uint32_t detail = 0);
    void end(const char* name, const KLVKey& key, std::uint32_t detail = 0);

    std::vector<Event> events_;
    std::size_t depth_ = 0;
    std::uint8_t form_ = 0;
    CheckSum sum_;
};

} // namespace bryx::klvutil
