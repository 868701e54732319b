#include "inspect/JsonReport.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace {

const char* jsonName(MXFPartitionStatus status) {
    switch (status) {
    case MXFPartitionStatus::OpenIncomplete:
        return "openIncomplete";
    case MXFPartitionStatus::ClosedIncomplete:
        return "closedIncomplete";
    case MXFPartitionStatus::OpenComplete:
        return "openComplete";
    case MXFPartitionStatus::ClosedComplete:
        return "closedComplete";
    case MXFPartitionStatus::GenericStream:
        break;
    }
    return "genericStream";
}

/// Fields of packs as JSON values.
nlohmann::ordered_json toJson(std::uint64_t number) {
    return number;
}

nlohmann::ordered_json toJson(const KLVKey& label) {
    return toString(label);
}

nlohmann::ordered_json toJson(const std::vector<KLVKey>& labels) {
    nlohmann::ordered_json values = nlohmann::ordered_json::array();
    for (const KLVKey& label : labels) {
        values.push_back(toString(label));
    }
    return values;
}

nlohmann::ordered_json toJson(const FoundPartition& partition) {
    nlohmann::ordered_json value{{"offset", partition.offset},
                                 {"kind", name(mxfutil::partitionKind(partition.key))},
                                 {"status", jsonName(mxfutil::partitionStatus(partition.key))}};
    MXFPartitionPack::fields(partition.pack,
                             [&](const char* field, const auto& content) { value[field] = toJson(content); });
    return value;
}

nlohmann::ordered_json toJson(const MXFRandomIndexEntry& entry) {
    nlohmann::ordered_json value;
    MXFRandomIndexEntry::fields(entry, [&](const char* field, const auto& content) { value[field] = content; });
    return value;
}

nlohmann::ordered_json toJson(const MXFScalar& value) {
    if (const bool* truth = std::get_if<bool>(&value)) {
        return *truth;
    }
    if (const auto* number = std::get_if<std::int64_t>(&value)) {
        return *number;
    }
    if (const auto* number = std::get_if<std::uint64_t>(&value)) {
        return *number;
    }
    return mxfutil::toText(value);
}

nlohmann::ordered_json toJson(const MXFPropertyValue& value) {
    if (const auto* single = std::get_if<MXFScalar>(&value)) {
        return toJson(*single);
    }
    nlohmann::ordered_json values = nlohmann::ordered_json::array();
    for (const MXFScalar& element : std::get<std::vector<MXFScalar>>(value)) {
        values.push_back(toJson(element));
    }
    return values;
}

nlohmann::ordered_json toJson(const MetadataRoot& set) {
    const MXFSetDescription& description = set.getDescription();
    nlohmann::ordered_json properties = nlohmann::ordered_json::array();
    for (const MXFProperty* property : description.properties()) {
        if (property->isPresent(set)) {
            properties.push_back({{"name", property->name()},
                                  {"ul", toString(property->label())},
                                  {"value", toJson(property->value(set))}});
        }
    }
    nlohmann::ordered_json dark = nlohmann::ordered_json::array();
    for (auto property = set.beginDarkProperties(); property != set.endDarkProperties(); ++property) {
        dark.push_back({{"ul", toString(property->first)}, {"value", toJson(scalarOf(property->second))}});
    }
    return {{"set", description.name()},
            {"key", toString(description.key())},
            {"instanceUID", toString(set.getInstanceUID())},
            {"offset", static_cast<std::uint64_t>(std::streamoff{set.getStartStreampos()})},
            {"properties", properties},
            {"dark", dark}};
}

nlohmann::ordered_json toJson(const FoundModel& found) {
    nlohmann::ordered_json sets = nlohmann::ordered_json::array();
    for (const auto& root : found.model) {
        forEachSet(*root, [&](const MetadataRoot& set) { sets.push_back(toJson(set)); });
    }
    return {{"partition", found.partition}, {"sets", sets}};
}

nlohmann::ordered_json toJson(const FoundSegment& found) {
    return {{"offset", found.offset},
            {"indexStartPosition", found.segment.indexStartPosition},
            {"indexDuration", found.segment.indexDuration},
            {"editUnitByteCount", found.segment.editUnitByteCount},
            {"indexSID", found.segment.indexSID},
            {"bodySID", found.segment.bodySID},
            {"indexEditRate", toString(found.segment.indexEditRate)},
            {"sliceCount", found.segment.sliceCount},
            {"posTableCount", found.segment.posTableCount},
            {"deltaEntries", found.deltaEntries},
            {"entries", found.entries}};
}

nlohmann::ordered_json toJson(const ReportedFinding& finding) {
    return {{"level", name(finding.level)},
            {"position", finding.position},
            {"id", toString(finding.id)},
            {"message", finding.message}};
}

nlohmann::ordered_json toJson(const ElementCount& count) {
    nlohmann::ordered_json value{{"key", toString(count.key)}};
    if (const char* kind = essenceKind(count.key)) {
        value["kind"] = kind;
    }
    value["elements"] = count.elements;
    value["bytes"] = count.octets;
    return value;
}

template <class Value>
nlohmann::ordered_json toJson(const std::optional<Value>& value) {
    return value ? toJson(*value) : nlohmann::ordered_json();
}

/// Writes one JSON object, a member and an entry of a list at a time, so that it is never in memory as a whole.
class JsonObjectWriter {
public:
    explicit JsonObjectWriter(std::ostream& out) : out_(out) { out_ << '{'; }
    void finish() { out_ << "\n}\n"; }

    void member(const std::string& name, const nlohmann::ordered_json& value) {
        begin(name);
        put(value);
    }

    /// @param list has forEach(), and omitted(), which becomes a member of its own unless it is 0
    template <class List>
    void list(const std::string& name, const List& list) {
        begin(name);
        bool empty = true;
        list.forEach([&](const auto& entry) {
            out_ << (empty ? "[\n    " : ",\n    ");
            empty = false;
            put(toJson(entry));
        });
        out_ << (empty ? "[]" : "\n  ]");
        if (list.omitted() != 0) {
            member(name + "Omitted", list.omitted());
        }
    }

private:
    void begin(const std::string& name) {
        out_ << (empty_ ? "\n  \"" : ",\n  \"") << name << "\": ";
        empty_ = false;
    }

    void put(const nlohmann::ordered_json& value) {
        // The text of a finding may come from outside the library, so that it need not be UTF-8.
        out_ << value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    }

    std::ostream& out_;
    bool empty_ = true;
};

} // namespace

void printJson(std::ostream& out, const Inspection& inspection) {
    JsonObjectWriter json(out);
    json.member("fileSize", toJson(inspection.fileSize));
    json.member("runIn", inspection.structure.runIn());
    json.list("partitions", inspection.structure.partitions());
    if (inspection.structure.randomIndex()) {
        json.list("randomIndex", *inspection.structure.randomIndex());
    } else {
        json.member("randomIndex", nullptr);
    }
    json.list("metadata", inspection.metadata.models());
    json.list("indexSegments", inspection.index.segments());
    json.list("essence", inspection.body.essence());
    json.member("systemElements", inspection.body.systemElements());
    json.member("contentPackages", inspection.body.packages());
    const auto timecode = [](const boost::optional<Timecode>& value) -> nlohmann::ordered_json {
        return value ? nlohmann::ordered_json(toString(*value)) : nullptr;
    };
    json.member("firstTimecode", timecode(inspection.body.firstTimecode()));
    json.member("lastTimecode", timecode(inspection.body.lastTimecode()));
    json.list("otherElements", inspection.genericStreams.triplets());
    json.list("findings", inspection.findings);
    json.finish();
}
