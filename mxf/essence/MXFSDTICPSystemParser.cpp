#include "mxf/essence/MXFSDTICPSystemParser.h"

#include <string>

#include "klv/ErrorHandler.h"
#include "klv/ValueCoding.h"
#include "mxf/essence/MXFSystemFindings.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace findings = mxfutil::findings;
using mxfutil::SDTICPElement;
using util::require;

namespace {

/// A kind of metadata: what it is called, and who receives it.
struct MetadataKind {
    const char* name;
    void (MXFSDTICPSystemHandler::*receive)(const MXFGCItems&);
};

MetadataKind kindOf(SDTICPElement element) {
    switch (element) {
    case SDTICPElement::Package:
        return {"package", &MXFSDTICPSystemHandler::packageMetadata};
    case SDTICPElement::Picture:
        return {"picture", &MXFSDTICPSystemHandler::pictureMetadata};
    case SDTICPElement::Sound:
        return {"sound", &MXFSDTICPSystemHandler::soundMetadata};
    default:
        return {"data", &MXFSDTICPSystemHandler::dataMetadata};
    }
}

} // namespace

MXFSDTICPSystemParser::~MXFSDTICPSystemParser() = default;

bool MXFSDTICPSystemParser::wantsSystemElement(const KLVKey& key) {
    if (handler_ == nullptr) {
        return false;
    }
    if (key == mxfutil::sdtiCPSystemMetadataKey || mxfutil::isSDTICPElementKey(key)) {
        return true;
    }
    reporter_.report(errorHandler_, findings::invalidSDTICPSystemElement, key);
    return false;
}

void MXFSDTICPSystemParser::startSystemItem(Expectation expectation) {
    seen_ = 0;
    expectation_ = expectation;
}

void MXFSDTICPSystemParser::endSystemItems() {
    if (expectation_ == Expectation::ControlDataAwaited) {
        reporter_.report(errorHandler_, findings::missingSDTICPControlData, element_);
    }
    startSystemItem(Expectation::ControlDataDone);
    reporter_.clear();
}

void MXFSDTICPSystemParser::fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) {
    require(handler_ != nullptr && key == mxfutil::sdtiCPSystemMetadataKey, "valid SDTI-CP fixed length pack");
    if (expectation_ == Expectation::ControlDataAwaited) {
        reporter_.report(errorHandler_, findings::missingSDTICPControlData, element_);
    }
    ++element_;
    const bool announces = size > 0 && (data[0] & MXFSystemBitmap::controlData) != 0;
    startSystemItem(announces ? Expectation::ControlDataAwaited : Expectation::NoControlData);
    if (size != MXFSystemMetadataPack::size) {
        reporter_.report(errorHandler_, findings::invalidSDTICPSystemMetadata, element_, std::to_string(size));
        return;
    }
    handler_->systemMetadata(klvutil::OctetReader(data, size).read<MXFSystemMetadataPack>());
}

void MXFSDTICPSystemParser::localSet(const KLVKey& key, const MXFGCItems& items) {
    require(handler_ != nullptr && mxfutil::isSDTICPElementKey(key), "valid SDTI-CP variable length pack");
    ++element_;
    if (expectation_ == Expectation::ControlDataDone) {
        reporter_.report(errorHandler_, findings::missingSDTICPSystemMetadata, element_);
        startSystemItem(Expectation::NoControlData);
    }
    const SDTICPElement element = mxfutil::sdtiCPElement(key);
    if (element == SDTICPElement::Control) {
        controlData(items);
    } else if (element == SDTICPElement::None) {
        reporter_.report(errorHandler_, findings::invalidSDTICPSystemElement, key);
    } else {
        metadata(element, key, items);
    }
}

void MXFSDTICPSystemParser::variableLengthPack(const KLVKey& key, const MXFGCItems& items) {
    localSet(key, items);
}

void MXFSDTICPSystemParser::metadata(SDTICPElement element, const KLVKey& key, const MXFGCItems& items) {
    const MetadataKind kind = kindOf(element);
    const auto flag = static_cast<std::uint8_t>(1U << static_cast<unsigned>(element));
    if ((seen_ & flag) != 0) {
        reporter_.report(errorHandler_, findings::unexpectedSDTICPMetadata, element_, kind.name);
    }
    if (key[15] != items.size()) {
        reporter_.report(errorHandler_, findings::incorrectSDTICPBlockCount, element_,
                         std::string(kind.name) + " metadata");
    }
    seen_ |= flag;
    (handler_->*kind.receive)(items);
}

void MXFSDTICPSystemParser::controlData(const MXFGCItems& items) {
    if (expectation_ == Expectation::NoControlData) {
        reporter_.report(errorHandler_, findings::unexpectedSDTICPControlData, element_);
    }
    if (items.size() != 1) {
        reporter_.report(errorHandler_, findings::incorrectSDTICPBlockCount, element_, "control data");
    }
    expectation_ = Expectation::ControlDataDone;
    const MXFGCItem first = items.empty() ? MXFGCItem{} : items.front();
    handler_->controlData(first.size == 0 ? nullptr : first.data, first.size);
}

} // namespace bryx
