#include "mxf/essence/MXFPDProxySystemParser.h"

#include <algorithm>
#include <stdexcept>

#include "klv/ErrorHandler.h"
#include "klv/ValueCoding.h"
#include "mxf/essence/MXFSystemFindings.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace findings = mxfutil::findings;

MXFPDProxySystemHandler::~MXFPDProxySystemHandler() = default;
MXFPDProxySystemParser::~MXFPDProxySystemParser() = default;

bool MXFPDProxySystemParser::wantsSystemElement(const KLVKey& key) {
    return handler_ != nullptr && key == mxfutil::pdProxySetKey;
}

void MXFPDProxySystemParser::localSet(const KLVKey& key, const MXFGCItems& items) {
    util::require(wantsSystemElement(key), "valid PDProxy local set");
    ++element_;
    MXFPDProxyMetadata metadata;
    bool isComplete = true;
    MXFPDProxyMetadata::properties(metadata, [&](const char* name, std::uint32_t tag, auto& value) {
        const auto item =
            std::find_if(items.begin(), items.end(), [&](const MXFGCItem& candidate) { return candidate.tag == tag; });
        if (item == items.end()) {
            reporter_.report(errorHandler_, findings::missingPDProxyProperty, element_, name);
            isComplete = false;
            return;
        }
        try {
            value = klvutil::readValue<std::decay_t<decltype(value)>>({item->data, item->data + item->size});
        } catch (const std::length_error& error) {
            reporter_.report(errorHandler_, findings::invalidPDProxyProperty, element_, name, error.what());
            isComplete = false;
        }
    });
    if (isComplete && metadata.frameCount != metadata.timecodes.size()) {
        reporter_.report(errorHandler_, findings::inconsistentPDProxyTimecodes, element_);
    }
    handler_->pdProxyMetadata(metadata, items);
}

void MXFPDProxySystemParser::fixedLengthPack(const KLVKey& /*key*/, const std::uint8_t* /*data*/,
                                             std::size_t /*size*/) {
    util::failAssertion("valid PDProxy local set");
}

void MXFPDProxySystemParser::variableLengthPack(const KLVKey& /*key*/, const MXFGCItems& /*items*/) {
    util::failAssertion("valid PDProxy local set");
}

} // namespace bryx
