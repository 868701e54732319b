#include "inspect/TextReport.h"

#include "inspect/Rows.h"
#include "inspect/Words.h"

namespace {

/// The cells of an entry of any table.
const auto cells = [](const auto& entry) { return toRow(entry); };

void printFile(std::ostream& out, const std::string& name, const Inspection& inspection) {
    const std::uint64_t runIn = inspection.structure.runIn();
    out << "File: " << name << '\n';
    if (!inspection.findings.summary().empty()) {
        out << "Not read to its end: " << inspection.findings.summary() << '\n';
    }
    out << "Size: ";
    if (inspection.fileSize) {
        out << *inspection.fileSize << " octets\n";
    } else {
        out << "unknown (the input cannot seek)\n";
    }
    out << "Run-in: " << (runIn == 0 ? "none" : std::to_string(runIn) + " octets") << '\n';
}

/// The labels of the first partition, and those of others that do not repeat what the one before has.
void printLabels(std::ostream& out, const StructureCollector::Partitions& partitions) {
    const MXFPartitionPack* previous = nullptr;
    partitions.forEach([&](const FoundPartition& partition) {
        const MXFPartitionPack& pack = partition.pack;
        const bool repeats = previous != nullptr && pack.operationalPattern == previous->operationalPattern &&
                             pack.essenceContainers == previous->essenceContainers;
        if (!repeats) {
            if (previous != nullptr) {
                out << "  from offset " << partition.offset << " on\n";
            }
            out << "  operational pattern  " << toString(pack.operationalPattern)
                << patternName(pack.operationalPattern) << '\n';
            for (const KLVKey& label : pack.essenceContainers) {
                out << "  essence container    " << toString(label) << '\n';
            }
            if (pack.essenceContainers.empty()) {
                out << "  essence containers   none\n";
            }
        }
        previous = &pack;
    });
}

void printStructure(std::ostream& out, const StructureCollector& structure) {
    partitionTable().print(out, "Partitions", "partitions", structure.partitions(), cells);
    printLabels(out, structure.partitions());
    randomIndexTable().print(out, "Random index", "entries",
                             structure.randomIndex().value_or(StructureCollector::RandomIndex{}), cells);
}

/// Prints a set and, indented below the references to them, the sets that it owns.
void printSet(std::ostream& out, const MetadataRoot& set, const std::string& indent) {
    out << indent << set.getDescription().name() << "  " << toString(set.getInstanceUID()) << "  at offset "
        << std::streamoff{set.getStartStreampos()} << '\n';
    for (const MXFProperty* property : set.getDescription().properties()) {
        if (!property->isPresent(set)) {
            continue;
        }
        const auto owned = ownedBy(set, *property);
        out << indent << "  " << property->name()
            << (owned.empty() ? ": " + describe(property->value(set)) : std::string()) << '\n';
        for (const auto& target : owned) {
            printSet(out, *target, indent + "    ");
        }
    }
    for (auto dark = set.beginDarkProperties(); dark != set.endDarkProperties(); ++dark) {
        out << indent << "  dark " << toString(dark->first) << ": " << describe(scalarOf(dark->second)) << '\n';
    }
}

/// The header metadata of the first partition that has any, and of others where they do not repeat it.
void printMetadata(std::ostream& out, const MetadataCollector::Models& models) {
    const FoundModel* previous = nullptr;
    models.forEach([&](const FoundModel& found) {
        out << "\nHeader metadata of the partition at offset " << found.partition;
        if (previous != nullptr && repeats(found, *previous)) {
            out << ": as before\n";
            return;
        }
        out << '\n';
        for (const auto& set : found.model) {
            printSet(out, *set, "  ");
        }
        previous = &found;
    });
    if (previous == nullptr) {
        out << "\nHeader metadata: none\n";
    }
    if (models.omitted() != 0) {
        out << "  ... and that of " << models.omitted() << " more partitions\n";
    }
}

void printIndex(std::ostream& out, const IndexCollector& index) {
    segmentTable().print(out, "Index table segments", "segments", index.segments(), cells);
}

void printBody(std::ostream& out, const BodyCounter& body) {
    essenceTable().print(out, "Essence", "elements", body.essence(), cells);
    const std::string timecodes = timecodeRange(body);
    out << "\nContent packages: " << (body.packages() == 0 ? "none" : std::to_string(body.packages()))
        << (timecodes.empty() ? "" : ", ") << timecodes
        << "\nSystem elements: " << (body.systemElements() == 0 ? "none" : std::to_string(body.systemElements()))
        << '\n';
}

void printFindings(std::ostream& out, const FindingCollector& findings) {
    findingTable().print(out, "Findings", "findings", findings, cells);
    out << '\n' << verdict(findings) << '\n';
}

} // namespace

void printText(std::ostream& out, const std::string& name, const Inspection& inspection) {
    printFile(out, name, inspection);
    printStructure(out, inspection.structure);
    printMetadata(out, inspection.metadata.models());
    printIndex(out, inspection.index);
    printBody(out, inspection.body);
    otherTripletsTable().print(out, "Generic streams", "triplets", inspection.genericStreams.triplets(), cells);
    printFindings(out, inspection.findings);
}
