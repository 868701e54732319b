#include "validation/internal/BRYXDescriptorChecker.h"

#include <algorithm>

#include "mxf/metadata/descriptors/AudioChannelLabelSubDescriptor.h"
#include "mxf/metadata/descriptors/CDCIPictureDescriptor.h"
#include "mxf/metadata/descriptors/GroupOfSoundfieldGroupsLabelSubDescriptor.h"
#include "mxf/metadata/descriptors/MultipleDescriptor.h"
#include "mxf/metadata/descriptors/SoundfieldGroupLabelSubDescriptor.h"
#include "mxf/metadata/descriptors/WaveAudioDescriptor.h"
#include "mxf/metadata/structural/SourcePackage.h"
#include "mxf/metadata/structural/TimelineTrack.h"
#include "validation/internal/BRYXPackageChecker.h"
#include "validation/internal/BRYXRates.h"

namespace bryx {

namespace checks = BRYXMetadataChecks;

namespace {

template <class Class>
const Class* as(const MetadataRoot* set) {
    return dynamic_cast<const Class*>(set);
}

/// Whether @p size from @p offset on fits into @p outer.
bool fits(std::int64_t offset, std::uint32_t size, std::uint32_t outer) {
    return offset >= 0 && offset + std::int64_t{size} <= std::int64_t{outer};
}

} // namespace

BRYXDescriptorChecker::BRYXDescriptorChecker(const BRYXValidator& validator, const Preface& preface)
    : BRYXModelChecker(validator),
      essenceContainers_(preface.getEssenceContainers().begin(), preface.getEssenceContainers().end()) {}

void BRYXDescriptorChecker::check(const SourcePackage& package, bool isLinked) const {
    const auto descriptor = package.getDescriptor();
    const auto* const file = as<FileDescriptor>(descriptor.get());
    if (file == nullptr) {
        return; // of physical media
    }
    Package context{isLinked, {}, {}, {}};
    for (std::size_t i = 0; i < package.getTrackCount(); ++i) {
        context.tracks.emplace(package.getTrackAt(i)->getTrackID(), package.getTrackAt(i));
    }
    addLabels(*file, context);
    const auto* const multiple = as<MultipleDescriptor>(file);
    for (std::size_t i = 0; multiple != nullptr && i < multiple->getSubDescriptorCount(); ++i) {
        addLabels(*multiple->getSubDescriptorAt(i), context);
    }
    checkDescriptor(context, *file);
    if (multiple != nullptr) {
        checkMultiple(context, *multiple);
    }
}

void BRYXDescriptorChecker::checkMultiple(const Package& package, const MultipleDescriptor& multiple) const {
    std::set<std::uint32_t> linked;
    bool allLinked = true;
    for (std::size_t i = 0; i < multiple.getSubDescriptorCount(); ++i) {
        const auto sub = multiple.getSubDescriptorAt(i);
        checkDescriptor(package, *sub);
        if (!sub->hasLinkedTrackID()) {
            allLinked = false;
            report(*sub, checks::missingLinkedTrack);
        } else if (!linked.insert(sub->getLinkedTrackID()).second) {
            report(*sub, checks::duplicateLinkedTrack, std::to_string(sub->getLinkedTrackID()));
        }
    }
    for (const auto& [id, track] : package.tracks) {
        if (allLinked && isEssenceTrack(*track) && linked.count(id) == 0) {
            report(*track, checks::undescribedTrack, std::to_string(id));
        }
    }
}

void BRYXDescriptorChecker::addLabels(const FileDescriptor& descriptor, Package& package) {
    for (std::size_t i = 0; i < descriptor.getGenericSubDescriptorCount(); ++i) {
        const auto set = descriptor.getGenericSubDescriptorAt(i);
        if (const auto* const soundfield = as<SoundfieldGroupLabelSubDescriptor>(set.get())) {
            package.soundfields.insert(soundfield->getLinkID());
        } else if (const auto* const group = as<GroupOfSoundfieldGroupsLabelSubDescriptor>(set.get())) {
            package.groups.insert(group->getLinkID());
        }
    }
}

void BRYXDescriptorChecker::checkDescriptor(const Package& package, const FileDescriptor& descriptor) const {
    if (!isWhole(descriptor)) {
        return;
    }
    checkFile(package, descriptor);
    checkDuration(package, descriptor);
    if (const auto* const picture = as<PictureDescriptor>(&descriptor)) {
        checkPicture(*picture);
    }
    if (const auto* const sound = as<SoundDescriptor>(&descriptor)) {
        checkSound(*sound);
    }
    checkLabels(package, descriptor);
}

void BRYXDescriptorChecker::checkFile(const Package& package, const FileDescriptor& descriptor) const {
    if (package.isLinked && essenceContainers_.count(descriptor.getEssenceContainer()) == 0) {
        report(descriptor, checks::unlistedEssenceContainer, toString(descriptor.getEssenceContainer()));
    }
    if (!isRate(descriptor.getSampleRate())) {
        report(descriptor, checks::invalidSampleRate, toString(descriptor.getSampleRate()));
    }
    if (descriptor.hasLinkedTrackID() && package.tracks.count(descriptor.getLinkedTrackID()) == 0) {
        report(descriptor, checks::unknownLinkedTrack, std::to_string(descriptor.getLinkedTrackID()));
    }
}

void BRYXDescriptorChecker::checkDuration(const Package& package, const FileDescriptor& descriptor) const {
    if (!descriptor.hasContainerDuration() || descriptor.getContainerDuration() < 0) {
        return;
    }
    bool hasTracks = false;
    bool isThatOfOne = false;
    for (const auto& [id, track] : package.tracks) {
        const auto segment = track->getSegment();
        const auto* const timeline = as<TimelineTrack>(track.get());
        if (timeline != nullptr && segment != nullptr &&
            (!descriptor.hasLinkedTrackID() || descriptor.getLinkedTrackID() == id) &&
            !isMetadataDefinition(segment->getDataDefinition()) && durationOf(*segment) >= 0 &&
            isSameRate(timeline->getEditRate(), descriptor.getSampleRate())) {
            hasTracks = true;
            isThatOfOne = isThatOfOne || durationOf(*segment) == descriptor.getContainerDuration();
        }
    }
    if (hasTracks && !isThatOfOne) {
        report(descriptor, checks::inconsistentContainerDuration, std::to_string(descriptor.getContainerDuration()));
    }
}

void BRYXDescriptorChecker::checkPicture(const PictureDescriptor& descriptor) const {
    const std::uint32_t storedWidth = descriptor.getStoredWidth();
    const std::uint32_t storedHeight = descriptor.getStoredHeight();
    if (storedWidth == 0) {
        report(descriptor, checks::invalidStoredSize, "PictureDescriptor.storedWidth", "0");
    }
    if (storedHeight == 0) {
        report(descriptor, checks::invalidStoredSize, "PictureDescriptor.storedHeight", "0");
    }
    const auto x = [](bool has, auto get) { return has ? std::int64_t{get()} : 0; };
    const std::uint32_t sampledWidth = descriptor.hasSampledWidth() ? descriptor.getSampledWidth() : storedWidth;
    const std::uint32_t sampledHeight = descriptor.hasSampledHeight() ? descriptor.getSampledHeight() : storedHeight;
    const bool sampledFits = fits(x(descriptor.hasSampledXOffset(), [&] { return descriptor.getSampledXOffset(); }),
                                  sampledWidth, storedWidth) &&
                             fits(x(descriptor.hasSampledYOffset(), [&] { return descriptor.getSampledYOffset(); }),
                                  sampledHeight, storedHeight);
    if (storedWidth != 0 && storedHeight != 0 && !sampledFits) {
        report(descriptor, checks::invalidRectangle, "sampled",
               std::to_string(sampledWidth) + "x" + std::to_string(sampledHeight));
    }
    const std::uint32_t displayWidth = descriptor.hasDisplayWidth() ? descriptor.getDisplayWidth() : sampledWidth;
    const std::uint32_t displayHeight = descriptor.hasDisplayHeight() ? descriptor.getDisplayHeight() : sampledHeight;
    if (!fits(x(descriptor.hasDisplayXOffset(), [&] { return descriptor.getDisplayXOffset(); }), displayWidth,
              sampledWidth) ||
        !fits(x(descriptor.hasDisplayYOffset(), [&] { return descriptor.getDisplayYOffset(); }), displayHeight,
              sampledHeight)) {
        report(descriptor, checks::invalidRectangle, "display",
               std::to_string(displayWidth) + "x" + std::to_string(displayHeight));
    }
    if (!isRate(descriptor.getAspectRatio())) {
        report(descriptor, checks::invalidAspectRatio, toString(descriptor.getAspectRatio()));
    }
    // Two fields have a line each.
    const std::size_t lines = descriptor.getVideoLineMap().size();
    const bool isInterlaced = descriptor.getFrameLayout() == MXFFrameLayout::SeparateFields ||
                              descriptor.getFrameLayout() == MXFFrameLayout::MixedFields;
    if (lines > 2 || lines < (isInterlaced ? 2U : 1U)) {
        report(descriptor, checks::inconsistentVideoLineMap, std::to_string(lines) + " lines");
    }
    if (const auto* const cdci = as<CDCIPictureDescriptor>(&descriptor)) {
        checkCDCI(*cdci);
    }
}

void BRYXDescriptorChecker::checkCDCI(const CDCIPictureDescriptor& descriptor) const {
    if (descriptor.getComponentDepth() == 0) {
        report(descriptor, checks::invalidComponentDepth, "0");
    }
    if (descriptor.hasBlackReferenceLevel() && descriptor.hasWhiteReferenceLevel() &&
        descriptor.getBlackReferenceLevel() >= descriptor.getWhiteReferenceLevel()) {
        report(descriptor, checks::inconsistentReferenceLevels,
               std::to_string(descriptor.getBlackReferenceLevel()) + " and " +
                   std::to_string(descriptor.getWhiteReferenceLevel()));
    }
}

void BRYXDescriptorChecker::checkSound(const SoundDescriptor& descriptor) const {
    if (!isRate(descriptor.getAudioSamplingRate())) {
        report(descriptor, checks::invalidAudioSamplingRate, toString(descriptor.getAudioSamplingRate()));
    } else if (const auto* const wave = as<WaveAudioDescriptor>(&descriptor)) {
        checkWave(*wave);
    }
}

void BRYXDescriptorChecker::checkWave(const WaveAudioDescriptor& descriptor) const {
    const std::uint64_t channels = descriptor.getChannelCount();
    const std::uint64_t sampleOctets = (std::uint64_t{descriptor.getQuantizationBits()} + 7) / 8;
    const std::uint64_t blockAlign = descriptor.getBlockAlign();
    if (channels != 0 && sampleOctets != 0 && blockAlign != channels * sampleOctets) {
        report(descriptor, checks::inconsistentBlockAlign,
               std::to_string(blockAlign) + ", not " + std::to_string(channels * sampleOctets));
    }
    const Rational& rate = descriptor.getAudioSamplingRate();
    const double expected = static_cast<double>(blockAlign) * rate.numerator / rate.denominator;
    const double difference = static_cast<double>(descriptor.getAverageBytesPerSecond()) - expected;
    if (difference >= 1 || difference <= -1) {
        report(descriptor, checks::inconsistentAverageBytesPerSecond,
               std::to_string(descriptor.getAverageBytesPerSecond()));
    }
}

void BRYXDescriptorChecker::checkLabels(const Package& package, const FileDescriptor& descriptor) const {
    const auto* const sound = as<SoundDescriptor>(&descriptor);
    std::set<MXFUID> links;
    std::set<std::uint32_t> channels;
    std::size_t channelLabels = 0;
    std::size_t unnumbered = 0; // of these
    for (std::size_t i = 0; i < descriptor.getGenericSubDescriptorCount(); ++i) {
        const auto set = descriptor.getGenericSubDescriptorAt(i);
        const auto* const label = as<MCALabelSubDescriptor>(set.get());
        if (label == nullptr || !isWhole(*label)) {
            continue;
        }
        if (!links.insert(label->getLinkID()).second) {
            report(*label, checks::duplicateMCALink, toString(label->getLinkID()));
        }
        if (const auto* const channel = as<AudioChannelLabelSubDescriptor>(label)) {
            ++channelLabels;
            if (channel->hasSoundfieldGroup() && package.soundfields.count(channel->getSoundfieldGroup()) == 0) {
                report(*channel, checks::unknownSoundfieldGroup, toString(channel->getSoundfieldGroup()));
            }
            // The ID may be left out where there is a single channel.
            const std::uint32_t id = channel->hasChannelID() ? channel->getChannelID() : 1;
            if (!channel->hasChannelID() && sound != nullptr && sound->getChannelCount() > 1) {
                report(*channel, checks::missingMCAChannel);
                ++unnumbered;
            } else if (sound != nullptr && (id == 0 || id > sound->getChannelCount())) {
                report(*channel, checks::invalidMCAChannel, std::to_string(id));
            } else if (!channels.insert(id).second) {
                report(*channel, checks::duplicateMCAChannel, std::to_string(id));
            }
        }
        const auto* const soundfield = as<SoundfieldGroupLabelSubDescriptor>(label);
        if (soundfield != nullptr && soundfield->hasGroupOfSoundfieldGroups()) {
            for (const MXFUID& group : soundfield->getGroupOfSoundfieldGroups()) {
                if (package.groups.count(group) == 0) {
                    report(*soundfield, checks::unknownGroupOfSoundfieldGroups, toString(group));
                }
            }
        }
    }
    const std::size_t labelled = channels.size() + unnumbered;
    if (sound != nullptr && channelLabels != 0 && labelled < sound->getChannelCount()) {
        report(descriptor, checks::unlabelledChannels,
               std::to_string(labelled) + " of " + std::to_string(sound->getChannelCount()));
    }
}

} // namespace bryx
