#pragma once

#include <memory>

#include "mxf/metadata/descriptive/AS11CoreFramework.h"
#include "mxf/metadata/descriptors/AES3AudioDescriptor.h"
#include "mxf/metadata/descriptors/AVCVideoSubDescriptor.h"
#include "mxf/metadata/descriptors/AudioChannelLabelSubDescriptor.h"
#include "mxf/metadata/descriptors/MPEG4VideoSubDescriptor.h"
#include "mxf/metadata/descriptors/MPEGVideoDescriptor.h"
#include "mxf/metadata/descriptors/MultipleDescriptor.h"
#include "mxf/metadata/descriptors/RGBAPictureDescriptor.h"
#include "mxf/metadata/descriptors/SoundfieldGroupLabelSubDescriptor.h"
#include "mxf/metadata/descriptors/VBIDataDescriptor.h"
#include "mxf/metadata/structural/DMSegment.h"
#include "mxf/metadata/structural/Filler.h"
#include "mxf/metadata/structural/MaterialPackage.h"
#include "mxf/metadata/structural/NetworkLocator.h"
#include "mxf/metadata/structural/Preface.h"
#include "mxf/metadata/structural/Sequence.h"
#include "mxf/metadata/structural/SourcePackage.h"
#include "mxf/metadata/structural/StaticTrack.h"
#include "mxf/metadata/structural/TimecodeComponent.h"
#include "mxf/metadata/structural/TimelineTrack.h"
#include "support/Octets.h"
#include "util/byte_order.h"

/// An identifier that ends in @p number.
inline MXFUID uid(std::uint32_t number) {
    MXFUID result;
    util::storeBigEndian(&result.octets[12], number, 4);
    return result;
}

/// A model with sets of every family, and values of every type.
inline std::shared_ptr<Preface> builtModel() {
    const auto preface = Preface::create();
    preface->setOperationalPattern(keys::op1a);
    preface->setEssenceContainers({keys::op1a, keys::label});
    preface->setRIPPresent(true);
    const auto identification = Identification::create();
    identification->setCompanyName(L"Caf\u00e9 \U0001F3AC");
    identification->setToolkitVersion({1, 2, 3, 4, MXFProductVersion::Release::Released});
    preface->addIdentification(identification);
    const auto storage = ContentStorage::create();
    preface->setContentStorage(storage);
    const auto material = MaterialPackage::create();
    storage->addPackage(material);
    preface->setPrimaryPackage(material);
    const auto data = EssenceContainerData::create();
    data->setBodySID(1);
    data->setIndexSID(2);
    data->setSparse(false);
    storage->addEssenceContainerData(data);

    const auto timecode = TimecodeComponent::create();
    timecode->setRoundedTimecodeBase(25);
    timecode->setDuration(15);
    const auto sequence = Sequence::create();
    sequence->setDuration(15);
    sequence->addComponent(timecode);
    sequence->addComponent(Filler::create());
    const auto track = TimelineTrack::create();
    track->setEditRate({25, 1});
    track->setSegment(sequence);
    material->addTrack(track);

    const auto framework = AS11CoreFramework::create();
    framework->setSeriesTitle(L"Series");
    framework->setAudioTrackLayout(AS11AudioTrackLayout::EBU_R_123_16c);
    const auto segment = DMSegment::create();
    segment->setTargetTrackIDs({1, 2});
    segment->setDMFramework(framework);
    const auto staticTrack = StaticTrack::create();
    staticTrack->setSegment(segment);
    material->addTrack(staticTrack);

    const auto source = SourcePackage::create();
    storage->addPackage(source);
    const auto multiple = MultipleDescriptor::create();
    source->setDescriptor(multiple);
    const auto video = MPEGVideoDescriptor::create();
    video->setVideoLineMap({7, 320});
    video->setFrameLayout(MXFFrameLayout::SeparateFields);
    video->setStoredWidth(720);
    video->setStoredHeight(304);
    video->setAspectRatio({16, 9});
    video->setComponentDepth(8);
    video->setHorizontalSubsampling(2);
    video->setProfileAndLevel(0x44);
    video->addLocator(NetworkLocator::create());
    const auto avc = AVCVideoSubDescriptor::create();
    avc->setClosedGOP(true);
    avc->setMaximumBitRate(50000000);
    video->addGenericSubDescriptor(avc);
    const auto mpeg4 = MPEG4VideoSubDescriptor::create();
    mpeg4->setProfileAndLevel(3);
    video->addGenericSubDescriptor(mpeg4);
    multiple->addSubDescriptor(video);
    const auto rgba = RGBAPictureDescriptor::create();
    rgba->setStoredWidth(720);
    rgba->setStoredHeight(608);
    rgba->setAspectRatio({16, 9});
    rgba->setPixelLayout({{{{'R', 8}, {'G', 8}, {'B', 8}}}});
    rgba->setPalette(std::vector<std::uint8_t>(65535, 7));
    rgba->setMasteringDisplayPrimaries({{1, 2}, {3, 4}, {5, 6}});
    multiple->addSubDescriptor(rgba);
    const auto sound = AES3AudioDescriptor::create();
    sound->setAudioSamplingRate({48000, 1});
    sound->setChannelCount(2);
    sound->setQuantizationBits(24);
    sound->setChannelStatusDataMode({MXFChannelStatusMode::Fixed, MXFChannelStatusMode::Essence});
    sound->setFixedChannelStatusData(std::vector<std::byte>(24, std::byte{0x85}));
    sound->setPeakEnvelopeTimestamp(klvutil::currentTimestamp());
    const auto channel = AudioChannelLabelSubDescriptor::create();
    channel->setSpokenLanguage("fr-CA");
    channel->setSoundfieldGroup(uid(5));
    sound->addGenericSubDescriptor(channel);
    const auto group = SoundfieldGroupLabelSubDescriptor::create();
    group->setGroupOfSoundfieldGroups({uid(6), uid(7)});
    sound->addGenericSubDescriptor(group);
    multiple->addSubDescriptor(sound);
    multiple->addSubDescriptor(VBIDataDescriptor::create());
    multiple->setDarkProperty(keys::item, {1, 2, 3});
    return preface;
}
