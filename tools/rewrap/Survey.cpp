#include "rewrap/Survey.h"

#include <algorithm>

#include "klv/KLVCoding.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/metadata/descriptors/WaveAudioDescriptor.h"
#include "mxf/metadata/structural/SourcePackage.h"
#include "mxf/metadata/structural/TimelineTrack.h"
#include "rewrap/Lost.h"
#include "shared/FileEnd.h"
#include "util/byte_order.h"

namespace {

bool isRate(const Rational& rate) {
    return rate.numerator > 0 && rate.denominator > 0;
}

} // namespace

Survey::Survey(ErrorPrinter& errors, bool keepsLayout) : metadata(errors), errors_(errors), keepsLayout_(keepsLayout) {
    indexParser_.setErrorHandler(&errors);
    splitter_.setErrorHandler(&errors);
}

void Survey::read(std::istream& file) {
    MXFReader reader;
    reader.setStructureHandler(this);
    reader.setHeaderMetadataHandler(&metadata.handler());
    reader.setIndexHandler(&indexParser_);
    reader.setBodyHandler(&splitter_);
    reader.setErrorHandler(&errors_);
    try {
        reader.read(file);
        mendTables();
        if (lastKind_ != MXFPartitionKind::Footer) {
            isCut = true;
            lookAtLastPackage(file);
            errors_.error("the file ends without a footer partition");
        }
    } catch (const klvutil::parse_error& error) {
        mendTables();
        isCut = true;
        brokenAt = static_cast<std::uint64_t>(std::streamoff{error.position()});
        lookAtLastPackage(file);
        std::int64_t packages = 0;
        for (const auto& container : containers_) {
            packages += container.second.packages;
        }
        errors_.readingEnded(error, describeEnd(error, file, element_, static_cast<std::uint64_t>(packages)));
    }
}

std::int64_t Survey::contentPackages(std::uint32_t bodySID) const {
    const auto found = containers_.find(bodySID);
    return found == containers_.end() ? 0 : found->second.packages;
}

void Survey::startPartition(const KLVKey& key, const MXFPartitionPack& started, std::uint64_t /*headerStart*/) {
    pack = started;
    bodySIDs_.insert(pack.bodySID);
    lastKind_ = mxfutil::partitionKind(key);
    metadata.partition(mxfutil::partitionStatus(key));
}

void Survey::startContentPackage() {
    lastBody_ = pack.bodySID;
    now_ = &containers_[pack.bodySID];
    Container& container = *now_;
    container.elementsBefore = container.ended;
    container.started = container.ended = 0;
    container.isInPackage = true;
}

void Survey::endContentPackage() {
    Container& container = *now_;
    container.isInPackage = false;
    container.isLastWhole = isWhole(pack.bodySID, container);
    ++container.packages;
    const auto table = tables.find(pack.bodySID);
    if (table != tables.end() && !isCopied(pack.bodySID)) {
        table->second.segments.clear();
    }
}

void Survey::startElement(const KLVKey& key) {
    Container& container = *now_;
    ++container.started;
    container.element = key;
    container.elementPosition = errors_.position();
    element_ = key;
}

void Survey::endElement(const KLVKey& key) {
    Container& container = *now_;
    ++container.ended;
    if (container.packages == 0) {
        container.trackNumbers.insert(util::loadBigEndian<std::uint32_t>(&key.octets[12]));
    }
    element_.reset();
}

bool Survey::startElement(const KLVKey& /*key*/, std::uint64_t length, std::uint8_t*& /*buffer*/,
                          std::uint64_t& /*size*/) {
    now_->elementLength = length;
    return false;
}

