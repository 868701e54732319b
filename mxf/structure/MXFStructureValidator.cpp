#include "mxf/structure/MXFStructureValidator.h"

#include <algorithm>
#include <string>

#include "klv/Locator.h"
#include "mxf/structure/MXFPackLimits.h"
#include "mxf/structure/MXFStructureFindings.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace findings = mxfutil::findings;
using klvutil::report;

namespace {

MXFStructureHandler& present(MXFStructureHandler* handler) {
    util::require(handler != nullptr, "structure handler is present");
    return *handler;
}

/// Item complexities 1 to 3 of ST 377-1 §8.3 are the generalized patterns; from 10h on they are specialized.
bool isGeneralizedPattern(const KLVKey& label) {
    constexpr KLVKey pattern{{0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01, 0x0D, 0x01, 0x02, 0x01}};
    return std::equal(label.octets.begin(), label.octets.begin() + 7, pattern.octets.begin()) &&
           std::equal(label.octets.begin() + 8, label.octets.begin() + 12, pattern.octets.begin() + 8) &&
           label[12] >= 1 && label[12] <= 3;
}

} // namespace

MXFStructureValidator::MXFStructureValidator(MXFStructureHandler* next) : next_(present(next)) {}

MXFStructureValidator::~MXFStructureValidator() = default;

void MXFStructureValidator::setLocator(const Locator& locator) {
    locator_ = &locator;
    if (state_ != State::AfterRunIn) {
        forgetFile();
    }
}

void MXFStructureValidator::forgetFile() {
    state_ = State::Initial;
    stopped_ = false;
    file_ = {};
}

std::int64_t MXFStructureValidator::position() const {
    util::require(locator_ != nullptr, "has locator");
    return locator_->streampos();
}

void MXFStructureValidator::runIn(std::uint64_t length) {
    util::require(state_ == State::Initial, "before run-in");
    file_.runIn = length;
    state_ = State::AfterRunIn;
    next_.runIn(length);
}

void MXFStructureValidator::startStructure() {
    util::require(state_ == State::Initial || state_ == State::AfterRunIn, "before start");
    file_.origin = position();
    util::require(static_cast<std::uint64_t>(file_.origin) >= file_.runIn, "correct runIn");
    state_ = State::Started;
    next_.startStructure();
}

void MXFStructureValidator::startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) {
    util::require(mxfutil::isPartitionPackKey(key), "is partition");
    const MXFPartitionKind kind = mxfutil::partitionKind(key);
    checkOrder(kind);
    const auto offset = static_cast<std::uint64_t>(position() - file_.origin);
    if (file_.runIn != 0 && isGeneralizedPattern(pack.operationalPattern)) {
        report(errorHandler_, findings::generalizedPatternWithRunIn);
    }
    checkVersion(pack);
    if (kind == MXFPartitionKind::Header) {
        const MXFPartitionStatus status = mxfutil::partitionStatus(key);
        file_.headerAnnouncesFooter = pack.footerPartition != 0;
        file_.headerIsClosed =
            status == MXFPartitionStatus::ClosedIncomplete || status == MXFPartitionStatus::ClosedComplete;
    }
    checkOffsets(kind, pack, offset);
    checkFields(kind, pack);
    file_.previousPartition = offset;
    ++file_.partitionCount;
    if (file_.partitions.size() < mxfutil::maxRandomIndexEntries) {
        file_.partitions.push_back({pack.bodySID, offset});
    }
    next_.startPartition(key, pack, headerStart);
}

void MXFStructureValidator::checkOrder(MXFPartitionKind kind) {
    switch (state_) {
    case State::Started:
        if (kind != MXFPartitionKind::Header) {
            report(errorHandler_, findings::missingHeaderPartition);
        }
        break;
    case State::AfterHeaderOrBody:
        if (kind == MXFPartitionKind::Header) {
            report(errorHandler_, findings::unexpectedHeaderPartition);
        }
        break;
    case State::AfterFooter:
        report(errorHandler_, findings::unexpectedPartition);
        break;
    case State::AfterRandomIndex:
        report(errorHandler_, findings::partitionAfterRandomIndex);
        break;
    default:
        util::failAssertion("before partition");
    }
    state_ = kind == MXFPartitionKind::Footer ? State::InFooter : State::InHeaderOrBody;
}

