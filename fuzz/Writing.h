#pragma once

#include "sdk/BRYXWriter.h"
#include "support/LeastMetadata.h"

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
