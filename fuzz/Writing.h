#pragma once

#include "mxf/metadata/structural/Preface.h"
#include "sdk/BRYXWriter.h"

/// The least header metadata that can be written.
inline const BRYXHeaderMetadata& leastMetadata() {
    static const BRYXHeaderMetadata metadata = [] {
        const auto preface = Preface::create();
        preface->setOperationalPattern({});
        preface->setEssenceContainers({});
        preface->setDMSchemes({});
        preface->setContentStorage(ContentStorage::create());
        return toBRYXHeaderMetadata(preface);
    }();
    return metadata;
}

/// A layout for each octet.
inline BRYXWriterConfiguration configurationOf(std::uint8_t choice) {
    constexpr std::uint32_t kagSizes[] = {0, 1, 16, 512};
    constexpr std::uint8_t forms[] = {0x80, 1, 0x81, 0x88};
    BRYXWriterConfiguration configuration;
    configuration.kagSize = kagSizes[choice % 4U];
    configuration.essenceLengthForm = forms[choice / 4U % 4U];
    configuration.partitionDuration = choice / 16U % 4U;
    configuration.indexPlacement = choice < 128 ? BRYXWriterConfiguration::IndexPlacement::AfterEssence
                                                : BRYXWriterConfiguration::IndexPlacement::Footer;
    return configuration;
}