void Survey::indexTableSegment(const MXFIndexTableSegment& segment) {
    const IndexTable begun{segment.indexSID, segment.indexEditRate, true, {}};
    IndexTable& table = tables.try_emplace(segment.bodySID, begun).first->second;
    if (table.indexSID != segment.indexSID) {
        report(errors_, Lost::Segment,
               "a segment of a second index table of essence container " + std::to_string(segment.bodySID));
        return;
    }
    index.indexTableSegment(segment);
    table.isConstant = table.isConstant && segment.editUnitByteCount != 0;
    if (isCopied(segment.bodySID)) {
        // A later one that begins at the same edit unit may have learnt how many there are.
        const auto kept = table.segments.try_emplace(segment.indexStartPosition, segment).first;
        if (segment.indexDuration >= kept->second.indexDuration) {
            kept->second = segment;
        }
    }
}

/// No file may have such index tables. An edit rate that cannot be is replaced by that of the essence.
void Survey::mendTables() {
    std::set<std::uint32_t> sids = bodySIDs_;
    for (auto table = tables.begin(); table != tables.end();) {
        const std::string name = "the index table of essence container " + std::to_string(table->first);
        Rational& rate = table->second.editRate;
        if (!isRate(rate)) {
            const Rational told = rate;
            forEachTrack(table->first, [&](const Track& track) {
                const auto* timeline = dynamic_cast<const TimelineTrack*>(&track);
                if (!isRate(rate) && timeline != nullptr) {
                    rate = timeline->getEditRate();
                }
            });
            if (isRate(rate)) {
                remark(errors_, Lost::EditRate,
                       name + " has the edit rate " + toString(told) + "; that of the track is written, " +
                           toString(rate));
            }
        }
        if (isRate(rate) && sids.insert(table->second.indexSID).second) {
            ++table;
        } else {
            report(errors_, Lost::Table, name + ", whose edit rate or SID cannot be,");
            table = tables.erase(table);
        }
    }
}

/// Whether the package that came last has all its elements: as many as the one before it, or one for each track.
bool Survey::isWhole(std::uint32_t bodySID, const Container& container) const {
    if (container.ended != container.started) {
        return false;
    }
    if (container.packages > 0) {
        return container.ended >= container.elementsBefore;
    }
    const std::set<std::uint32_t> tracks = tracksOf(bodySID);
    return !tracks.empty() &&
           std::includes(container.trackNumbers.begin(), container.trackNumbers.end(), tracks.begin(), tracks.end());
}

/// The numbers by which the header metadata names the elements of an essence container.
std::set<std::uint32_t> Survey::tracksOf(std::uint32_t bodySID) const {
    std::set<std::uint32_t> numbers;
    forEachTrack(bodySID, [&](const Track& track) { numbers.insert(track.getTrackNumber()); });
    return numbers;
}

/// Calls @p visit with the tracks of the package whose essence is in an essence container; with those that have a number,
/// which others, such as timecode tracks, need not have.
void Survey::forEachTrack(std::uint32_t bodySID, const std::function<void(const Track&)>& visit) const {
    const auto storage = contentStorage();
    for (std::size_t i = 0; storage != nullptr && i < storage->getEssenceContainerDataCount(); ++i) {
        const auto container = storage->getEssenceContainerDataAt(i);
        for (std::size_t j = 0; container->getBodySID() == bodySID && j < storage->getPackageCount(); ++j) {
            const auto package = storage->getPackageAt(j);
            const bool isLinked = package->getPackageUID() == container->getLinkedPackageUID();
            for (std::size_t k = 0; isLinked && k < package->getTrackCount(); ++k) {
                const auto track = package->getTrackAt(k);
                if (track->hasTrackNumber() && track->getTrackNumber() != 0) {
                    visit(*track);
                }
            }
        }
    }
}

/// Null if there is none, or no model that holds it.
std::shared_ptr<const ContentStorage> Survey::contentStorage() const {
    const Metadata* const found = metadata.found();
    return found == nullptr || found->root == nullptr ? nullptr : found->root->getContentStorage();
}

void Survey::lookAtLastPackage(std::istream& file) {
    if (!lastBody_) {
        return;
    }
    Container& container = containers_[*lastBody_];
    if (container.isInPackage) {
        if (isWhole(*lastBody_, container)) {
            ++container.packages;
        } else if (container.packages == 0 && container.started == 1 && container.ended == 0) {
            lookAtCutClip(file, *lastBody_, container);
        }
    } else if (!container.isLastWhole) {
        --container.packages;
    }
}

