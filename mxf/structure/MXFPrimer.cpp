#include "mxf/structure/MXFPrimer.h"

#include <stdexcept>
#include <string>

#include "klv/ValueCoding.h"
#include "mxf/structure/MXFPrimerFindings.h"
#include "mxf/structure/MXFStaticTags.h"
#include "util/byte_order.h"
#include "util/hex.h"

namespace findings = mxfutil::findings;
using klvutil::report;

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

void checkAgainstStaticTags(const MXFPrimerEntry& entry, ErrorHandler* errorHandler) {
    const KLVKey* const label = staticLabel(entry.tag);
    if (label != nullptr && *label != entry.label) {
        report(errorHandler, findings::nonStandardPrimerKey, text(entry));
    }
    const std::uint16_t tag = staticTag(entry.label);
    if (tag != 0 && tag != entry.tag) {
        report(errorHandler, findings::nonStandardPrimerTag, text(entry));
    }
}

void checkAgainstPrevious(const MXFPrimerEntry& entry, const MXFPrimer& previous,
                          const std::map<KLVKey, std::uint16_t>& tagsBefore, ErrorHandler* errorHandler) {
    const auto label = previous.find(entry.tag);
    if (label != previous.end() && label->second != entry.label) {
        // Dynamic tags hold for one region, and need not be the same in the next.
        report(errorHandler,
               entry.tag < firstDynamicTag ? findings::inconsistentPrimerKey : findings::inconsistentDynamicPrimerKey,
               text(entry));
    }
    const auto tag = tagsBefore.find(entry.label);
    if (tag != tagsBefore.end() && tag->second != entry.tag) {
        report(errorHandler, findings::inconsistentPrimerTag, text(entry));
    }
}

} // namespace

MXFPrimer readPrimerPack(const std::uint8_t* data, std::size_t size, const MXFPrimer* previous,
                         ErrorHandler* errorHandler) {
    MXFPrimer primer;
    const std::map<KLVKey, std::uint16_t> tagsBefore =
        previous == nullptr ? std::map<KLVKey, std::uint16_t>() : tagsByLabel(*previous);
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
                report(errorHandler, findings::invalidPrimerValue, text(entry));
            } else if (!primer.emplace(entry.tag, entry.label).second) {
                report(errorHandler, findings::repeatedPrimerTag, text(entry));
            } else {
                checkAgainstStaticTags(entry, errorHandler);
                if (previous != nullptr) {
                    checkAgainstPrevious(entry, *previous, tagsBefore, errorHandler);
                }
            }
        }
    } catch (const std::length_error& error) {
        report(errorHandler, findings::invalidPrimerPack, error.what());
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
