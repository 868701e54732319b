#include "mxf/structure/MXFPrimer.h"

#include <stdexcept>
#include <string>

#include "klv/FindingReporter.h"
#include "klv/ValueCoding.h"
#include "mxf/structure/MXFPrimerFindings.h"
#include "mxf/structure/MXFStaticTags.h"
#include "util/byte_order.h"
#include "util/hex.h"

namespace bryx {

namespace findings = mxfutil::findings;

namespace mxfutil {

namespace {

std::string text(const MXFPrimerEntry& entry) {
    return tagText(entry.tag) + " " + toString(entry.label);
}

/// The entries of a primer the other way round.
std::map<KLVKey, std::uint16_t> tagsByLabel(const MXFPrimer& primer) {
    std::map<KLVKey, std::uint16_t> tags;
    for (const auto& [tag, label] : primer) {
        tags.emplace(label, tag);
    }
    return tags;
}

/// Reports what is wrong with entries.
class EntryChecker {
public:
    EntryChecker(const MXFPrimer* previous, ErrorHandler* errorHandler, FindingReporter& reporter)
        : previous_(previous),
          tagsBefore_(previous == nullptr ? std::map<KLVKey, std::uint16_t>() : tagsByLabel(*previous)),
          errorHandler_(errorHandler), reporter_(reporter) {}

    void report(const klvutil::Finding& finding, const MXFPrimerEntry& entry) {
        reporter_.report(errorHandler_, finding, entry.tag, text(entry));
    }

    void check(const MXFPrimerEntry& entry) {
        checkAgainstStaticTags(entry);
        if (previous_ != nullptr) {
            checkAgainstPrevious(entry);
        }
    }

private:
    void checkAgainstStaticTags(const MXFPrimerEntry& entry) {
        const KLVKey* const label = staticLabel(entry.tag);
        if (label != nullptr && *label != entry.label) {
            report(findings::nonStandardPrimerKey, entry);
        }
        const std::uint16_t tag = staticTag(entry.label);
        // One primer serves all sets, and only some of them may give the property its static tag.
        if (tag != 0 && tag != entry.tag && !(entry.tag >= firstDynamicTag && isElsewhereDynamic(entry.label))) {
            report(findings::nonStandardPrimerTag, entry);
        }
    }

    void checkAgainstPrevious(const MXFPrimerEntry& entry) {
        const auto label = previous_->find(entry.tag);
        if (label != previous_->end() && label->second != entry.label) {
            // Dynamic tags hold for one region, and need not be the same in the next.
            report(entry.tag < firstDynamicTag ? findings::inconsistentPrimerKey
                                               : findings::inconsistentDynamicPrimerKey,
                   entry);
        }
        const auto tag = tagsBefore_.find(entry.label);
        if (tag != tagsBefore_.end() && tag->second != entry.tag) {
            report(findings::inconsistentPrimerTag, entry);
        }
    }

    const MXFPrimer* previous_;
    std::map<KLVKey, std::uint16_t> tagsBefore_;
    ErrorHandler* errorHandler_;
    FindingReporter& reporter_;
};

} // namespace

MXFPrimer readPrimerPack(const std::uint8_t* data, std::size_t size, const MXFPrimer* previous,
                         ErrorHandler* errorHandler) {
    FindingReporter reporter;
    return readPrimerPack(data, size, previous, errorHandler, reporter);
}

MXFPrimer readPrimerPack(const std::uint8_t* data, std::size_t size, const MXFPrimer* previous,
                         ErrorHandler* errorHandler, FindingReporter& reporter) {
    MXFPrimer primer;
    EntryChecker checker(previous, errorHandler, reporter);
    klvutil::OctetReader octets(data, size);
    try {
        const auto count = octets.read<std::uint32_t>();
        const auto entrySize = octets.read<std::uint32_t>();
        if (count != 0 && entrySize < primerEntrySize) {
            throw std::length_error("unexpected size of a batch element");
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            klvutil::OctetReader fields(octets.take(entrySize), entrySize);
            const auto entry = fields.read<MXFPrimerEntry>();
            if (entry.tag == 0) { // which ST 377-1 keeps free
                checker.report(findings::invalidPrimerValue, entry);
            } else if (!primer.emplace(entry.tag, entry.label).second) {
                checker.report(findings::repeatedPrimerTag, entry);
            } else {
                checker.check(entry);
            }
        }
    } catch (const std::length_error& error) {
        reporter.report(errorHandler, findings::invalidPrimerPack, 0, error.what());
    }
    return primer;
}

std::vector<std::uint8_t> writePrimerPack(const MXFPrimer& primer) {
    std::vector<std::uint8_t> octets;
    octets.reserve(8 + primer.size() * primerEntrySize);
    klvutil::OctetWriter writer(octets);
    writer.write(static_cast<std::uint32_t>(primer.size()));
    writer.write(static_cast<std::uint32_t>(primerEntrySize));
    for (const auto& [tag, label] : primer) {
        writer.write(MXFPrimerEntry{tag, label});
    }
    return octets;
}

std::string tagText(std::uint32_t tag) {
    std::uint8_t octets[4];
    const std::size_t size = tag > 0xFFFF ? 4 : 2;
    util::storeBigEndian(octets, tag, size);
    std::string result = "0x";
    util::appendHex(result, octets, size);
    return result;
}

} // namespace mxfutil

} // namespace bryx
