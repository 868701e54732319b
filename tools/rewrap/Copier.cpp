#include "rewrap/Copier.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "klv/KLVCoding.h"
#include "mxf/essence/MXFGCChunkedEssenceHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCKeys.h"
#include "mxf/index/MXFIndexCalculator.h"
#include "rewrap/Lost.h"

Copier::Copier(const Survey& survey, BRYXWriter& writer, bool keepsLayout, ProgressBar& progress, ErrorPrinter& errors)
    : survey_(survey), writer_(writer), keepsLayout_(keepsLayout), structure_(*this, writer.structureReceiver()),
      system_(structure_, writer.systemReceiver()), splitter_(&structure_, &system_, &writer.essenceReceiver()),
      body_(*this, keepsLayout ? writer.bodyReceiver() : splitter_), genericStream_(*this), progress_(progress),
      errors_(errors) {}

void Copier::startPartition(const KLVKey& /*key*/, const MXFPartitionPack& pack, std::uint64_t /*headerStart*/) {
    bodySID_ = pack.bodySID;
}

void Copier::copy(const CutClip& clip, std::istream& file) {
    bodySID_ = clip.bodySID;
    startBody();
    MXFGCStructureHandler& structure = writer_.structureReceiver();
    MXFGCEssenceHandler& essence = writer_.essenceReceiver();
    structure.startContentPackage();
    structure.startElement(clip.key);
    std::vector<std::uint8_t> piece(std::size_t{1} << 20U);
    file.clear();
    file.seekg(static_cast<std::streamoff>(clip.position));
    for (std::uint64_t offset = 0; offset < clip.octets;) {
        std::uint64_t size = std::min<std::uint64_t>(piece.size(), clip.octets - offset);
        if (!file.read(reinterpret_cast<char*>(piece.data()), static_cast<std::streamsize>(size))) {
            throw std::runtime_error("what was read a moment ago can no longer be read");
        }
        std::uint8_t* none = nullptr;
        dynamic_cast<MXFGCChunkedEssenceHandler&>(essence).startChunkedElement(clip.key, clip.octets, offset, size,
                                                                               none);
        essence.dataElement(clip.key, piece.data(), size, offset);
        offset += size;
        progress_.reached(clip.position + offset);
    }
    structure.endElement(clip.key);
    structure.endContentPackage();
}

void Copier::finish() {
    if (isOpen_) {
        writer_.endEssence();
        isOpen_ = false;
    }
}

void Copier::Structure::startContentPackage() {
    const Survey& survey = copier_.survey_;
    if (survey.isCut && ++copied_[copier_.bodySID_] > survey.contentPackages(copier_.bodySID_)) {
        throw EndOfWhatIsWhole();
    }
}

void Copier::Structure::endContentPackage() {
    if (inPackage_) {
        next().endContentPackage();
        inPackage_ = false;
    }
}

void Copier::Structure::startElement(const KLVKey& key) {
    inElement_ = false;
    if (klvutil::classify(key) == KLVCoding::IndividualItem) {
        tell(key);
    }
}

void Copier::Structure::tell(const KLVKey& key) {
    if (!inPackage_) {
        next().startContentPackage();
        inPackage_ = true;
    }
    next().startElement(key);
    inElement_ = true;
}

void Copier::Structure::endElement(const KLVKey& key) {
    if (inElement_) {
        next().endElement(key);
    } else {
        report(copier_.errors_, Lost::Triplet, "the system element with key " + toString(key));
    }
}

bool Copier::System::wantsSystemElement(const KLVKey& key) {
    // Tags and lengths of four octets are read, and not written.
    const bool hasItems = klvutil::classify(key) != KLVCoding::FixedLengthPack;
    const bool isWritable = !hasItems || (klvutil::itemTagForm(key) != KLVFieldForm::FourOctets &&
                                          klvutil::itemLengthForm(key) != KLVFieldForm::FourOctets);
    return isWritable && next_.wantsSystemElement(key);
}

void Copier::System::localSet(const KLVKey& key, const MXFGCItems& items) {
    structure_.tell(key);
    next_.localSet(key, items);
}

void Copier::System::fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) {
    structure_.tell(key);
    next_.fixedLengthPack(key, data, size);
}

void Copier::System::variableLengthPack(const KLVKey& key, const MXFGCItems& items) {
    structure_.tell(key);
    next_.variableLengthPack(key, items);
}

