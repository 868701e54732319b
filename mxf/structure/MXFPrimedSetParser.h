#pragma once

#include <cstdint>
#include <vector>

#include "klv/DullKLVHandler.h"
#include "klv/FindingReporter.h"
#include "klv/KLVFilter.h"
#include "mxf/structure/MXFPrimedSet.h"
#include "mxf/structure/MXFPrimer.h"

namespace bryx {

class ErrorHandler;

/// Decodes local sets with two-octet tags (ST 377-1 §9) into primed sets. What a derived class parses, and with which
/// primer, it says by its hooks; everything else is forwarded to the next handler, if one is set.
///
/// Reports "unexpected repeated property", of which the first value is kept, once for each tag of a stream, and
/// "non-standard local item length type" for sets whose item lengths have not two octets, once for each key.
class BRYX_API MXFPrimedSetParser : public DullKLVFilter {
public:
    MXFPrimedSetParser();
    ~MXFPrimedSetParser() override;
    MXFPrimedSetParser(const MXFPrimedSetParser&) = delete;
    MXFPrimedSetParser& operator=(const MXFPrimedSetParser&) = delete;

    /// Where findings go; not owned. Without one, nothing is reported.
    void setErrorHandler(ErrorHandler* errorHandler) { errorHandler_ = errorHandler; }

    void setLocator(const Locator& locator) override;
    /// Requires "before start", unless setLocator has come since the stream before began: then that is over, ended by an
    /// exception.
    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;
    void berLengthForm(std::uint8_t form) override;
    /// Requires "before primed set" for a set with two-octet tags.
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm, KLVFieldForm lengthForm) override;
    void endLocalSet(const KLVKey& key) override;
    bool startLocalItem(std::uint32_t tag, std::uint64_t length) override;
    void endLocalItem(std::uint32_t tag) override;
    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& buffer) override;
    void value(const std::uint8_t* data, std::uint64_t size) override;

protected:
    /// The primer to decode with; asked for each item, so that it may change between sets.
    virtual const MXFPrimer& primer() const = 0;

    /// Whether a set with @p key is to be parsed; if not, it is forwarded.
    virtual bool wantsSet(const KLVKey& key) = 0;

    /// Whether sets with @p key may have BER item lengths; no set may here.
    virtual bool allowsBERLengths(const KLVKey& key) const;

    /// The primer has no entry for @p tag.
    /// @return the label to decode the item with, or null to skip it
    virtual const KLVKey* unknownTag(std::uint16_t tag) = 0;

    /// A set has been decoded; the callee may take its contents.
    virtual void primedSet(MXFPrimedSet& set) = 0;

    ErrorHandler* errorHandler() const { return errorHandler_; }

    /// Remembers what has been reported of this stream.
    FindingReporter& reporter() noexcept { return reporter_; }

private:
    enum class State { BeforeStart, BetweenSets, InPrimedSet };

    DullKLVHandler noNext_;
    ErrorHandler* errorHandler_ = nullptr;
    FindingReporter reporter_;
    const Locator* locator_ = nullptr;
    bool isLocated_ = false; ///< setLocator has come since the last stream began
    State state_ = State::BeforeStart;
    std::uint8_t form_ = klvutil::automaticBERLengthForm;
    MXFPrimedSet set_;
    std::vector<std::uint8_t>* property_ = nullptr; ///< the value being read; null when the item is not wanted
};

} // namespace bryx
