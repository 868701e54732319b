#pragma once

#include <cstdint>
#include <vector>

#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCStructureHandler.h"
#include "sdk/BRYXWriter.h"
#include "support/Octets.h"

inline constexpr KLVKey writtenSound = klvutil::key("060e2b34.01020101.0d010301.16010101");

/// Some packages of a picture, whose size varies, and of sound.
/// @param[out] ends if not null, gets the positions where they end
inline void writePackages(BRYXWriter& writer, int count, std::vector<std::uint64_t>* ends = nullptr) {
    constexpr std::size_t pictureSize = 700;
    MXFGCStructureHandler& structure = writer.structureReceiver();
    MXFGCEssenceHandler& essence = writer.essenceReceiver();
    for (int i = 0; i < count; ++i) {
        const std::vector<std::uint8_t> octets(pictureSize + static_cast<std::size_t>(i) * 37 % 100, 7);
        structure.startContentPackage();
        structure.startElement(keys::picture);
        essence.pictureElement(keys::picture, octets.data(), octets.size(), 0);
        structure.endElement(keys::picture);
        structure.startElement(writtenSound);
        essence.soundElement(writtenSound, octets.data(), 192, 0);
        structure.endElement(writtenSound);
        structure.endContentPackage();
        if (ends != nullptr) {
            ends->push_back(writer.position());
        }
    }
}
