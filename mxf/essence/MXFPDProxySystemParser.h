#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "klv/FindingReporter.h"
#include "mxf/essence/MXFGCSystemHandler.h"
#include "mxf/essence/MXFSystemMetadataPack.h"
#include "util/Api.h"

namespace bryx {

class ErrorHandler;

/// What a proxy system item tells of its content package, which holds several frames (ST 394, ST 405).
struct MXFPDProxyMetadata {
    std::uint32_t frameCount = 0;
    std::vector<MXFTimecodeStamp> timecodes; ///< one for each frame

    /// Visits the properties: name, local tag (ST 405), value.
    template <class Self, class Visit>
    static void properties(Self& self, Visit&& visit) {
        visit("frameCount", std::uint32_t{0x0101}, self.frameCount);
        visit("timecodes", std::uint32_t{0x0102}, self.timecodes);
    }
};

/// Receives proxy system items.
class BRYX_API MXFPDProxySystemHandler {
public:
    virtual ~MXFPDProxySystemHandler();

    /// @param items all that the set has, those of @p metadata included
    virtual void pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems& items) = 0;
};

namespace mxfutil {

/// The key of the local set of a proxy system item: the first element of system scheme 1 (ST 394). Octet 7 is not
/// compared.
inline constexpr KLVKey pdProxySetKey = klvutil::key("060e2b34.02530101.0d010301.14020100");

} // namespace mxfutil

/// Decodes proxy system items, as the system handler of an MXFGCSplitter. Other system elements are declined. Whatever is
/// missing or wrong in a set is reported, and what there is passed on. After a thousand findings of a kind in a stream there
/// are no more.
class BRYX_API MXFPDProxySystemParser : public MXFGCSystemHandler {
public:
    /// @param handler not owned; if it is null, no element is wanted
    explicit MXFPDProxySystemParser(MXFPDProxySystemHandler* handler = nullptr) : handler_(handler) {}
    ~MXFPDProxySystemParser() override;

    void setSystemHandler(MXFPDProxySystemHandler* handler) { handler_ = handler; }
    void setErrorHandler(ErrorHandler* handler) { errorHandler_ = handler; }

    /// Tells that nothing follows in this stream. Another one may begin.
    void endSystemItems() { reporter_.clear(); }

    bool wantsSystemElement(const KLVKey& key) override;
    // All require "valid PDProxy local set": that the element is wanted, and a local set.
    void localSet(const KLVKey& key, const MXFGCItems& items) override;
    void fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) override;
    void variableLengthPack(const KLVKey& key, const MXFGCItems& items) override;

private:
    MXFPDProxySystemHandler* handler_;
    ErrorHandler* errorHandler_ = nullptr;
    FindingReporter reporter_;
    std::uint64_t element_ = 0; ///< which one is parsed
};

} // namespace bryx
