#include "inspect/HtmlTables.h"

#include <map>

#include "inspect/HtmlRegions.h"
#include "inspect/HtmlText.h"
#include "inspect/Rows.h"
#include "inspect/Words.h"
#include "mxf/metadata/descriptors/PictureDescriptor.h"
#include "mxf/metadata/descriptors/SoundDescriptor.h"
#include "mxf/metadata/model/MXFLabelNames.h"

void HtmlTables::writeFindings() {
    beginSection("findings", "Findings");
    out_ << "<p>" << verdict(inspection_.findings) << "</p>\n";
    if (!links_.findings().empty()) {
        out_ << "<div class=\"scroll tall\"><table class=\"full\"><thead><tr><th>level<th class=\"n\">position<th "
                "class=\"n\">hex"
                "<th>message<th>where<th>identifier</tr></thead><tbody>\n";
        for (std::size_t i = 0; i < links_.findings().size(); ++i) {
            const ReportedFinding& finding = *links_.findings()[i];
            out_ << "<tr id=\"finding-" << i << "\"><td><span class=\"badge " << name(finding.level) << "\">"
                 << name(finding.level) << "</span><td class=\"n\">" << links_.link(finding.position)
                 << "<td class=\"n\">" << inHex(finding.position) << "<td class=\"wide\">"
                 << escaped(cut(finding.message, 2000)) << "<td class=\"tight\">";
            if (const LayoutBlock* block = links_.blockAt(finding.position)) {
                out_ << links_.link(finding.position, styleOf(block->region).name);
            }
            if (const auto set = links_.setAt(finding.position)) {
                out_ << " <a href=\"#set-" << *set << "\">set</a>";
            }
            out_ << "<td class=\"mono soft\">" << toString(finding.id) << "</tr>\n";
        }
        out_ << "</tbody></table></div>\n";
    }
    writeOmitted(inspection_.findings.omitted(), "findings before the last");
    out_ << "</section>\n";
}

void HtmlTables::writePartitions() {
    const StructureCollector& structure = inspection_.structure;
    beginSection("partitions", "Partitions");
    // Offsets in packs count from the end of the run-in.
    const auto offset = [&](std::uint64_t value) {
        return value > ~structure.runIn() ? std::to_string(value)
                                          : links_.link(structure.runIn() + value, std::to_string(value));
    };
    writeTable(partitionTable(), "partitions", structure.partitions(), [&](const FoundPartition& partition) {
        Table::Row row = toRow(partition);
        row[0] = links_.link(partition.offset);
        row[5] = offset(partition.pack.thisPartition);
        row[6] = offset(partition.pack.previousPartition);
        row[7] = offset(partition.pack.footerPartition);
        return row;
    });
    writeLabels();
    out_ << "<h2 id=\"random-index\">Random index</h2>\n";
    if (structure.randomIndex()) {
        writeTable(randomIndexTable(), "entries", *structure.randomIndex(), [&](const MXFRandomIndexEntry& entry) {
            Table::Row row = toRow(entry);
            row[0] = offset(entry.byteOffset);
            return row;
        });
    } else {
        out_ << "<p class=\"soft\">none</p>\n";
    }
    out_ << "</section>\n";
}

void HtmlTables::writeEssence() {
    const BodyCounter& body = inspection_.body;
    beginSection("essence", "Essence");
    writeDescriptors();
    std::uint64_t octets = 0;
    body.essence().forEach([&](const ElementCount& count) { octets += count.octets; });
    writeTable(essenceTable(), "elements", body.essence(), [&](const ElementCount& count) {
        Table::Row row = toRow(count);
        row[0] = "<span class=\"mono\">" + row[0] + "</span>";
        row[1] = "<i class=\"sw " + row[1] + "\"></i>" + row[1];
        row[3] += " <span class=\"soft\">" + percentage(count.octets, octets) + "</span>";
        return row;
    });
    const std::string timecodes = timecodeRange(body);
    out_ << "<p>Content packages: " << body.packages() << (timecodes.empty() ? "" : ", ") << timecodes
         << ". System elements: " << body.systemElements() << ".</p>\n<h2>Generic streams</h2>\n";
    writeTable(otherTripletsTable(), "triplets", inspection_.genericStreams.triplets(), [&](const ElementCount& count) {
        Table::Row row = toRow(count);
        row[0] = "<span class=\"mono\">" + row[0] + "</span>";
        return row;
    });
    out_ << "</section>\n";
}

