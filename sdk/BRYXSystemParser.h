#pragma once

#include "mxf/essence/MXFPDProxySystemParser.h"
#include "mxf/essence/MXFSDTICPSystemParser.h"
#include "util/Api.h"

namespace bryx {

/// Decodes system items of both schemes that are known, as the system handler of an MXFGCSplitter: the item type in the key
/// of an element, its octet 12, tells which. What has no handler is declined silently.
class BRYX_API BRYXSystemParser : public MXFGCSystemHandler {
public:
    ~BRYXSystemParser() override;

    // Handlers are not owned; each may be null.

    void setSDTICPSystemHandler(MXFSDTICPSystemHandler* handler) { sdtiCP_.setSystemHandler(handler); }
    void setPDProxySystemHandler(MXFPDProxySystemHandler* handler) { pdProxy_.setSystemHandler(handler); }
    void setErrorHandler(ErrorHandler* handler);

    /// As of both parsers.
    void endSystemItems() {
        sdtiCP_.endSystemItems();
        pdProxy_.endSystemItems();
    }

    bool wantsSystemElement(const KLVKey& key) override;
    void localSet(const KLVKey& key, const MXFGCItems& items) override;
    void fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) override;
    void variableLengthPack(const KLVKey& key, const MXFGCItems& items) override;

private:
    MXFGCSystemHandler& parserOf(const KLVKey& key);

    MXFSDTICPSystemParser sdtiCP_;
    MXFPDProxySystemParser pdProxy_;
};

} // namespace bryx
