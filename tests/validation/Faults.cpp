#include "validation/Faults.h"

#include <sstream>

#include "sdk/BRYX.h"

std::set<std::uint64_t> Findings::positionsOf(const klvutil::FindingKind& finding) const {
    std::set<std::uint64_t> positions;
    for (const Finding& found : all) {
        if (found.id == finding.id) {
            positions.insert(found.position);
        }
    }
    return positions;
}

void Findings::add(const util::uuid& id, klvutil::FindingLevel level, const std::string& message) {
    all.push_back({id, level, static_cast<std::uint64_t>(std::streamoff{locator->streampos()}), message});
}

Findings validate(const std::string& octets, BRYXValidationMode::Enum mode, Wanted wanted) {
    const auto findings = std::make_shared<Findings>();
    const auto reader = createBRYXReader(std::make_shared<std::istringstream>(octets), mode);
    reader->setErrorHandler(findings);
    reader->setStructureHandler(std::make_shared<DullMXFStructureHandler>());
    if (wanted >= Wanted::Metadata) {
        reader->setMetadataHandler(std::make_shared<DullMXFMetadataHandler>());
    }
    if (wanted == Wanted::Everything) {
        reader->setIndexHandler(std::make_shared<DullMXFIndexHandler>());
        reader->setSDTICPSystemHandler(std::make_shared<DullMXFSDTICPSystemHandler>());
    }
    reader->read();
    return *findings;
}

Fault::Fault(const BRYXCheck& failed, Plant how, const ClipOptions& clip, Wanted handlers)
    : check(failed), plant(std::move(how)), options(clip), wanted(handlers) {}
Fault::Fault(const Fault& other) = default;
Fault::~Fault() = default;

ClipOptions with(void (*change)(ClipOptions&)) {
    ClipOptions options;
    change(options);
    return options;
}

const ClipOptions oneSegment = with([](ClipOptions& o) {
    o.partitionDuration = 0;
    o.placement = ClipOptions::Placement::Footer;
});
const ClipOptions constant = with([](ClipOptions& o) {
    o.isConstant = true;
    o.partitionDuration = 0;
    o.placement = ClipOptions::Placement::Footer;
});
const ClipOptions emptyContainer = with([](ClipOptions& o) { o.hasEmptyContainer = true; });
const ClipOptions pictureOnly = with([](ClipOptions& o) { o.hasSound = o.hasSequences = false; });

Fault::Plant element(const KLVKey& key, std::size_t index, std::uint64_t offset, std::uint8_t value) {
    return [=](GoodClip& clip) { clip.put(clip.all(key).at(index), offset, {value}); };
}

Fault::Plant system(std::size_t index, std::uint64_t offset, std::uint8_t value) {
    return element(mxfutil::sdtiCPSystemMetadataKey, index, 20 + offset, value);
}

KLVKey other(KLVKey key, std::size_t octet, std::uint8_t value) {
    key.octets[octet] = value;
    return key;
}