void HtmlTables::writeIndex() {
    beginSection("index", "Index table segments");
    writeTable(segmentTable(), "segments", inspection_.index.segments(), [&](const FoundSegment& segment) {
        Table::Row row = toRow(segment);
        row[0] = links_.link(segment.offset);
        return row;
    });
    out_ << "</section>\n";
}

void HtmlTables::writeLabels() {
    constexpr std::size_t maxLabels = 200;
    std::map<KLVKey, std::uint64_t> patterns;
    std::map<KLVKey, std::uint64_t> containers;
    const auto count = [](std::map<KLVKey, std::uint64_t>& labels, const KLVKey& label) {
        if (labels.size() < maxLabels || labels.count(label) != 0) {
            ++labels[label];
        }
    };
    inspection_.structure.partitions().forEach([&](const FoundPartition& partition) {
        count(patterns, partition.pack.operationalPattern);
        for (const KLVKey& label : partition.pack.essenceContainers) {
            count(containers, label);
        }
    });
    const auto write = [&](const char* what, const std::map<KLVKey, std::uint64_t>& labels) {
        for (const auto& [label, partitions] : labels) {
            out_ << "<tr><td>" << what << "<td class=\"mono\">" << toString(label) << "<td class=\"wide\">"
                 << nameOf(label) << "<td class=\"n\">" << partitions << "</tr>\n";
        }
    };
    out_ << "<div class=\"scroll tall\"><table><thead><tr><th>label<th><th>name"
            "<th class=\"n\">partitions</tr></thead><tbody>\n";
    write("operational pattern", patterns);
    write("essence container", containers);
    out_ << "</tbody></table></div>\n";
}

std::string HtmlTables::nameOf(const KLVKey& label) {
    const char* const known = mxfutil::labelName(label);
    return known == nullptr ? std::string() : known;
}

void HtmlTables::writeDescriptors() {
    const Table table({{"descriptor"}, {"track", Table::Right}, {"what it describes"}, {"coding"}, {"container"}});
    BoundedList<const FileDescriptor*, 200> descriptors;
    links_.forEachShownSet([&](const MetadataRoot& set) {
        if (const auto* descriptor = dynamic_cast<const FileDescriptor*>(&set)) {
            descriptors.add(descriptor);
        }
    });
    writeTable(table, "descriptors", descriptors, [&](const FileDescriptor* descriptor) {
        std::string what;
        KLVKey coding;
        if (const auto* picture = dynamic_cast<const PictureDescriptor*>(descriptor)) {
            what = std::to_string(picture->getStoredWidth()) + " × " + std::to_string(picture->getStoredHeight()) +
                   " stored, aspect ratio " + toString(picture->getAspectRatio()) + ", ";
            coding = picture->hasPictureEssenceCoding() ? picture->getPictureEssenceCoding() : KLVKey{};
        } else if (const auto* sound = dynamic_cast<const SoundDescriptor*>(descriptor)) {
            what = quantity(sound->getChannelCount(), "channel") + ", " + std::to_string(sound->getQuantizationBits()) +
                   " bits, " + toString(sound->getAudioSamplingRate()) + " Hz, ";
            coding = sound->hasSoundEssenceCompression() ? sound->getSoundEssenceCompression() : KLVKey{};
        }
        return Table::Row{links_.setLink(*descriptor),
                          descriptor->hasLinkedTrackID() ? std::to_string(descriptor->getLinkedTrackID()) : "",
                          what + "sample rate " + toString(descriptor->getSampleRate()), nameOf(coding),
                          nameOf(descriptor->getEssenceContainer())};
    });
}