void Copier::Body::setLocator(const Locator& locator) {
    copier_.errors_.setLocator(locator);
    // What stands in a partition that has no essence container belongs to none.
    setHandler(copier_.bodySID_ == 0 ? static_cast<KLVHandler*>(&nobody_) : &receiver_);
    next().setLocator(locator);
}

void Copier::Body::startStream(bool accurateLengths) {
    if (copier_.bodySID_ == 0) {
        report(copier_.errors_, Lost::Body, "the body of a partition without essence container");
    } else {
        copier_.startBody();
    }
    isStream_ = copier_.bodySID_ == 0 || !copier_.keepsLayout_;
    if (isStream_) {
        next().startStream(accurateLengths);
    }
}

void Copier::Body::endStream(bool stopped) {
    copier_.errors_.endStream();
    if (isStream_) {
        next().endStream(stopped);
    }
}

bool Copier::Body::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    copier_.progress_.reached(copier_.errors_.position());
    return next().startIndividualItem(key, length);
}

void Copier::GenericStream::startStream(bool /*accurateLengths*/) {
    copier_.finish();
    setHandler(&copier_.writer_.startGenericStream(copier_.bodySID_));
}

void Copier::GenericStream::endStream(bool /*stopped*/) {
    copier_.writer_.endGenericStream();
}

void Copier::startBody() {
    if (isOpen_ && bodySID_ == openSID_) {
        if (keepsLayout_) {
            writer_.startBodyPartition();
        }
        return;
    }
    finish();
    // Of a container that was begun before, the body SID counts alone.
    BRYXEssenceContainer container;
    container.bodySID = bodySID_;
    if (described_.insert(bodySID_).second) {
        describe(container);
    }
    writer_.startEssence(container);
    isOpen_ = true;
    openSID_ = bodySID_;
}

void Copier::describe(BRYXEssenceContainer& container) const {
    const std::uint32_t bodySID = container.bodySID;
    container.indexSID = 0;
    const auto found = survey_.tables.find(bodySID);
    if (found == survey_.tables.end()) {
        return;
    }
    const IndexTable& table = found->second;
    container.indexSID = table.indexSID;
    container.editRate = table.editRate;
    const auto index = std::make_shared<MXFIndexCalculator>();
    index->setSegments(survey_.index, {container.indexSID, bodySID});
    const auto ranges = index->ranges();
    const std::int64_t packages = survey_.contentPackages(bodySID);
    const bool isCutClip = survey_.cutClip && survey_.cutClip->bodySID == bodySID;
    const bool isClip = isCutClip || (packages == 1 && !ranges.empty() && ranges.back().end > 1);
    if (packages != 0 && !isClip && !ranges.empty() && ranges.back().end < packages) {
        remark(errors_, Lost::Entries,
               "the index table of essence container " + std::to_string(bodySID) + " ends at edit unit " +
                   std::to_string(ranges.back().end) + " of " + std::to_string(packages) +
                   "; for those behind it nothing is known but their places");
    }
    if (isClip || keepsLayout_) {
        describeClip(container, table);
        return;
    }
    container.isConstant = table.isConstant;
    container.describe = [index](std::int64_t editUnit, MXFIndexEntry& entry) {
        if (index->contains(editUnit)) {
            index->describe(editUnit, entry);
        }
    };
}

/// Gives @p container the segments of @p table, for the edit units that are whole.
void Copier::describeClip(BRYXEssenceContainer& container, const IndexTable& table) const {
    const bool isCut = survey_.cutClip && survey_.cutClip->bodySID == container.bodySID;
    for (const auto& [start, segment] : table.segments) {
        container.segments.push_back(segment);
        if (!isCut) {
            continue;
        }
        MXFIndexTableSegment& last = container.segments.back();
        const std::int64_t left = survey_.cutClip->editUnits.value_or(0) - start;
        if (left <= 0) {
            container.segments.pop_back();
            return;
        }
        const bool hasEnd = last.editUnitByteCount == 0 || last.indexDuration != 0;
        last.indexDuration = hasEnd ? std::min(last.indexDuration, left) : left;
        if (last.indexEntryArray.size() > static_cast<std::size_t>(left)) {
            last.indexEntryArray.resize(static_cast<std::size_t>(left));
        }
    }
}