void MXFStructureValidator::checkVersion(const MXFPartitionPack& pack) {
    const klvutil::Finding* finding = nullptr;
    if (pack.majorVersion == 0) {
        finding = &findings::invalidVersion;
    } else if (pack.majorVersion != majorVersion) {
        finding = &findings::incompatibleVersion;
    } else if (pack.minorVersion < minorVersion) {
        finding = &findings::earlierVersion;
    } else if (pack.minorVersion > minorVersion) {
        finding = &findings::laterVersion;
    }
    // All partitions of a file mostly have one version, whatever it is.
    if (finding != nullptr && file_.versionFindings.insert(finding->id).second) {
        report(errorHandler_, *finding,
               mxfutil::versionText(pack.majorVersion, pack.minorVersion) + " (implemented " +
                   mxfutil::versionText(majorVersion, minorVersion) + ")");
    }
}

void MXFStructureValidator::checkOffsets(MXFPartitionKind kind, const MXFPartitionPack& pack, std::uint64_t offset) {
    if (pack.thisPartition != offset) {
        report(errorHandler_, findings::incorrectThisPartition);
    }
    if (pack.previousPartition != file_.previousPartition) {
        report(errorHandler_, findings::incorrectPreviousPartition);
    }
    if (kind == MXFPartitionKind::Footer) {
        file_.footerSeen = true;
        if (pack.footerPartition != offset) {
            report(errorHandler_, findings::incorrectFooterPartition);
        }
        if (file_.footerAnnounced != 0 && file_.footerAnnounced != offset) {
            report(errorHandler_, findings::incorrectPreviousFooterPartition);
        }
    } else if (pack.footerPartition != 0) {
        if (file_.footerAnnounced != 0 && file_.footerAnnounced != pack.footerPartition) {
            report(errorHandler_, findings::inconsistentFooterPartition);
        }
        file_.footerAnnounced = pack.footerPartition;
        file_.greatestAnnounced = std::max(file_.greatestAnnounced, pack.footerPartition);
    }
}

void MXFStructureValidator::checkFields(MXFPartitionKind kind, const MXFPartitionPack& pack) {
    if (pack.kagSize != 0) {
        if (pack.headerByteCount % pack.kagSize != 0) {
            report(errorHandler_, findings::headerByteCountOffKAG);
        }
        if (pack.indexByteCount % pack.kagSize != 0) {
            report(errorHandler_, findings::indexByteCountOffKAG);
        }
    }
    if ((pack.indexSID == 0) != (pack.indexByteCount == 0)) {
        report(errorHandler_, findings::inconsistentIndexSID);
    }
    if (pack.bodySID == 0 && pack.bodyOffset != 0) {
        report(errorHandler_, findings::inconsistentBodySID);
    }
    if (kind == MXFPartitionKind::Footer && pack.bodySID != 0) {
        report(errorHandler_, findings::bodySIDInFooter);
    }
}

void MXFStructureValidator::endPartition(const KLVKey& key) {
    util::require(state_ == State::InHeaderOrBody || state_ == State::InFooter, "in partition");
    const bool footer = mxfutil::partitionKind(key) == MXFPartitionKind::Footer;
    if (state_ == State::InHeaderOrBody) {
        util::require(!footer, "is header or body partition");
        state_ = State::AfterHeaderOrBody;
    } else {
        util::require(footer, "is footer partition");
        state_ = State::AfterFooter;
    }
    next_.endPartition(key);
}

void MXFStructureValidator::randomIndex(const MXFRandomIndex& index) {
    file_.randomIndexSeen = true;
    if (state_ == State::Started || state_ == State::AfterRandomIndex) {
        report(errorHandler_, findings::unexpectedRandomIndex);
    } else {
        util::require(state_ == State::AfterHeaderOrBody || state_ == State::AfterFooter, "before random index");
    }
    state_ = State::AfterRandomIndex;
    // The order of the entries is not looked at here: partitions and index are compared as sets.
    if (!file_.partitions.empty() && file_.partitions.size() == file_.partitionCount) {
        MXFRandomIndex listed = index;
        std::sort(listed.begin(), listed.end());
        if (listed != file_.partitions) {
            report(errorHandler_, findings::incorrectRandomIndex);
        }
    }
    next_.randomIndex(index);
}

void MXFStructureValidator::checkEnd() const {
    // What a partition says of a footer that is not there, or of one beyond the end, was true of a longer file.
    const bool isCut = (file_.footerAnnounced != 0 && !file_.footerSeen) ||
                       file_.greatestAnnounced > static_cast<std::uint64_t>(position() - file_.origin);
    if (isCut) {
        report(errorHandler_, findings::missingFooterPartition);
    }
    if (!file_.randomIndexSeen && !file_.headerAnnouncesFooter) {
        report(errorHandler_, findings::missingRandomIndex);
    } else if (!isCut && !file_.footerSeen && file_.headerIsClosed) {
        report(errorHandler_, findings::unannouncedFooterPartition);
    }
}

void MXFStructureValidator::endStructure() {
    if (!stopped_) {
        checkEnd();
    }
    forgetFile();
    next_.endStructure();
}

} // namespace bryx