void Survey::lookAtCutClip(std::istream& file, std::uint32_t bodySID, const Container& container) {
    std::uint8_t form = 0;
    file.clear();
    file.seekg(static_cast<std::streamoff>(container.elementPosition + klvutil::keySize));
    form = static_cast<std::uint8_t>(file.get());
    const std::uint64_t head = klvutil::keySize + (form < 0x80 ? 1U : 1U + (form & 0x7FU));
    const std::uint64_t start = container.elementPosition + head;
    file.clear();
    const std::streamoff size = file.seekg(0, std::ios::end).tellg();
    if (size < 0 || static_cast<std::uint64_t>(size) <= start) {
        return;
    }
    const std::uint64_t octets = std::min(static_cast<std::uint64_t>(size) - start, container.elementLength);
    CutClip clip{bodySID, container.element, start, 0, {}};
    const auto table = tables.find(bodySID);
    if (table == tables.end()) {
        const std::uint64_t editUnit = octetsOfEditUnit();
        clip.octets = editUnit == 0 ? 0 : octets / editUnit * editUnit;
    } else {
        MXFIndexCalculator calculator;
        calculator.setSegments(index, {table->second.indexSID, bodySID});
        // Offsets of entries count from the key of a clip, edit units of one size from its value.
        const std::uint64_t base = table->second.isConstant ? 0 : head;
        const auto ranges = calculator.ranges();
        const bool goesBeyond = !ranges.empty() && ranges.back().end == MXFIndexCalculator::endless;
        auto units = calculator.editUnitAt(octets + base);
        if (!units && !ranges.empty() && !goesBeyond) {
            units = ranges.back().end;
        }
        clip.editUnits = units.value_or(0);
        if (*clip.editUnits > 0) {
            const std::int64_t last = *clip.editUnits - 1;
            const auto octetsOfLast = calculator.size(last);
            clip.octets = octetsOfLast ? calculator.streamOffset(last) + *octetsOfLast - base : 0;
        }
    }
    if (clip.octets != 0) {
        cutClip = clip;
    }
}

/// The octets of an edit unit, if the header metadata describes sound alone, in a clip (ST 382); those of a sample of all
/// channels if edit units differ in size. 0 for anything else.
std::uint64_t Survey::octetsOfEditUnit() const {
    const auto storage = contentStorage();
    std::shared_ptr<const WaveAudioDescriptor> sound;
    std::size_t descriptors = 0;
    for (std::size_t i = 0; storage != nullptr && i < storage->getPackageCount(); ++i) {
        const auto package = std::dynamic_pointer_cast<const SourcePackage>(storage->getPackageAt(i));
        if (package != nullptr && package->getDescriptor() != nullptr) {
            sound = std::dynamic_pointer_cast<const WaveAudioDescriptor>(package->getDescriptor());
            ++descriptors;
        }
    }
    if (descriptors != 1 || sound == nullptr) {
        return 0;
    }
    const Rational editUnits = sound->getSampleRate();
    const Rational samples = sound->getAudioSamplingRate();
    std::uint64_t samplesOfEditUnit = 1;
    if (isRate(editUnits) && isRate(samples)) {
        const auto product = [](std::int32_t a, std::int32_t b) {
            return static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b);
        };
        const std::uint64_t dividend = product(samples.numerator, editUnits.denominator);
        const std::uint64_t divisor = product(samples.denominator, editUnits.numerator);
        samplesOfEditUnit = dividend % divisor == 0 ? dividend / divisor : 1;
        if (dividend == divisor) {
            return sound->getBlockAlign(); // samples alone are no content packages, whatever the label says
        }
    }
    const KLVKey container = sound->getEssenceContainer();
    const bool isClip = container[13] == 6 && (container[14] == 2 || container[14] == 4);
    return isClip ? sound->getBlockAlign() * samplesOfEditUnit : 0;
}
