#pragma once

#include <cstddef>
#include <cstdint>

#include "klv/FindingReporter.h"
#include "mxf/essence/MXFGCSystemHandler.h"
#include "mxf/essence/MXFSDTICPSystemHandler.h"
#include "util/Api.h"

namespace bryx {

class ErrorHandler;

/// Decodes SDTI-CP compatible system items (ST 326, ST 385), as the system handler of an MXFGCSplitter, and checks that
/// their elements come in order and are complete.
///
/// Whatever is wrong with an element is reported, and the element passed on all the same; except a pack of the wrong size,
/// and what is no element of a system item. After a thousand findings of a kind in a stream there are no more. Control data
/// that the last pack of a stream announces is missed when endSystemItems() is called.
class BRYX_API MXFSDTICPSystemParser : public MXFGCSystemHandler {
public:
    /// @param handler not owned; if it is null, no element is wanted
    explicit MXFSDTICPSystemParser(MXFSDTICPSystemHandler* handler = nullptr) : handler_(handler) {}
    ~MXFSDTICPSystemParser() override;

    void setSystemHandler(MXFSDTICPSystemHandler* handler) { handler_ = handler; }
    void setErrorHandler(ErrorHandler* handler) { errorHandler_ = handler; }

    /// Tells that nothing follows in this stream, as the structure handler of the splitter learns it: control data that
    /// the last pack announced will not come. Another stream may begin.
    void endSystemItems();

    bool wantsSystemElement(const KLVKey& key) override;
    /// Requires "valid SDTI-CP variable length pack": that the element is wanted. Items with tags, as files have them.
    void localSet(const KLVKey& key, const MXFGCItems& items) override;
    /// Requires "valid SDTI-CP fixed length pack".
    void fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) override;
    /// Requires "valid SDTI-CP variable length pack". The same as a local set, but for the tags.
    void variableLengthPack(const KLVKey& key, const MXFGCItems& items) override;

private:
    enum class Expectation : std::uint8_t { ControlDataAwaited, NoControlData, ControlDataDone };

    void metadata(mxfutil::SDTICPElement element, const KLVKey& key, const MXFGCItems& items);
    void controlData(const MXFGCItems& items);
    void startSystemItem(Expectation expectation);

    MXFSDTICPSystemHandler* handler_;
    ErrorHandler* errorHandler_ = nullptr;
    Expectation expectation_ = Expectation::ControlDataDone;
    std::uint8_t seen_ = 0; ///< the kinds of metadata in this system item, a bit each
    FindingReporter reporter_;
    std::uint64_t element_ = 0; ///< which one is parsed
};

} // namespace bryx
